// Arbitrary bytes as a reply body: whatever parses as JSON is read into the records and written
// back. Nothing may throw or crash, and reading what was written must give it back unchanged.
#include "api/JsonValue.h"
#include "model/BankNB.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

using namespace kovena;

namespace {

template<class Record> Record build(const JsonValue &value)
{
    if constexpr (std::is_pointer_v<typename Record::Argument>)
        return Record(&value);
    else
        return Record(value);
}

template<class Record> void readWriteRead(const JsonValue &value)
{
    const Record first = build<Record>(value);
    const JsonValue written = first.dictionaryRepresentation();
    const Record second = build<Record>(written);
    if (second.dictionaryRepresentation() != written)
        std::abort();
    (void)written.dump();
}

// The bank list stops the process, by design, on anything but an object or on a bank that is not
// an object; everything else must read.
bool readsWithoutStopping(const JsonValue &value)
{
    if (!value.is_object())
        return false;
    const JsonValue *data = findMember(value, "data");
    return !data || !data->is_array()
        || std::all_of(data->begin(), data->end(), [](const JsonValue &bank) { return bank.is_object(); });
}

void readBankList(const JsonValue &value)
{
    if (!readsWithoutStopping(value))
        return;
    readWriteRead<BankNB>(value);
    const BankNB list(value);
    if (list.dictionaryRepresentation().contains("data") || list.data.has_value() != value.contains("data"))
        std::abort();
    if (!list.data)
        return;
    for (const auto &bank : *list.data)
        readWriteRead<BankNB::Data>(bank->dictionaryRepresentation());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const JsonValue value = JsonValue::parse(data, data + size, nullptr, false);
    if (value.is_discarded())
        return 0;
    readWriteRead<TransactionStatus>(value);
    readWriteRead<UPIResponse>(value);
    readBankList(value);
    for (const auto &status : TransactionStatus::modelsFromDictionaryArray(value))
        (void)status->dictionaryRepresentation().dump();
    for (const auto &response : UPIResponse::modelsFromDictionaryArray(value))
        (void)response->dictionaryRepresentation().dump();
    return 0;
}
