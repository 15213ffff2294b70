// The client's forced reads: each one stops the process, with no callback.
#include "ApiTestSupport.h"

#include "api/ApiRequest.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

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
        { [](auto &) {}, [](auto) { ApiManager::getTransactionStatus(nullptr, "1", "2"); },
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
    for (const Request &request : { statusRequest, paymentRequest, collectRequest }) {
        for (const char *fragment : { "true", "[]", "\"text\"", "null" }) {
            const Prepare scriptReply = [&](auto &) {
                backend().enqueueReply(request.path, { 200, fragment });
            };
            EXPECT_DEATH(sendAfter(scriptReply, request.send), "not a JSON object")
                << request.path << fragment;
        }
    }
}

// The payment reply's members: the code first and the rest once it says success.
TEST(FatalDeathTest, PaymentReplyWithoutItsMembersStopsWithoutCallback)
{
#define OK_DATA(members) R"({"responseCode":"200MERSUCC","data":{)" members "}}"
#define REF R"("getRequestRefNumResponse":{"merchantTransactionRef":"R"})"
    const std::pair<const char *, const char *> rows[] = {
        { R"({"data":{}})", "\"responseCode\" is missing or not a string" },
        { R"({"responseCode":200})", "\"responseCode\" is missing or not a string" },
        { R"({"responseCode":"200MERSUCC"})", "\"data\" is missing or not an object" },
        { R"({"responseCode":"200MERSUCC","data":[]})", "\"data\" is missing or not an object" },
        { OK_DATA(REF), "\"kovenaTransactionId\" is missing or not a 64-bit integer" },
        { OK_DATA(R"("kovenaTransactionId":"12",)" REF), "\"kovenaTransactionId\" is missing" },
        { OK_DATA(R"("kovenaTransactionId":1.5,)" REF), "\"kovenaTransactionId\" is missing" },
        { OK_DATA(R"("kovenaTransactionId":9223372036854775808,)" REF),
            "\"kovenaTransactionId\" is missing" },
        { OK_DATA(R"("kovenaTransactionId":true,)" REF), "\"kovenaTransactionId\" is missing" },
        { OK_DATA(R"("kovenaTransactionId":1)"), "\"getRequestRefNumResponse\" is missing or not an object" },
        { OK_DATA(R"("kovenaTransactionId":1,"getRequestRefNumResponse":{})"),
            "\"merchantTransactionRef\" is missing or not a string" },
    };
#undef REF
#undef OK_DATA
    for (const auto &[body, message] : rows) {
        const Prepare scriptReply = [body](auto &) {
            backend().enqueueReply(paymentRequest.path, { 200, body });
        };
        EXPECT_DEATH(sendAfter(scriptReply, paymentRequest.send), message) << body;
    }
}

} // namespace
