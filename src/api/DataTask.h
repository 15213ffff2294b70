#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace kovena {

// What a finished request delivers: the body if one arrived, or the transport error.
struct DataTaskResult
{
    std::optional<QByteArray> body; // absent on error or when the reply had no body
    std::optional<QString> error; // transport error, timeout or cancellation
};

// A running request. Completes exactly once, on the session thread: with the reply, with a
// transport error, or (after cancel()) with a cancellation error. cancel() works from any thread.
class DataTask
{
public:
    virtual ~DataTask() = default;
    virtual void cancel() = 0;
    virtual bool isFinished() const = 0;
};

using DataTaskPtr = std::shared_ptr<DataTask>;

} // namespace kovena
