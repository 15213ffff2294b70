// The client's forced reads: each one stops the process, with no callback.
#include "ApiTestSupport.h"

#include "api/ApiRequest.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace kovena;
using namespace kovena::test;

namespace {

UserDefaults &defaults()
{
    return UserDefaults::standard();
}
void pay()
{
    ApiManager::payUPICollect(
        std::make_shared<Recorder>(), QStringLiteral("ORD-1"), "1.00", QStringLiteral("1"));
}
void collect()
{
    ApiManager::payUPICollectByVPA(
        std::make_shared<Recorder>(), std::nullopt, std::nullopt, std::nullopt, std::nullopt, "1");
}
void status()
{
    ApiManager::getTransactionStatus(std::make_shared<Recorder>(), "1", "2");
}

struct RequestFatal
{
    const char *name;
    std::function<void()> prepare;
    void (*send)();
    const char *message;
};

class RequestFatalDeathTest : public ::testing::TestWithParam<RequestFatal>
{
};

TEST_P(RequestFatalDeathTest, StopsBeforeSending)
{
    EXPECT_DEATH(
        {
            resetBackendAndDefaults();
            GetParam().prepare();
            GetParam().send();
            std::fprintf(stderr, "the request was sent\n");
        },
        GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(ForcedReads, RequestFatalDeathTest,
    ::testing::Values(
        RequestFatal { "tokenNotAString", [] { defaults().setNumber(QStringLiteral("accessToken"), 5); },
            status, "access token is not a string" },
        RequestFatal { "mobileNotAString",
            [] {
                defaults().setNumber(QStringLiteral("customerMobNum"), 9876543210.0);
                defaults().setString(QStringLiteral("customerEmail"), QStringLiteral("a@b.in"));
            },
            pay, "mobile number is not a string" },
        RequestFatal { "emailNotAString",
            [] {
                defaults().setString(QStringLiteral("customerMobNum"), QStringLiteral("98"));
                defaults().setBool(QStringLiteral("customerEmail"), false);
            },
            collect, "e-mail is not a string" },
        RequestFatal { "retryMissing", [] { defaults().remove(QStringLiteral("retry")); }, pay,
            "\"retry\" flag is missing" },
        RequestFatal { "retryNotABoolean",
            [] { defaults().setString(QStringLiteral("retry"), QStringLiteral("true")); }, pay,
            "\"retry\" flag is missing or not a boolean" },
        RequestFatal { "requestIdMissing", [] { defaults().remove(QStringLiteral("requestId")); }, pay,
            "\"requestId\" is missing" },
        RequestFatal { "requestIdNotAString", [] { defaults().setNumber(QStringLiteral("requestId"), 12); },
            pay, "\"requestId\" is missing or not a string" },
        RequestFatal { "noCallback", [] {}, [] { ApiManager::getTransactionStatus(nullptr, "1", "2"); },
            "needs a callback" },
        RequestFatal { "urlDoesNotParse", [] {},
            [] {
                ApiRequest::post(
                    "test", QStringLiteral("http://exa mple.in/KoVena/x"), "t", JsonValue::object(), {});
            },
            "cannot be parsed" }),
    [](const auto &info) { return std::string(info.param.name); });

// Members the payment reply must carry, the code first and the rest once it says success.
class PaymentReplyDeathTest : public ::testing::TestWithParam<std::pair<const char *, const char *>>
{
};

TEST_P(PaymentReplyDeathTest, StopsWithoutCallback)
{
    EXPECT_DEATH(
        {
            resetBackendAndDefaults();
            exchange("v1/sdk/payForService", { 200, GetParam().first }, [](auto cb) {
                ApiManager::payUPICollect(cb, QStringLiteral("ORD-1"), "1.00", QStringLiteral("1"));
            });
        },
        GetParam().second);
}

#define OK_DATA(members) R"({"responseCode":"200MERSUCC","data":{)" members "}}"
#define REF R"("getRequestRefNumResponse":{"merchantTransactionRef":"R"})"
INSTANTIATE_TEST_SUITE_P(ForcedReads, PaymentReplyDeathTest,
    ::testing::Values(std::pair { R"({"data":{}})", "\"responseCode\" is missing or not a string" },
        std::pair { R"({"responseCode":200})", "\"responseCode\" is missing or not a string" },
        std::pair { R"({"responseCode":"200MERSUCC"})", "\"data\" is missing or not an object" },
        std::pair { R"({"responseCode":"200MERSUCC","data":[]})", "\"data\" is missing or not an object" },
        std::pair { OK_DATA(REF), "\"kovenaTransactionId\" is missing or not a 64-bit integer" },
        std::pair { OK_DATA(R"("kovenaTransactionId":"12",)" REF), "\"kovenaTransactionId\" is missing" },
        std::pair { OK_DATA(R"("kovenaTransactionId":1.5,)" REF), "\"kovenaTransactionId\" is missing" },
        std::pair { OK_DATA(R"("kovenaTransactionId":9223372036854775808,)" REF),
            "\"kovenaTransactionId\" is missing" },
        std::pair { OK_DATA(R"("kovenaTransactionId":true,)" REF), "\"kovenaTransactionId\" is missing" },
        std::pair { OK_DATA(R"("kovenaTransactionId":1)"),
            "\"getRequestRefNumResponse\" is missing or not an object" },
        std::pair { OK_DATA(R"("kovenaTransactionId":1,"getRequestRefNumResponse":{})"),
            "\"merchantTransactionRef\" is missing or not a string" }));
#undef REF
#undef OK_DATA

} // namespace
