// Replies to the net-banking bank list request (callApiNBList).
#include "FuzzSupport.h"
#include "ReplyFuzz.h"

#include "api/ReplyHandling.h"
#include "model/BankNB.h"

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// Whatever the code, the banks of a "data" array in their order (none for another value), each
// holding only what its element said.
void check(const Answer &answer, const JsonValue &reply)
{
    const JsonValue *data = member(reply, "data");
    require(data != nullptr, "a bank list reply without \"data\" was answered");
    if (!data->is_array()) {
        require(answer.banks.isEmpty(), "banks were read from a \"data\" that is not an array");
        return;
    }
    require(std::size_t(answer.banks.size()) == data->size(), "not one bank per element of \"data\"");
    for (qsizetype i = 0; i < answer.banks.size(); ++i) {
        require(answer.banks.at(i) != nullptr, "a bank list holds no bank");
        require(writtenFrom(answer.banks.at(i)->dictionaryRepresentation(), (*data)[std::size_t(i)]),
            "a bank holds a value its element does not, or the banks are out of order");
    }
}

const ReplyTarget target {
    ReplyHandling::BANK_LIST,
    [](std::shared_ptr<RecordingCallback> callback) { return ReplyHandling::bankList(std::move(callback)); },
    Answer::BankList,
    [](const Answer &answer) { return answer.banks.isEmpty(); },
    check,
    false,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    return fuzzReply(target, data, size);
}
