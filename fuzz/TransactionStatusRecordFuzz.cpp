// TransactionStatus and TransactionStatus::Data read from any JSON value. Neither has a strict
// spot: nothing may stop the library.
#include "RecordFuzz.h"

#include "model/TransactionStatus.h"

using namespace kovena;
using namespace kovena::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzJson(data, size, [](const JsonValue &value) {
        fuzzReadings<TransactionStatus>(value, Reading::Lenient);
        for (const JsonValue *candidate : valueAndMember(value, "data")) {
            fuzzReadings<TransactionStatus::Data>(*candidate, Reading::Lenient);
        }
    });
}
