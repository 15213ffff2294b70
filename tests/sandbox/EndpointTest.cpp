#include "SandboxClient.h"

#include <functional>
#include <optional>

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

using EndpointTest = SandboxTest;

TEST_F(EndpointTest, AuthorizationIsCheckedOnEveryEndpoint)
{
    struct Row
    {
        std::string authorization;
        std::optional<std::string> error;
    };
    const Row rows[] = {
        { "", "Unauthorized" },
        { "Bearer ", "Unauthorized" },
        { "Bearer", "Unauthorized" },
        { "bearer abc", "Unauthorized" },
        { "Token abc", "Unauthorized" },
        { "Bearer expired-token", "Token expired" },
        { "Bearer MERCHANT_ACCESS_TOKEN", std::nullopt },
        { "Bearer abc", std::nullopt },
    };
    const json body = { { "kovenaRefNumber", "42" }, { "transactionRefNumber", "" }, { "txnOtp", "" } };
    for (const char *endpoint : { kStatus, kPay, kCollect, kBankList }) {
        for (const Row &row : rows) {
            SCOPED_TRACE(std::string(endpoint) + " with '" + row.authorization + "'");
            json reply = call(endpoint, body, row.authorization);
            ASSERT_TRUE(reply.is_object());
            if (row.error)
                EXPECT_EQ(reply, json({ { "error", *row.error } }));
            else
                EXPECT_FALSE(reply.contains("error"));
        }
    }
}

// A body that is not a JSON object, a wrong method and an unknown path each get their JSON error;
// any object, even an empty one, reaches the endpoint.
TEST_F(EndpointTest, MalformedRequestsGetJsonErrors)
{
    for (const char *body : { "", "not json", "[1,2]", "\"text\"", "true", "{" }) {
        auto result = post(kStatus, body);
        ASSERT_TRUE(result) << body;
        EXPECT_EQ(json::parse(result->body), json({ { "error", "Bad request" } })) << body;
    }
    for (const char *body : { "{}", "{\"a\":1}" })
        EXPECT_EQ(call(kStatus, json::parse(body)).value("responseCode", ""), "404TXNNOTFOUND") << body;

    httplib::Client client("127.0.0.1", sandbox.port());
    auto get = client.Get("/KoVena/v1/sdk/payForService");
    ASSERT_TRUE(get);
    EXPECT_EQ(json::parse(get->body), json({ { "error", "Method not allowed" } }));
    auto unknown = post("v1/sdk/unknown", "{}");
    ASSERT_TRUE(unknown);
    EXPECT_EQ(json::parse(unknown->body), json({ { "error", "Not found" } }));
    auto outside = client.Post("/elsewhere", "{}", "application/json");
    ASSERT_TRUE(outside);
    EXPECT_EQ(outside->status, 404);
}

TEST_F(EndpointTest, StatusFindsTransactionsByIdOrReference)
{
    struct Row
    {
        std::string id;
        std::string reference;
        std::optional<std::int64_t> foundId;
        int paymentStatus;
    };
    const Row rows[] = {
        { "42", "", 42, 1 },
        { "43", "ORD-1", 43, 2 }, // the id wins over the reference
        { "", "ORD-3", 44, 14 },
        { "", "ORD-5", 46, 5 },
        { "999", "", std::nullopt, 0 },
        { "", "NO-SUCH-ORDER", std::nullopt, 0 },
        { "", "", std::nullopt, 0 },
        { "4x2", "ORD-1", std::nullopt, 0 }, // a malformed id does not fall back to the reference
        { "-42", "", std::nullopt, 0 },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE("id '" + row.id + "' reference '" + row.reference + "'");
        json reply = status(row.id, row.reference);
        if (!row.foundId) {
            EXPECT_EQ(reply,
                json({ { "success", "false" }, { "responseCode", "404TXNNOTFOUND" },
                    { "responseMessage", "Transaction not found" } }));
            continue;
        }
        EXPECT_EQ(reply["success"], "true");
        EXPECT_EQ(reply["responseCode"], "200TRANSRESPSUCC");
        const json &data = reply["data"];
        EXPECT_EQ(data["kovenaRefNumber"], *row.foundId);
        EXPECT_EQ(data["kovenaTransactionId"], *row.foundId);
        EXPECT_EQ(data["paymentStatus"], row.paymentStatus);
        EXPECT_EQ(data["status"], row.paymentStatus);
        for (const char *key : { "merchantId", "requestStatus" })
            EXPECT_TRUE(data[key].is_number_integer()) << key;
        for (const char *key :
            { "customerMobNum", "customerVpa", "requestedAmount", "remarks", "transactionRefNumber",
                "bankRefNumber", "transactionType", "customerEmail", "collectorId", "transactionTime" })
            EXPECT_TRUE(data[key].is_string()) << key;
    }
}

TEST_F(EndpointTest, ReferenceLookupTakesTheLatestTransaction)
{
    sandbox.storeTransaction(700, "SHARED", 2, "5");
    sandbox.storeTransaction(600, "SHARED", 1, "5");
    EXPECT_EQ(status("", "SHARED")["data"]["kovenaRefNumber"], 600);

    json first = registerUpi("RETRIED");
    json second = registerUpi("RETRIED");
    EXPECT_EQ(status("", "RETRIED")["data"]["kovenaRefNumber"], second["data"]["kovenaTransactionId"]);
    EXPECT_NE(first["data"]["kovenaTransactionId"], second["data"]["kovenaTransactionId"]);
}

TEST_F(EndpointTest, RegistrationValidatesItsBody)
{
    const std::tuple<const char *, std::function<void(json &)>, const char *> rows[] = {
        { "valid", [](json &) {}, "200MERSUCC" },
        { "whole amount", [](json &b) { b["requestedAmount"] = "100"; }, "200MERSUCC" },
        { "empty amount", [](json &b) { b["requestedAmount"] = ""; }, "400BADREQ" },
        { "text amount", [](json &b) { b["requestedAmount"] = "ten"; }, "400BADREQ" },
        { "leading point", [](json &b) { b["requestedAmount"] = ".5"; }, "400BADREQ" },
        { "negative amount", [](json &b) { b["requestedAmount"] = "-5"; }, "400BADREQ" },
        { "numeric amount", [](json &b) { b["requestedAmount"] = 10; }, "400BADREQ" },
        { "no amount", [](json &b) { b.erase("requestedAmount"); }, "400BADREQ" },
        { "empty reference", [](json &b) { b["merchantTransactionRefNumber"] = ""; }, "400BADREQ" },
        { "empty collector", [](json &b) { b["collectorId"] = ""; }, "400BADREQ" },
        { "no collector", [](json &b) { b.erase("collectorId"); }, "400BADREQ" },
        { "card service without a card", [](json &b) { b["serviceType"] = "28"; }, "400BADREQ" },
        { "unknown service", [](json &b) { b["serviceType"] = "5"; }, "400SERVICETYPE" },
        { "no service", [](json &b) { b.erase("serviceType"); }, "400SERVICETYPE" },
    };
    for (const auto &[what, change, code] : rows) {
        SCOPED_TRACE(what);
        json body = registerUpiBody("ORD-9");
        change(body);
        json reply = call(kPay, body);
        EXPECT_EQ(reply["responseCode"], code);
        EXPECT_EQ(reply["success"], std::string(code) == "200MERSUCC" ? "true" : "false");
        EXPECT_TRUE(reply["responseMessage"].is_string());
    }
}

TEST_F(EndpointTest, RegistrationCreatesPendingTransactionsThatTakeOneCollect)
{
    json first = registerUpi("ORD-A", "99.90");
    ASSERT_EQ(first["responseCode"], "200MERSUCC");
    EXPECT_EQ(first["data"]["kovenaTransactionId"], 1700000000001);
    EXPECT_EQ(first["data"]["getRequestRefNumResponse"]["merchantTransactionRef"], "ORD-A");

    const std::string id = "1700000000001";
    json record = status(id, "")["data"];
    EXPECT_EQ(record["paymentStatus"], 0);
    EXPECT_EQ(record["transactionRefNumber"], "ORD-A");
    EXPECT_EQ(record["requestedAmount"], "99.90");
    EXPECT_EQ(record["collectorId"], "COL-7");
    EXPECT_EQ(record["customerMobNum"], "9999999999");

    const std::tuple<std::string, std::string, std::string> rows[] = {
        { "1234", "success@kovena", "404TXNNOTFOUND" },
        { "", "success@kovena", "404TXNNOTFOUND" },
        { "abc", "success@kovena", "404TXNNOTFOUND" },
        { id, "", "400BADREQ" },
        { "42", "success@kovena", "400TXNCLOSED" },
        { id, "someone@okaxis", "200MERSUCC" },
    };
    for (const auto &[txn, vpa, code] : rows) {
        SCOPED_TRACE(txn + " " + vpa);
        json reply = sendCollect(txn, vpa);
        EXPECT_EQ(reply["responseCode"], code);
        if (code == "200MERSUCC") {
            EXPECT_EQ(reply["success"], "true");
            EXPECT_EQ(reply["responseMessage"], "Collect request sent");
            EXPECT_TRUE(reply["secureHash"].is_string());
            EXPECT_TRUE(reply["csrfToken"].is_string());
        }
    }
    EXPECT_EQ(status(id, "")["data"]["customerVpa"], "someone@okaxis");
}

} // namespace
} // namespace kovena::sandbox::test
