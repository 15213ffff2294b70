// The client's forced reads: each one stops the process, with no callback.
#include "ApiTestSupport.h"

#include "api/ApiRequest.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <csignal>
#include <string>
#include <string_view>

using namespace kovena;
using namespace kovena::test;

namespace {

using Send = std::function<void(std::shared_ptr<Recorder>)>;
using Prepare = std::function<void(UserDefaults &)>;

// Sends on reset defaults changed by `prepare`, then waits for a callback that must never come.
void sendAfter(const Prepare &prepare, const Send &send)
{
    resetBackendAndDefaults();
    prepare(UserDefaults::standard());
    auto recorder = std::make_shared<Recorder>();
    send(recorder);
    recorder->waitForCallback();
}

// Reports, as the process aborts, what "retry" holds at that moment, so that a row can tell whether
// the flag was stored before the fatal read. It runs on the aborting session thread, which holds
// no lock of the store there; the line follows fatalError's own.
void reportRetryOnAbort(int)
{
    const std::optional<bool> retry = UserDefaults::standard().boolean(QStringLiteral("retry"));
    const std::string_view line = !retry ? "stored retry: none\n"
        : *retry                         ? "stored retry: true\n"
                                         : "stored retry: false\n";
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

TEST(FatalDeathTest, StoredFieldsAndArgumentsStopBeforeSending)
{
    const std::tuple<Prepare, Send, const char *> rows[] = {
        { [](auto &d) { d.setNumber("accessToken", 5); }, statusRequest.send,
            "access token is not a string" },
        { [](auto &d) {
             d.setNumber("customerMobNum", 9876543210.0);
             d.setString("customerEmail", "a@b.in");
         },
            paymentRequest.send, "mobile number is not a string" },
        { [](auto &d) {
             d.setString("customerMobNum", "98");
             d.setBool("customerEmail", false);
         },
            collectRequest.send, "e-mail is not a string" },
        { [](auto &d) { d.remove("retry"); }, paymentRequest.send, "\"retry\" flag is missing" },
        { [](auto &d) { d.setString("retry", "true"); }, paymentRequest.send,
            "\"retry\" flag is missing or not a boolean" },
        { [](auto &d) { d.remove("requestId"); }, paymentRequest.send, "\"requestId\" is missing" },
        { [](auto &d) { d.setNumber("requestId", 12); }, paymentRequest.send,
            "\"requestId\" is missing or not a string" },
        { [](auto &d) { d.remove("retry"); }, cardRequest.send, "\"retry\" flag is missing" },
        { [](auto &d) { d.setBool("requestId", true); }, netBankingRequest.send,
            "\"requestId\" is missing or not a string" },
        { [](auto &d) { d.setBool("accessToken", true); }, bankListRequest.send,
            "access token is not a string" },
        { [](auto &) {}, [](auto) { ApiManager::getTransactionStatus(nullptr, "1", "2"); },
            "needs a callback" },
        { [](auto &) {}, [](auto) { ApiManager::payNB(nullptr, "1", "SBIB", "1", "2"); },
            "needs a callback" },
        { [](auto &) {},
            [](auto) {
                ApiRequest::post("test", "http://exa mple.in/KoVena/x", "t", JsonValue::object(), {});
            },
            "cannot be parsed" },
    };
    for (const auto &[prepare, send, message] : rows)
        EXPECT_DEATH(sendAfter(prepare, send), message);
}

// Every reply must be a JSON object.
TEST(FatalDeathTest, NonObjectReplyStopsWithoutCallback)
{
    for (const Request &request :
        { statusRequest, paymentRequest, collectRequest, cardRequest, netBankingRequest, bankListRequest }) {
        for (const char *fragment : { "true", "[]", "\"text\"", "null" }) {
            const Prepare scriptReply = [&](auto &) {
                backend().enqueueReply(request.path, { 200, fragment });
            };
            EXPECT_DEATH(sendAfter(scriptReply, request.send), "not a JSON object")
                << request.path << fragment;
        }
    }
}

// The replies' required members: each fatal read names its reply and member, and "retry" is stored
// only once the code said success and before the members that follow are read. The bank list has
// no code to test: a reply without "data", or with a bank that is not an object, stops; "retry" is
// not touched.
TEST(FatalDeathTest, ReplyWithoutItsMembersStopsWithoutCallback)
{
#define OK_DATA(members) R"({"responseCode":"200MERSUCC","data":{)" members "}}"
#define REF R"("getRequestRefNumResponse":{"merchantTransactionRef":"R"})"
#define PAGE R"("paymentData":{"url":"https://b.in/p","data":"a=1"})"
    struct Row
    {
        const char *reply; // how the diagnostic names the reply; nullptr: no member is named
        Request request;
        const char *body;
        const char *diagnostic; // what fatalError prints for that spot
        bool retryStored;
    };
    const char *upi = "UPI payment reply", *card = "card payment reply", *nb = "net-banking payment reply",
               *banks = "bank list reply";
    const Row rows[] = {
        { upi, paymentRequest, R"({"data":{}})", "\"responseCode\" is missing or not a string", false },
        { upi, paymentRequest, R"({"responseCode":200})", "\"responseCode\" is missing or not a string",
            false },
        { upi, paymentRequest, R"({"responseCode":"200MERSUCC"})", "\"data\" is missing or not an object",
            false },
        { upi, paymentRequest, R"({"responseCode":"200MERSUCC","data":[]})",
            "\"data\" is missing or not an object", false },
        { upi, paymentRequest, OK_DATA(REF), "\"kovenaTransactionId\" is missing or not a 64-bit integer",
            true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":"12",)" REF),
            "\"kovenaTransactionId\" is missing or not a 64-bit integer", true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":1.5,)" REF),
            "\"kovenaTransactionId\" is missing or not a 64-bit integer", true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":9223372036854775808,)" REF),
            "\"kovenaTransactionId\" is missing or not a 64-bit integer", true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":true,)" REF),
            "\"kovenaTransactionId\" is missing or not a 64-bit integer", true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":1)"),
            "\"getRequestRefNumResponse\" is missing or not an object", true },
        { upi, paymentRequest, OK_DATA(R"("kovenaTransactionId":1,"getRequestRefNumResponse":{})"),
            "\"merchantTransactionRef\" is missing or not a string", true },

        { card, cardRequest, R"({"data":{}})", "\"responseCode\" is missing or not a string", false },
        // A card reply carries "data" whatever its code.
        { card, cardRequest, R"({"responseCode":"FAILED"})", "\"data\" is missing or not an object", false },
        { card, cardRequest, OK_DATA(R"("kovenaTransactionId":1)"),
            "\"paymentData\" is missing or not an object", true },
        { card, cardRequest, OK_DATA(PAGE), "\"kovenaTransactionId\" is missing or not a 64-bit integer",
            true },
        { card, cardRequest, OK_DATA(R"("kovenaTransactionId":1,"paymentData":{"data":"a=1"})"),
            "\"url\" is missing or not a string", true },
        { card, cardRequest, OK_DATA(R"("kovenaTransactionId":1,"paymentData":{"url":"u"})"),
            "\"data\" is missing or not a string", true },

        { nb, netBankingRequest, R"({"responseCode":["200MERSUCC"]})",
            "\"responseCode\" is missing or not a string", false },
        // A net-banking reply needs "data" only once it succeeds, and before "retry" is stored.
        { nb, netBankingRequest, R"({"responseCode":"200MERSUCC"})", "\"data\" is missing or not an object",
            false },
        { nb, netBankingRequest, OK_DATA(R"("kovenaTransactionId":1,"paymentData":{"data":"a=1"})"),
            "\"url\" is missing or not a string", true },

        { banks, bankListRequest, "{}", "\"data\" is missing", false },
        { banks, bankListRequest, R"({"error":5,"success":"true"})", "\"data\" is missing", false },
        { nullptr, bankListRequest, R"({"data":[1]})",
            "BankNB::Data: array element 0 is a number, expected an object", false },
        { nullptr, bankListRequest, R"({"data":[{"netBankingId":1},null]})",
            "BankNB::Data: array element 1 is null, expected an object", false },
    };
#undef PAGE
#undef REF
#undef OK_DATA
    for (const Row &row : rows) {
        const Prepare scriptReply = [&](auto &) {
            backend().enqueueReply(row.request.path, { 200, row.body });
            std::signal(SIGABRT, reportRetryOnAbort);
        };
        // fatalError's line, then the stored flag at the abort.
        const std::string what
            = row.reply ? std::string(row.reply) + ": member " + row.diagnostic : row.diagnostic;
        EXPECT_DEATH(sendAfter(scriptReply, row.request.send),
            "kovena: fatal error: " + what + "\n.*stored retry: " + (row.retryStored ? "true" : "false"))
            << row.body;
    }
}

} // namespace
