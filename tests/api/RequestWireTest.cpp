// What each request puts on the wire: method, path, headers and body, member for member.
#include "ApiTestSupport.h"

#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

const char *kStatus = "v1/sdk/txn/1/false/2";
const char *kPay = "v1/sdk/payForService";
const char *kCollect = "v1/sdk/sendCollectOrSMS";

void store(const char *key, const char *value)
{
    UserDefaults::standard().setString(QString::fromLatin1(key), QString::fromLatin1(value));
}

struct WireCase
{
    const char *name;
    std::function<void()> storeDefaults;
    const char *endpoint;
    std::function<void(std::shared_ptr<Recorder>)> send;
    const char *expectedBody;
};

class RequestWireTest : public ::testing::TestWithParam<WireCase>
{
};

TEST_P(RequestWireTest, PutsExactlyTheAgreedRequestOnTheWire)
{
    const WireCase &c = GetParam();
    resetBackendAndDefaults();
    store("accessToken", "token-abc");
    c.storeDefaults();
    exchange(c.endpoint, { 200, R"({"responseCode":"declined"})" }, c.send);

    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), 1u);
    const auto &request = requests.front();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, std::string("/KoVena/") + c.endpoint);

    // Ours are exactly these two, in this order; the rest is the HTTP stack's own framing.
    std::vector<std::pair<std::string, std::string>> ours;
    for (const auto &[name, value] : request.headers) {
        const QString key = QString::fromStdString(name).toLower();
        if (key == "content-type" || key == "authorization")
            ours.emplace_back(name, value);
        else
            EXPECT_TRUE(QStringList({ "host", "content-length", "connection", "accept-encoding",
                                        "accept-language", "user-agent" })
                            .contains(key))
                << "unexpected header " << name;
        EXPECT_TRUE(key == "authorization" || value.find("token-abc") == std::string::npos);
    }
    const decltype(ours) expected
        = { { "Content-Type", "application/json;charset=UTF-8" }, { "Authorization", "Bearer token-abc" } };
    EXPECT_EQ(ours, expected);

    EXPECT_NE(request.body.find("\n  \""), std::string::npos) << "pretty-printed: " << request.body;
    EXPECT_EQ(bodyOf(request), JsonValue::parse(c.expectedBody)) << request.body;
}

auto storeContact = [] {
    store("customerMobNum", "9876543210");
    store("customerEmail", "a@b.in");
};

INSTANTIATE_TEST_SUITE_P(AllRequests, RequestWireTest,
    ::testing::Values(WireCase { "status", storeContact, kStatus,
                          [](auto cb) { ApiManager::getTransactionStatus(cb, "9001", "ORD-1"); },
                          R"({"kovenaRefNumber":"9001","transactionRefNumber":"ORD-1","txnOtp":""})" },
        WireCase { "payUpiCollect",
            [] {
                storeContact();
                store("requestId", "REQ-9");
            },
            kPay,
            [](auto cb) {
                ApiManager::payUPICollect(cb, QStringLiteral("ORD-7"), "10.50", QStringLiteral("1001"));
            },
            R"({"requestedAmount":"10.50","merchantTransactionRefNumber":"ORD-7","serviceType":"0",
                     "collectorId":"1001","retry":false,"requestId":"REQ-9",
                     "customerMobNum":"9876543210","customerEmail":"a@b.in"})" },
        // A mobile number without an e-mail sends neither.
        WireCase { "payUpiCollectRetryAbsentArgumentsNoEmail",
            [] {
                store("customerMobNum", "98");
                UserDefaults::standard().setBool(QStringLiteral("retry"), true);
            },
            kPay, [](auto cb) { ApiManager::payUPICollect(cb, std::nullopt, "1", std::nullopt); },
            R"({"requestedAmount":"1","merchantTransactionRefNumber":null,"serviceType":"0",
                     "collectorId":null,"retry":true,"requestId":"REQ-1","customerMobNum":"","customerEmail":""})" },
        // The merchant reference is accepted but never sent.
        WireCase { "collectByVpa", storeContact, kCollect,
            [](auto cb) {
                ApiManager::payUPICollectByVPA(cb, QStringLiteral("9001"), QStringLiteral("ORD-7"),
                    QStringLiteral("10.50"), QStringLiteral("a@upi"), "1001");
            },
            R"({"virtualAddress":"a@upi","requestedAmount":"10.50","kovenaRefNumber":"9001",
                     "collectorId":"1001","customerMobNum":"9876543210","customerEmail":"a@b.in"})" },
        WireCase { "collectByVpaAbsentArgumentsOnlyEmail", [] { store("customerEmail", "a@b.in"); }, kCollect,
            [](auto cb) {
                ApiManager::payUPICollectByVPA(
                    cb, std::nullopt, std::nullopt, std::nullopt, std::nullopt, "");
            },
            R"({"virtualAddress":null,"requestedAmount":null,"kovenaRefNumber":null,
                     "collectorId":"","customerMobNum":"","customerEmail":""})" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(RequestHeaders, ControlCharactersInTheTokenCannotAddAHeader)
{
    resetBackendAndDefaults();
    store("accessToken", "abc\r\nX-Injected: 1");
    exchange(kStatus, { 200, "{}" }, [](auto cb) { ApiManager::getTransactionStatus(cb, "1", "2"); });
    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].headerCount("X-Injected"), 0);
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer abcX-Injected: 1");
}

} // namespace
