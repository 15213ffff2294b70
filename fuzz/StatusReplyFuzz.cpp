// Replies to the transaction status enquiry (getTransactionStatus).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"
#include "model/TransactionStatus.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// The record is delivered exactly when its code is the status code, and holds only what the
// reply said.
void check(const Answer &answer, const JsonValue &reply)
{
    const bool succeeded = isString(member(reply, "responseCode"), "200TRANSRESPSUCC");
    require(bool(answer.status) == succeeded, "the status record was not delivered exactly on its code");
    if (answer.status) {
        require(writtenFrom(answer.status->dictionaryRepresentation(), reply),
            "the status record holds a value the reply does not");
    }
}

const ReplyTarget target {
    ReplyHandling::TRANSACTION_STATUS,
    [](std::shared_ptr<RecordingCallback> callback) {
        return ReplyHandling::transactionStatus(std::move(callback));
    },
    Answer::Status,
    [](const Answer &answer) { return !answer.status; },
    check,
    false,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzReply(target, data, size);
}
