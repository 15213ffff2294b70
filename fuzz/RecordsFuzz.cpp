// Arbitrary bytes as a reply body: whatever parses as JSON is read into the lenient records and
// written back. Nothing may throw or crash, and reading what was written must give it back unchanged.
#include "api/JsonValue.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace kovena;

namespace {

template<class Record> void readWriteRead(const JsonValue &value)
{
    const Record first(&value);
    const JsonValue written = first.dictionaryRepresentation();
    const Record second(&written);
    if (second.dictionaryRepresentation() != written)
        std::abort();
    (void)written.dump();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const JsonValue value = JsonValue::parse(data, data + size, nullptr, false);
    if (value.is_discarded())
        return 0;
    readWriteRead<TransactionStatus>(value);
    readWriteRead<UPIResponse>(value);
    for (const auto &status : TransactionStatus::modelsFromDictionaryArray(value))
        (void)status->dictionaryRepresentation().dump();
    for (const auto &response : UPIResponse::modelsFromDictionaryArray(value))
        (void)response->dictionaryRepresentation().dump();
    return 0;
}
