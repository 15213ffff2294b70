#pragma once

// The harness of the reply targets: one reply body goes through the common reply path with an
// operation's own handlers, exactly as a reply from the network would, and what the operation
// did with it is checked.

#include "api/ApiRequest.h"
#include "api/Callbacks.h"
#include "api/JsonValue.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kovena::fuzzing {

// One call of a callback, whichever protocol it belongs to.
struct Answer
{
    enum Kind { Status, UpiPayment, UpiCollect, PaymentParams, BankList };
    Kind kind;
    QString first, second, third; // upiCallback1's or getPaymentParams' strings
    std::shared_ptr<TransactionStatus> status;
    std::shared_ptr<UPIResponse> upiResponse;
    QList<std::shared_ptr<BankNBData>> banks;
};

// Answers as every screen would, keeping each call and how many diagnostic lines came before it.
class RecordingCallback final : public TransactionStatusCallback,
                                public UPICalback1,
                                public PaymentCallback,
                                public GetNBListCallback
{
public:
    struct Call
    {
        Answer answer;
        std::size_t diagnosticsBefore;
    };

    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override;
    void upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum) override;
    void upiCallback2(std::shared_ptr<UPIResponse> upiResponse) override;
    void getPaymentParams(
        const QString &url, const QString &postParams, const QString &kovenaTransactionId) override;
    void getNBList(QList<std::shared_ptr<BankNBData>> bankList) override;

    const std::vector<Call> &calls() const { return m_calls; }

private:
    void record(Answer answer);

    std::vector<Call> m_calls;
};

// A decoded reply that reached the operation's own handling: an object without a string "error".
// Checks the operation's one answer to it, which the common path has not decided.
using CheckAnswer = void (*)(const Answer &answer, const JsonValue &reply);

struct ReplyTarget
{
    const char *operation; // as ApiManager names it
    ReplyHandlers (*handlers)(std::shared_ptr<RecordingCallback> callback);
    Answer::Kind answers;
    // Whether the failure value is what `answer` holds.
    bool (*isFailureValue)(const Answer &answer);
    CheckAnswer check;
    // Payment registrations store "retry" once their code passes; nothing else touches it.
    bool marksRetry;
};

// The fuzzer's entry for `target`.
int fuzzReply(const ReplyTarget &target, const std::uint8_t *data, std::size_t size);

// The member `key` of `object`, or nullptr.
const JsonValue *member(const JsonValue &object, const char *key);
// True when `member` is the string `text`.
bool isString(const JsonValue *member, const char *text);
// True when `decimal` is the backend's transaction id `number` written in decimal.
bool isDecimalOf(const QString &decimal, const JsonValue *number);
// The card and net-banking failure value: three empty strings.
bool isEmptyBankPageAnswer(const Answer &answer);
// The card and net-banking answer to a reply whose code is a string: three empty strings when
// it declines, else the bank page's address and form body and the backend's id, as the reply
// has them.
void checkBankPageAnswer(const Answer &answer, const JsonValue &reply);

} // namespace kovena::fuzzing
