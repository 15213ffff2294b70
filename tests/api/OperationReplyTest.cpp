// Each operation's own success test and what it hands to its callback.
#include "ApiTestSupport.h"

#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/UserDefaults.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

std::string payReply(const std::string &id)
{
    return R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":)" + id
        + R"(,"getRequestRefNumResponse":{"merchantTransactionRef":"ORD-1/x"}}})";
}

// What the callback received: "-" for the failure value, else a summary of the success.
std::string summary(const Recorder::Call &call)
{
    if (call.kind == "upi1" && !(call.first.isEmpty() && call.second.isEmpty()))
        return (call.first + " " + call.second).toStdString();
    if (call.status)
        return "status "
            + (call.status->data ? call.status->data->dictionaryRepresentation().dump() : "no data");
    if (call.upi)
        return "upi " + call.upi->dictionaryRepresentation().dump();
    return "-";
}

TEST(OperationReply, EachOperationSucceedsOnlyOnItsOwnCode)
{
    struct Row
    {
        Request request;
        std::string body, expected;
        bool retryAfter;
    };
    const Row rows[] = {
        { statusRequest, R"({"responseCode":"200MERSUCC","data":{}})", "-", false },
        { statusRequest, R"({"data":{"paymentStatus":1}})", "-", false },
        { statusRequest, R"({"responseCode":"200transrespsucc"})", "-", false },
        { statusRequest, R"({"responseCode":"200TRANSRESPSUCC "})", "-", false },
        { statusRequest, R"({"responseCode":200})", "-", false },
        // A failed payment is still a successful enquiry.
        { statusRequest,
            R"({"responseCode":"200TRANSRESPSUCC","data":{"paymentStatus":2,"kovenaTransactionId":1234567890123}})",
            R"(status {"paymentStatus":2,"kovenaTransactionId":1234567890123})", false },
        { statusRequest, R"({"responseCode":"200TRANSRESPSUCC","data":{}})", "status {}", false },
        { statusRequest, R"({"responseCode":"200TRANSRESPSUCC"})", "status no data", false },
        { paymentRequest, R"({"responseCode":"FAILED"})", "-", false },
        { paymentRequest, R"({"responseCode":"200MERSUCC ","data":{}})", "-", false },
        { paymentRequest, R"({"responseCode":"200TRANSRESPSUCC"})", "-", false },
        { paymentRequest, payReply("1234567890123"), "1234567890123 ORD-1/x", true },
        { paymentRequest, payReply("9223372036854775807"), "9223372036854775807 ORD-1/x", true },
        { paymentRequest, payReply("-5"), "-5 ORD-1/x", true },
        { paymentRequest, payReply("1.5e3"), "1500 ORD-1/x", true },
        { collectRequest, R"({"responseCode":"200TRANSRESPSUCC"})", "-", false },
        { collectRequest, R"({"responseMessage":"no code"})", "-", false },
        { collectRequest, R"({"responseCode":7})", "-", false },
        { collectRequest, R"({"responseCode":"200MERSUCC","responseMessage":"sent","data":{"x":1}})",
            R"(upi {"responseCode":"200MERSUCC","responseMessage":"sent"})", false },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.body);
        resetBackendAndDefaults();
        EXPECT_EQ(summary(exchange(row.request, { 200, row.body })), row.expected);
        EXPECT_EQ(UserDefaults::standard().boolean("retry"), row.retryAfter);
    }
}

TEST(OperationReply, PaymentAfterAnAcceptedOneIsSentAsRetry)
{
    resetBackendAndDefaults();
    exchange(paymentRequest, { 200, payReply("1") });
    exchange(paymentRequest, { 200, R"({"responseCode":"FAILED"})" });
    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(bodyOf(requests[0])["retry"], false);
    EXPECT_EQ(bodyOf(requests[1])["retry"], true);
}

} // namespace
