// Replies to the net-banking payment registration (payNB).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// A net-banking reply needs a string code; "data" only once the code is the success code.
void check(const Answer &answer, const JsonValue &reply)
{
    require(isString(member(reply, "responseCode"), nullptr),
        "a net-banking reply without a string code was answered");
    checkBankPageAnswer(answer, reply);
}

const ReplyTarget target {
    ReplyHandling::NET_BANKING_PAYMENT,
    [](std::shared_ptr<RecordingCallback> callback) {
        return ReplyHandling::netBankingPayment(std::move(callback));
    },
    Answer::PaymentParams,
    isEmptyBankPageAnswer,
    check,
    true,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzReply(target, data, size);
}
