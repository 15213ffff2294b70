// UPIResponse, UPIResponse::Data and UPIResponse::UpiTxnRefNumber read from any JSON value.
// Only the payment record has strict spots.
#include "RecordFuzz.h"

#include "model/UPIResponse.h"

using namespace kovena;
using namespace kovena::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzJson(data, size, [](const JsonValue &value) {
        fuzzReadings<UPIResponse>(value, Reading::Lenient);
        for (const JsonValue *payment : valueAndMember(value, "data")) {
            fuzzReadings<UPIResponse::Data>(*payment, Reading::Strict);
            for (const JsonValue *reference : valueAndMember(*payment, "upiTxnRefNumber")) {
                fuzzReadings<UPIResponse::UpiTxnRefNumber>(*reference, Reading::Lenient);
            }
        }
    });
}
