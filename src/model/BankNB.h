#pragma once

#include "api/JsonValue.h"
#include "model/BankNBData.h"
#include "model/MappedRecord.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace kovena {

// The reply to the net-banking bank list request. `data` is absent when the reply has no
// "data" member and empty when that member is not an array; the list is never written back.
class BankNB : public MappedRecord<BankNB, Dictionary::Required>
{
public:
    using Data = BankNBData;

    BankNB() = default;
    // `dictionary` must be an object, and every element of its "data" array an object;
    // anything else is a fatal parse error.
    explicit BankNB(const JsonValue &dictionary);

    std::optional<QString> success, responseCode, secureHash;
    std::optional<QList<std::shared_ptr<Data>>> data;
    std::optional<QString> responseMessage, csrfToken;
};

} // namespace kovena
