#pragma once

#include <nlohmann/json.hpp>

#include <cstdio>
#include <mutex>

namespace kovena::demo {

// The headless demo's output channel: one JSON object per line on the process's real stdout,
// each line flushed as it is written, from any thread. Once claimed, file descriptor 1 points
// at stderr, so whatever else the process prints (library, sandbox, Qt) cannot mix into the
// event stream.
class EventPrinter
{
public:
    EventPrinter() = default;
    ~EventPrinter();
    EventPrinter(const EventPrinter &) = delete;
    EventPrinter &operator=(const EventPrinter &) = delete;

    // False (and nothing changed) when the descriptors cannot be duplicated.
    bool claimStdout();
    void print(const nlohmann::ordered_json &event);

private:
    std::mutex m_mutex;
    std::FILE *m_out = nullptr;
};

} // namespace kovena::demo
