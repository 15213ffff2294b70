// Replies to the UPI collect request sent to the customer's VPA (payUPICollectByVPA).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"
#include "model/UPIResponse.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// The record is delivered exactly when its code is the payment code, and holds only what the
// reply said.
void check(const Answer &answer, const JsonValue &reply)
{
    const bool succeeded = isString(member(reply, "responseCode"), "200MERSUCC");
    require(bool(answer.upiResponse) == succeeded, "the collect reply was not delivered exactly on its code");
    if (answer.upiResponse) {
        require(writtenFrom(answer.upiResponse->dictionaryRepresentation(), reply),
            "the collect record holds a value the reply does not");
    }
}

const ReplyTarget target {
    ReplyHandling::UPI_COLLECT,
    [](std::shared_ptr<RecordingCallback> callback) {
        return ReplyHandling::upiCollect(std::move(callback));
    },
    Answer::UpiCollect,
    [](const Answer &answer) { return !answer.upiResponse; },
    check,
    false,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzReply(target, data, size);
}
