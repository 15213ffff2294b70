#pragma once

#include "api/JsonValue.h"
#include "model/MappedRecord.h"

#include <QString>

#include <optional>

namespace kovena {

// One bank that offers net banking, as the bank list reply describes it (also known as
// BankNB::Data). Reading never fails once it has an object.
class BankNBData : public MappedRecord<BankNBData, Dictionary::Required>
{
public:
    BankNBData() = default;
    // `dictionary` must be an object; anything else is a fatal parse error.
    explicit BankNBData(const JsonValue &dictionary);

    std::optional<qint64> netBankingId;
    std::optional<QString> netBankingName;
    // The key is "netbankingCodes", with a lower-case b, as the backend spells it.
    std::optional<QString> netbankingCodes;
};

} // namespace kovena
