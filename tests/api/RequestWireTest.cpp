// What each request puts on the wire (method, path, headers and body, member for member) and what
// of its body a log line may show.
#include "ApiTestSupport.h"

#include "api/LogRedaction.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

using Stored = std::pair<const char *, const char *>;
const Stored mobile { "customerMobNum", "9876543210" }, email { "customerEmail", "a@b.in" };

struct WireCase
{
    const char *name;
    std::vector<Stored> stored; // strings in the user defaults besides the token
    bool retry;
    Request request;
    const char *expectedBody;
    const char *exactText = nullptr; // the body byte for byte, where its layout matters
};

TEST(RequestWire, PutsExactlyTheAgreedRequestOnTheWire)
{
    const WireCase cases[] = {
        { "status", { mobile, email }, false, statusRequest,
            R"({"kovenaRefNumber":"42","transactionRefNumber":"ORD-1","txnOtp":""})" },
        { "payUpiCollect", { mobile, email, { "requestId", "REQ-9" } }, false, paymentRequest,
            R"({"requestedAmount":"1.00","merchantTransactionRefNumber":"ORD-1","serviceType":"0",
                "collectorId":"1001","retry":false,"requestId":"REQ-9",
                "customerMobNum":"9876543210","customerEmail":"a@b.in"})" },
        // A mobile number without an e-mail sends neither.
        { "payUpiCollectRetryAbsentArgumentsNoEmail", { { "customerMobNum", "98" } }, true,
            { paymentRequest.path,
                [](auto cb) { return ApiManager::payUPICollect(cb, std::nullopt, "1", std::nullopt); } },
            R"({"requestedAmount":"1","merchantTransactionRefNumber":null,"serviceType":"0",
                "collectorId":null,"retry":true,"requestId":"REQ-1","customerMobNum":"","customerEmail":""})" },
        // The merchant reference is accepted but never sent.
        { "collectByVpa", { mobile, email }, false,
            { collectRequest.path,
                [](auto cb) {
                    return ApiManager::payUPICollectByVPA(cb, "9001", "ORD-7", "10.50", "a@upi", "1001");
                } },
            R"({"virtualAddress":"a@upi","requestedAmount":"10.50","kovenaRefNumber":"9001",
                "collectorId":"1001","customerMobNum":"9876543210","customerEmail":"a@b.in"})" },
        { "collectByVpaAbsentArgumentsOnlyEmail", { email }, false,
            { collectRequest.path,
                [](auto cb) { return ApiManager::payUPICollectByVPA(cb, {}, {}, {}, {}, ""); } },
            R"({"virtualAddress":null,"requestedAmount":null,"kovenaRefNumber":null,
                "collectorId":"","customerMobNum":"","customerEmail":""})" },
        // The card details in their own object, the CVV beside the payment fields.
        { "payCard", { mobile, email, { "requestId", "REQ-9" } }, false, cardRequest,
            R"({"cvv":"739","collectorId":"1001","requestedAmount":"1.00","merchantTransactionRefNumber":"ORD-1",
                "customerMobNum":"9876543210","customerEmail":"a@b.in","serviceType":"28",
                "requestId":"REQ-9","retry":false,
                "bankAccount":{"cardNumber":"4111111111111111","cardName":"ASHA KUMAR",
                               "cardExpiryMonth":"07","cardExpiryYear":"2031"}})" },
        // An accepted payment stores "retry"; every method sends what is stored.
        { "payCardRetryNoCustomer", {}, true, cardRequest,
            R"({"cvv":"739","collectorId":"1001","requestedAmount":"1.00","merchantTransactionRefNumber":"ORD-1",
                "customerMobNum":"","customerEmail":"","serviceType":"28","requestId":"REQ-1","retry":true,
                "bankAccount":{"cardNumber":"4111111111111111","cardName":"ASHA KUMAR",
                               "cardExpiryMonth":"07","cardExpiryYear":"2031"}})" },
        { "payNB", { mobile, email, { "requestId", "REQ-9" } }, false, netBankingRequest,
            R"({"serviceType":"28","netbankingId":"SBIB","requestedAmount":"1.00",
                "merchantTransactionRefNumber":"ORD-1","collectorId":"1001","requestId":"REQ-9",
                "customerMobNum":"9876543210","retry":false,"customerEmail":"a@b.in"})" },
        { "payNBRetryNoCustomer", {}, true,
            { netBankingRequest.path, [](auto cb) { return ApiManager::payNB(cb, "", "", "", ""); } },
            R"({"serviceType":"28","netbankingId":"","requestedAmount":"","merchantTransactionRefNumber":"",
                "collectorId":"","requestId":"REQ-1","customerMobNum":"","retry":true,"customerEmail":""})" },
        // One member, empty key and empty value: not an empty object, not a missing body.
        { "bankList", { mobile, email }, true, bankListRequest, R"({"":""})", "{\n  \"\": \"\"\n}" },
    };
    for (const WireCase &c : cases) {
        SCOPED_TRACE(c.name);
        resetBackendAndDefaults();
        UserDefaults &defaults = UserDefaults::standard();
        defaults.setString("accessToken", "token-abc");
        for (const auto &[key, value] : c.stored)
            defaults.setString(key, value);
        defaults.setBool("retry", c.retry);
        exchange(c.request, { 200, R"({"responseCode":"declined","data":{}})" });

        const auto requests = backend().requests();
        ASSERT_EQ(requests.size(), 1u);
        const auto &request = requests.front();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, std::string("/KoVena/") + c.request.path);

        // Ours are exactly these two, in this order; the rest is the HTTP stack's own framing.
        const QStringList framing { "host", "content-length", "connection", "accept-encoding",
            "accept-language", "user-agent" };
        std::vector<std::pair<std::string, std::string>> ours;
        for (const auto &[name, value] : request.headers) {
            const QString key = QString::fromStdString(name).toLower();
            if (!framing.contains(key))
                ours.emplace_back(name, value);
            EXPECT_TRUE(key == "authorization" || value.find("token-abc") == std::string::npos) << name;
        }
        const decltype(ours) expected = { { "Content-Type", "application/json;charset=UTF-8" },
            { "Authorization", "Bearer token-abc" } };
        EXPECT_EQ(ours, expected);

        EXPECT_NE(request.body.find("\n  \""), std::string::npos) << "pretty-printed: " << request.body;
        EXPECT_EQ(bodyOf(request), JsonValue::parse(c.expectedBody)) << request.body;
        if (c.exactText) {
            EXPECT_EQ(request.body, c.exactText);
        }
    }
}

TEST(RequestHeaders, ControlCharactersInTheTokenCannotAddAHeader)
{
    resetBackendAndDefaults();
    UserDefaults::standard().setString("accessToken", "abc\r\nX-Injected: 1");
    exchange(statusRequest, { 200, "{}" });
    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].headerCount("X-Injected"), 0);
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer abcX-Injected: 1");
}

// Card details and the customer's contact details are hidden at any depth.
TEST(LogRedaction, HidesSensitiveValuesAtAnyDepth)
{
    const std::pair<const char *, const char *> rows[] = {
        { R"({"bankAccount":{"cardNumber":"4111111111111111"},"cvv":"123","serviceType":"28"})",
            R"({"bankAccount":"<redacted>","cvv":"<redacted>","serviceType":"28"})" },
        { R"({"a":[{"cardNumber":"4111","cardName":"A","cardExpiryMonth":"01","cardExpiryYear":"30"}]})",
            R"({"a":[{"cardNumber":"<redacted>","cardName":"<redacted>","cardExpiryMonth":"<redacted>","cardExpiryYear":"<redacted>"}]})" },
        { R"({"customerMobNum":"98","customerEmail":"","virtualAddress":null,"kovenaRefNumber":"9"})",
            R"({"customerMobNum":"<redacted>","customerEmail":"","virtualAddress":null,"kovenaRefNumber":"9"})" },
    };
    for (const auto &[body, expected] : rows)
        EXPECT_EQ(LogRedaction::redacted(JsonValue::parse(body)), JsonValue::parse(expected)) << body;
}

} // namespace
