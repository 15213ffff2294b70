#include "ReplyFuzz.h"

#include "FuzzSupport.h"

#include "api/Constants.h"
#include "platform/UserDefaults.h"

#include <QByteArray>

#include <algorithm>
#include <optional>
#include <vector>

namespace kovena::fuzzing {

void RecordingCallback::getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    record({ .kind = Answer::Status, .status = std::move(trnasactionStatus) });
}

void RecordingCallback::upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum)
{
    record({ .kind = Answer::UpiPayment, .first = kovenaTransactionId, .second = transactionRefNum });
}

void RecordingCallback::upiCallback2(std::shared_ptr<UPIResponse> upiResponse)
{
    record({ .kind = Answer::UpiCollect, .upiResponse = std::move(upiResponse) });
}

void RecordingCallback::getPaymentParams(
    const QString &url, const QString &postParams, const QString &kovenaTransactionId)
{
    record(
        { .kind = Answer::PaymentParams, .first = url, .second = postParams, .third = kovenaTransactionId });
}

void RecordingCallback::getNBList(QList<std::shared_ptr<BankNBData>> bankList)
{
    record({ .kind = Answer::BankList, .banks = std::move(bankList) });
}

void RecordingCallback::record(Answer answer)
{
    m_calls.push_back({ std::move(answer), diagnostics().size() });
}

namespace {

// The deepest nesting the common path decodes; a deeper reply is refused as undecodable.
constexpr int kMaxReplyDepth = 512;

const QString &retryKey()
{
    return Constants::PG::RETRY();
}

bool retryStored()
{
    return UserDefaults::standard().boolean(retryKey()) == true;
}

// Each input starts as a first payment attempt; the flag is written only when it changed.
void resetRetry()
{
    if (UserDefaults::standard().boolean(retryKey()) != false)
        UserDefaults::standard().setBool(retryKey(), false);
}

// Runs one completion through the common reply path; true when the library stopped.
bool handle(
    const ReplyTarget &target, const DataTaskResult &result, std::shared_ptr<RecordingCallback> callback)
{
    return stops(
        [&] { ApiRequest::handleReply(target.operation, result, target.handlers(std::move(callback))); });
}

// A transport error and a reply without a body: the failure value, once, without a diagnostic.
void checkTransportFailures(const ReplyTarget &target)
{
    const DataTaskResult results[] = {
        { std::nullopt, QStringLiteral("Operation canceled") },
        { std::nullopt, std::nullopt },
        { QByteArray("{}"), QStringLiteral("Connection closed") },
    };
    for (const DataTaskResult &result : results) {
        clearDiagnostics();
        auto callback = std::make_shared<RecordingCallback>();
        require(!handle(target, result, callback), "a transport failure stopped the library");
        require(callback->calls().size() == 1, "a transport failure was not answered exactly once");
        const Answer &answer = callback->calls().front().answer;
        require(answer.kind == target.answers && target.isFailureValue(answer),
            "a transport failure was not answered with the failure value");
        require(diagnostics().empty(), "a transport failure printed a diagnostic");
    }
}

void checkRetry(const ReplyTarget &target, const JsonValue &decoded, const std::optional<Answer> &answer)
{
    const bool retry = retryStored();
    if (!target.marksRetry) {
        require(!retry, "an operation that is not a payment registration stored \"retry\"");
        return;
    }
    if (retry) {
        const JsonValue *data = member(decoded, "data");
        require(isString(member(decoded, "responseCode"), "200MERSUCC") && data && data->is_object()
                && !isString(member(decoded, "error"), nullptr),
            "\"retry\" was stored for a reply that did not register the payment");
    }
    if (answer)
        require(retry == !target.isFailureValue(*answer), "\"retry\" does not follow the answer");
}

} // namespace

const JsonValue *member(const JsonValue &object, const char *key)
{
    return findMember(object, key);
}

bool isString(const JsonValue *member, const char *text)
{
    return member && member->is_string() && (!text || member->get_ref<const std::string &>() == text);
}

bool isDecimalOf(const QString &decimal, const JsonValue *number)
{
    if (!number || !number->is_number())
        return false;
    bool ok = false;
    const qint64 value = decimal.toLongLong(&ok, 10);
    return ok && QString::number(value) == decimal && JsonValue(value) == *number;
}

bool isEmptyBankPageAnswer(const Answer &answer)
{
    return answer.first.isEmpty() && answer.second.isEmpty() && answer.third.isEmpty();
}

void checkBankPageAnswer(const Answer &answer, const JsonValue &reply)
{
    if (!isString(member(reply, "responseCode"), "200MERSUCC")) {
        require(isEmptyBankPageAnswer(answer), "a declined payment was not a failure");
        return;
    }
    const JsonValue *data = member(reply, "data");
    const JsonValue *paymentData = data ? member(*data, "paymentData") : nullptr;
    require(data && isDecimalOf(answer.third, member(*data, "kovenaTransactionId")),
        "the transaction id is not the reply's number in decimal");
    require(paymentData && isString(member(*paymentData, "url"), nullptr)
            && isString(member(*paymentData, "data"), nullptr),
        "the bank page was answered without its address and form body");
    require(answer.first == toQString(*member(*paymentData, "url"))
            && answer.second == toQString(*member(*paymentData, "data")),
        "the bank page's address or form body is not the reply's");
}

int fuzzReply(const ReplyTarget &target, const std::uint8_t *data, std::size_t size)
{
    static const bool initialised = [&target] {
        initialise();
        checkTransportFailures(target);
        return true;
    }();
    (void)initialised;

    resetRetry();
    clearDiagnostics();
    latestStop().clear();
    const QByteArray body(reinterpret_cast<const char *>(data), qsizetype(size));
    auto callback = std::make_shared<RecordingCallback>();
    const bool stopped = handle(target, { body, std::nullopt }, callback);

    // The same parser, without exceptions, to say which branch of the common path the body takes.
    int depth = 0;
    const auto measureDepth = [&depth](int level, JsonValue::parse_event_t, JsonValue &) {
        depth = std::max(depth, level);
        return true;
    };
    const JsonValue decoded = JsonValue::parse(data, data + size, measureDepth, false);
    const bool decodes = !decoded.is_discarded() && depth <= kMaxReplyDepth;
    const bool reachesOperation = decoded.is_object() && !isString(member(decoded, "error"), nullptr);
    const std::vector<RecordingCallback::Call> &calls = callback->calls();

    if (stopped) {
        require(calls.empty(), "a callback was made before the library stopped");
        require(decodes && (!decoded.is_object() || reachesOperation),
            "the library stopped on a reply that has a failure value");
        require(diagnostics().empty(), "a diagnostic was printed before the library stopped");
        checkRetry(target, decoded, std::nullopt);
        return 0;
    }

    require(calls.size() == 1, "the reply was not answered exactly once");
    const Answer &answer = calls.front().answer;
    require(answer.kind == target.answers, "the reply was answered through another operation's callback");
    require(decodes ? decoded.is_object() : target.isFailureValue(answer),
        "a reply that is not a JSON object got an answer other than a stop or the failure value");
    if (!decodes) {
        require(diagnostics().size() == 1 && calls.front().diagnosticsBefore == 0,
            "an undecodable reply did not print one diagnostic after its callback");
        require(diagnostics().front().startsWith(QLatin1String(target.operation)),
            "the diagnostic of an undecodable reply does not name the operation");
    } else {
        require(diagnostics().empty(), "a decodable reply printed a diagnostic");
        if (reachesOperation)
            target.check(answer, decoded);
        else
            require(target.isFailureValue(answer), "a reply with a string \"error\" was not a failure");
    }
    checkRetry(target, decoded, answer);
    return 0;
}

} // namespace kovena::fuzzing
