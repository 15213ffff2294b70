// UPIStatus and UPIStatus::Data read from any JSON value; both have strict spots.
#include "RecordFuzz.h"

#include "model/UPIStatus.h"

using namespace kovena;
using namespace kovena::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzJson(data, size, [](const JsonValue &value) {
        fuzzReadings<UPIStatus>(value, Reading::Strict);
        for (const JsonValue *payment : valueAndMember(value, "data")) {
            fuzzReadings<UPIStatus::Data>(*payment, Reading::Strict);
        }
    });
}
