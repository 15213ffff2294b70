// Replies to the card payment registration (payCard).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// A card reply is answered only when it has a string code and a "data" object, whatever the code.
void check(const Answer &answer, const JsonValue &reply)
{
    const JsonValue *data = member(reply, "data");
    require(isString(member(reply, "responseCode"), nullptr) && data && data->is_object(),
        "a card reply without a string code and a \"data\" object was answered");
    checkBankPageAnswer(answer, reply);
}

const ReplyTarget target {
    ReplyHandling::CARD_PAYMENT,
    [](std::shared_ptr<RecordingCallback> callback) {
        return ReplyHandling::cardPayment(std::move(callback));
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
