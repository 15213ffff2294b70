// Replies to the UPI payment registration (payUPICollect).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// A declined reply gives two empty strings; an accepted one the backend's id in decimal and the
// merchant reference, as the reply has them.
void check(const Answer &answer, const JsonValue &reply)
{
    const JsonValue *code = member(reply, "responseCode");
    require(isString(code, nullptr), "a reply without a string \"responseCode\" was answered");
    if (!isString(code, "200MERSUCC")) {
        require(
            answer.first.isEmpty() && answer.second.isEmpty(), "a declined registration was not a failure");
        return;
    }
    const JsonValue *data = member(reply, "data");
    const JsonValue *refNumResponse = data ? member(*data, "getRequestRefNumResponse") : nullptr;
    require(data && isDecimalOf(answer.first, member(*data, "kovenaTransactionId")),
        "the transaction id is not the reply's number in decimal");
    require(refNumResponse && isString(member(*refNumResponse, "merchantTransactionRef"), nullptr)
            && answer.second == toQString(*member(*refNumResponse, "merchantTransactionRef")),
        "the merchant reference is not the reply's");
}

const ReplyTarget target {
    ReplyHandling::UPI_PAYMENT,
    [](std::shared_ptr<RecordingCallback> callback) {
        return ReplyHandling::upiPayment(std::move(callback));
    },
    Answer::UpiPayment,
    [](const Answer &answer) { return answer.first.isEmpty() && answer.second.isEmpty(); },
    check,
    true,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzReply(target, data, size);
}
