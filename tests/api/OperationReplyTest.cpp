// Each operation's own success test and what it hands to its callback.
#include "ApiTestSupport.h"

#include "model/BankNB.h"
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

// A card or net-banking reply that registered the payment.
std::string bankPageReply(const std::string &id, const std::string &paymentData)
{
    return R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":)" + id + R"(,"paymentData":)"
        + paymentData + "}}";
}
const std::string kPaymentData = R"({"url":"https://bank.example/pay?x=1","data":"encdata=A%2B1&mid=7"})";

// What the callback received: "-" for the failure value, else a summary of the success.
std::string summary(const Recorder::Call &call)
{
    if (call.kind == "params" && !(call.first.isEmpty() && call.second.isEmpty() && call.third.isEmpty()))
        return (call.first + " | " + call.second + " | " + call.third).toStdString();
    if (call.kind == "banks") {
        JsonValue banks = JsonValue::array();
        for (const auto &bank : call.banks)
            banks.push_back(bank->dictionaryRepresentation());
        return "banks " + banks.dump();
    }
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
        { paymentRequest, payReply("9223372036854775807"), "9223372036854775807 ORD-1/x", true },
        { paymentRequest, payReply("-5"), "-5 ORD-1/x", true },
        { paymentRequest, payReply("1.5e3"), "1500 ORD-1/x", true },
        { collectRequest, R"({"responseCode":"200TRANSRESPSUCC"})", "-", false },
        { collectRequest, R"({"responseMessage":"no code"})", "-", false },
        { collectRequest, R"({"responseCode":7})", "-", false },
        { collectRequest, R"({"responseCode":"200MERSUCC","responseMessage":"sent","data":{"x":1}})",
            R"(upi {"responseCode":"200MERSUCC","responseMessage":"sent"})", false },
        // A declined card payment still carries "data"; a declined net-banking one need not.
        { cardRequest, R"({"responseCode":"FAILED","data":{}})", "-", false },
        { cardRequest, R"({"responseCode":"200TRANSRESPSUCC","data":{"paymentData":{}}})", "-", false },
        { netBankingRequest, R"({"responseCode":"FAILED"})", "-", false },
        { netBankingRequest, R"({"responseCode":"200MERSUCC ","data":[]})", "-", false },
        { cardRequest, bankPageReply("1234567890123", kPaymentData),
            "https://bank.example/pay?x=1 | encdata=A%2B1&mid=7 | 1234567890123", true },
        { netBankingRequest, bankPageReply("9223372036854775807", kPaymentData),
            "https://bank.example/pay?x=1 | encdata=A%2B1&mid=7 | 9223372036854775807", true },
        { cardRequest, bankPageReply("-5", R"({"url":"u","data":"","extra":1})"), "u |  | -5", true },
        { netBankingRequest, bankPageReply("1.5e3", R"({"data":"d","url":""})"), " | d | 1500", true },
        // The bank list has no reply code: whatever the code, a "data" that reads is delivered.
        { bankListRequest,
            R"({"responseCode":"500ERR","data":[{"netBankingId":3,"netBankingName":"Bank A","netbankingCodes":"AB"},
                {"netBankingName":"Bank B","netBankingCode":"BB"},{}]})",
            R"(banks [{"netBankingId":3,"netBankingName":"Bank A","netbankingCodes":"AB"},{"netBankingName":"Bank B"},{}])",
            false },
        { bankListRequest, R"({"data":[{"netbankingCodes":"PNBB","netBankingId":"7"}]})",
            R"(banks [{"netbankingCodes":"PNBB"}])", false },
        { bankListRequest, R"({"responseCode":"200MERSUCC","data":[]})", "banks []", false },
        { bankListRequest, R"({"data":null})", "banks []", false },
        { bankListRequest, R"({"data":"x"})", "banks []", false },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.body);
        resetBackendAndDefaults();
        EXPECT_EQ(summary(exchange(row.request, { 200, row.body })), row.expected);
        EXPECT_EQ(UserDefaults::standard().boolean("retry"), row.retryAfter);
    }
}

} // namespace
