// Each operation's own success test and what it hands to its callback.
#include "ApiTestSupport.h"

#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

void status(std::shared_ptr<Recorder> cb)
{
    ApiManager::getTransactionStatus(cb, "42", "ORD-1");
}
void pay(std::shared_ptr<Recorder> cb)
{
    ApiManager::payUPICollect(cb, QStringLiteral("ORD-1"), "5.00", QStringLiteral("1001"));
}
void collect(std::shared_ptr<Recorder> cb)
{
    ApiManager::payUPICollectByVPA(
        cb, QStringLiteral("42"), std::nullopt, QStringLiteral("5.00"), QStringLiteral("a@upi"), "1001");
}

std::string payReply(const std::string &id)
{
    return R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":)" + id
        + R"(,"getRequestRefNumResponse":{"merchantTransactionRef":"ORD-1/x"}}})";
}

struct Row
{
    const char *endpoint;
    void (*send)(std::shared_ptr<Recorder>);
    std::string body;
    // What the callback received: "-" for the failure value, else a summary of the success.
    std::string expected;
    bool retryAfter;
};

std::string summary(const Recorder::Call &call)
{
    if (call.kind == "upi1")
        return call.first.isEmpty() && call.second.isEmpty() ? "-"
                                                             : (call.first + " " + call.second).toStdString();
    if (call.kind == "status" && call.status) {
        const auto &data = call.status->data;
        return "status " + (data ? data->dictionaryRepresentation().dump() : std::string("no data"));
    }
    if (call.kind == "upi2" && call.upi)
        return "upi " + call.upi->dictionaryRepresentation().dump();
    return "-";
}

TEST(OperationReply, EachOperationSucceedsOnlyOnItsOwnCode)
{
    const char *kStatus = "v1/sdk/txn/1/false/2";
    const char *kPay = "v1/sdk/payForService";
    const char *kCollect = "v1/sdk/sendCollectOrSMS";
    const Row rows[] = {
        { kStatus, status, R"({"responseCode":"200MERSUCC","data":{}})", "-", false },
        { kStatus, status, R"({"data":{"paymentStatus":1}})", "-", false },
        { kStatus, status, R"({"responseCode":"200transrespsucc"})", "-", false },
        { kStatus, status, R"({"responseCode":"200TRANSRESPSUCC "})", "-", false },
        { kStatus, status, R"({"responseCode":200})", "-", false },
        // A failed payment is still a successful enquiry.
        { kStatus, status,
            R"({"responseCode":"200TRANSRESPSUCC","data":{"paymentStatus":2,"kovenaTransactionId":1234567890123}})",
            R"(status {"paymentStatus":2,"kovenaTransactionId":1234567890123})", false },
        { kStatus, status, R"({"responseCode":"200TRANSRESPSUCC","data":{}})", "status {}", false },
        { kStatus, status, R"({"responseCode":"200TRANSRESPSUCC"})", "status no data", false },
        { kPay, pay, R"({"responseCode":"FAILED"})", "-", false },
        { kPay, pay, R"({"responseCode":"200MERSUCC ","data":{}})", "-", false },
        { kPay, pay, R"({"responseCode":"200TRANSRESPSUCC"})", "-", false },
        { kPay, pay, payReply("1234567890123"), "1234567890123 ORD-1/x", true },
        { kPay, pay, payReply("9223372036854775807"), "9223372036854775807 ORD-1/x", true },
        { kPay, pay, payReply("-5"), "-5 ORD-1/x", true },
        { kPay, pay, payReply("1.5e3"), "1500 ORD-1/x", true },
        { kCollect, collect, R"({"responseCode":"200TRANSRESPSUCC"})", "-", false },
        { kCollect, collect, R"({"responseMessage":"no code"})", "-", false },
        { kCollect, collect, R"({"responseCode":7})", "-", false },
        { kCollect, collect, R"({"responseCode":"200MERSUCC","responseMessage":"sent","data":{"x":1}})",
            R"(upi {"responseCode":"200MERSUCC","responseMessage":"sent"})", false },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.body);
        resetBackendAndDefaults();
        EXPECT_EQ(summary(exchange(row.endpoint, { 200, row.body }, row.send)), row.expected);
        EXPECT_EQ(UserDefaults::standard().boolean(QStringLiteral("retry")), row.retryAfter);
    }
}

TEST(OperationReply, PaymentAfterAnAcceptedOneIsSentAsRetry)
{
    resetBackendAndDefaults();
    exchange("v1/sdk/payForService", { 200, payReply("1") }, pay);
    exchange("v1/sdk/payForService", { 200, R"({"responseCode":"FAILED"})" }, pay);
    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(bodyOf(requests[0])["retry"], false);
    EXPECT_EQ(bodyOf(requests[1])["retry"], true);
}

} // namespace
