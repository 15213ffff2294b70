// Card and net-banking payments: registration, the bank's page and the customer's decision.
#include "RawConnection.h"
#include "SandboxClient.h"

#include "sandbox/WireText.h"

#include <functional>
#include <map>
#include <set>

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

std::set<std::string> keysOf(const json &object)
{
    std::set<std::string> keys;
    for (const auto &item : object.items())
        keys.insert(item.key());
    return keys;
}

// The raw name=value fields of a form body, without decoding.
std::map<std::string, std::string> fieldsOf(const std::string &body)
{
    std::map<std::string, std::string> fields;
    std::size_t start = 0;
    while (start < body.size()) {
        std::size_t end = std::min(body.find('&', start), body.size());
        std::string field = body.substr(start, end - start);
        std::size_t eq = field.find('=');
        fields[field.substr(0, eq)] = eq == std::string::npos ? "" : field.substr(eq + 1);
        start = end + 1;
    }
    return fields;
}

// What the library does to the form before it posts it.
std::string asTheLibraryPostsIt(std::string form)
{
    for (std::size_t at; (at = form.find("device_type=1")) != std::string::npos;)
        form.replace(at, 13, "device_type=0");
    return form;
}

class BankPaymentTest : public SandboxTest
{
protected:
    struct Registered
    {
        std::int64_t id = 0;
        std::string url;
        std::string form;
    };

    Registered registerPayment(const json &body)
    {
        json reply = call(kPay, body);
        EXPECT_EQ(reply["responseCode"], "200MERSUCC") << reply.dump();
        const json &data = reply["data"];
        if (!data.contains("paymentData"))
            return {};
        return { data["kovenaTransactionId"].get<std::int64_t>(), data["paymentData"]["url"],
            data["paymentData"]["data"] };
    }

    int paymentStatus(std::int64_t id) { return status(std::to_string(id), "")["data"]["paymentStatus"]; }

    httplib::Result confirm(std::int64_t id, const std::string &decision)
    {
        return postForm(
            "/bank/confirm", "kovenaTransactionId=" + std::to_string(id) + "&decision=" + decision);
    }
};

TEST_F(BankPaymentTest, RegistrationAnswersTheBankPageAndAFormWithoutCardData)
{
    struct Row
    {
        const char *what;
        json body;
        std::string channel;
        std::optional<std::string> bankCode;
        std::string transactionType;
    };
    const Row rows[] = {
        { "card", cardBody("ORD-C"), "card", std::nullopt, "CARD" },
        { "net banking", netBankingBody("1002", "ORD-N"), "netbanking", "HDFB", "NETBANKING" },
        { "second bank with a popular code", netBankingBody("1041", "ORD-S"), "netbanking", "SBIB",
            "NETBANKING" },
    };
    std::int64_t expectedId = 1700000000001;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        json reply = call(kPay, row.body);
        EXPECT_EQ(keysOf(reply),
            std::set<std::string>({ "success", "responseCode", "responseMessage", "secureHash", "data" }));
        EXPECT_EQ(reply["success"], "true");
        EXPECT_EQ(reply["responseCode"], "200MERSUCC");
        EXPECT_TRUE(reply["responseMessage"].is_string());
        EXPECT_EQ(reply["secureHash"].get<std::string>().size(), 64u);
        const json &data = reply["data"];
        EXPECT_EQ(keysOf(data), std::set<std::string>({ "kovenaTransactionId", "paymentData" }));
        EXPECT_EQ(data["kovenaTransactionId"], expectedId);
        EXPECT_EQ(keysOf(data["paymentData"]), std::set<std::string>({ "url", "data" }));
        EXPECT_EQ(
            data["paymentData"]["url"], "http://127.0.0.1:" + std::to_string(sandbox.port()) + "/bank/pay");

        const std::string form = data["paymentData"]["data"];
        auto fields = fieldsOf(form);
        EXPECT_EQ(fields["kovenaTransactionId"], std::to_string(expectedId));
        EXPECT_EQ(fields["amount"], "10.50");
        EXPECT_EQ(fields["merchantTransactionRefNumber"], row.body["merchantTransactionRefNumber"]);
        EXPECT_EQ(fields["channel"], row.channel);
        EXPECT_EQ(fields.count("bankCode") ? std::optional(fields["bankCode"]) : std::nullopt, row.bankCode);
        EXPECT_EQ(fields["device_type"], "1");
        EXPECT_FALSE(fields["checksum"].empty());
        for (const char *secret : { "4111", "cvv", "Asha", "cardNumber" })
            EXPECT_EQ(form.find(secret), std::string::npos) << secret;

        json record = status(std::to_string(expectedId), "")["data"];
        EXPECT_EQ(record["paymentStatus"], 0);
        EXPECT_EQ(record["transactionType"], row.transactionType);
        EXPECT_EQ(record["kovenaServiceId"], 28);
        EXPECT_EQ(record["requestedAmount"], "10.50");
        EXPECT_EQ(record["transactionRefNumber"], row.body["merchantTransactionRefNumber"]);
        EXPECT_EQ(record["collectorId"], "COL-7");
        EXPECT_EQ(sendCollect(std::to_string(expectedId), "success@kovena")["responseCode"], "400BADREQ")
            << "a card or net-banking payment takes no UPI collect";
        ++expectedId;
    }
}

TEST_F(BankPaymentTest, RefusedRegistrationsCarryAnEmptyDataObjectAndCreateNothing)
{
    const auto [year, month] = currentMonth();
    const auto [lastYear, lastMonth] = month == 1 ? std::pair(year - 1, 12) : std::pair(year, month - 1);
    auto card = [](std::function<void(json &)> change) {
        json body = cardBody();
        change(body);
        return body;
    };
    auto account = [&](const char *key, json value) {
        return card([key, value](json &b) { b["bankAccount"][key] = value; });
    };
    auto expiry = [&](int y, int m) {
        return card([y, m](json &b) {
            b["bankAccount"]["cardExpiryYear"] = std::to_string(y);
            b["bankAccount"]["cardExpiryMonth"] = std::to_string(m);
        });
    };
    struct Row
    {
        const char *what;
        json body;
        const char *code; // nullptr: accepted
    };
    const Row rows[] = {
        { "Amex with four-digit CVV", card([](json &b) {
             b["bankAccount"]["cardNumber"] = "378282246310005";
             b["cvv"] = "1234";
         }),
            nullptr },
        { "Maestro without CVV or expiry", card([](json &b) {
             b["bankAccount"]["cardNumber"] = "6759649826438453";
             b["bankAccount"]["cardExpiryMonth"] = "MM";
             b["bankAccount"]["cardExpiryYear"] = "YYYY";
             b["cvv"] = "";
         }),
            nullptr },
        { "expires this month", expiry(year, month), nullptr },
        { "month with leading zero", account("cardExpiryMonth", "01"), nullptr },
        { "expired last month", expiry(lastYear, lastMonth), "400CARDEXPIRED" },
        { "Maestro with a past expiry", card([&](json &b) {
             b["bankAccount"]["cardNumber"] = "6759649826438453";
             b["bankAccount"]["cardExpiryYear"] = std::to_string(year - 1);
         }),
            "400CARDEXPIRED" },
        { "declined test card", account("cardNumber", "4000000000000002"), "400CARDDECLINED" },
        { "expired test card", account("cardNumber", "4000000000000069"), "400CARDEXPIRED" },
        { "Luhn check fails", account("cardNumber", "4111111111111112"), "400CARDINVALID" },
        { "grouped number", account("cardNumber", "4111-1111-1111-1111"), "400CARDINVALID" },
        { "eleven digits", account("cardNumber", "41111111113"), "400CARDINVALID" },
        { "number as JSON number", account("cardNumber", 4111111111111111), "400CARDINVALID" },
        { "blank name", account("cardName", "  "), "400CARDINVALID" },
        { "month 13", account("cardExpiryMonth", "13"), "400CARDINVALID" },
        { "placeholder month", account("cardExpiryMonth", "MM"), "400CARDINVALID" },
        { "two-digit year", account("cardExpiryYear", "30"), "400CARDINVALID" },
        { "Visa with four-digit CVV", card([](json &b) { b["cvv"] = "1234"; }), "400CARDINVALID" },
        { "Amex with three-digit CVV", account("cardNumber", "378282246310005"), "400CARDINVALID" },
        { "no CVV", card([](json &b) { b.erase("cvv"); }), "400CARDINVALID" },
        { "bankAccount not an object", card([](json &b) { b["bankAccount"] = "4111111111111111"; }),
            "400BADREQ" },
        { "card and bank", card([](json &b) { b["netbankingId"] = "1002"; }), "400BADREQ" },
        { "neither card nor bank", card([](json &b) { b.erase("bankAccount"); }), "400BADREQ" },
        // The checks of a UPI registration come first, for both kinds.
        { "card amount empty", card([](json &b) { b["requestedAmount"] = ""; }), "400BADREQ" },
        { "bank id as a JSON number",
            [] {
                json b = netBankingBody("");
                b["netbankingId"] = 1038;
                return b;
            }(),
            nullptr },
        { "unknown bank", netBankingBody("9"), "404BANKNOTFOUND" },
        { "malformed bank id", netBankingBody("10x2"), "400BADREQ" },
    };
    std::int64_t nextId = 1700000000001;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        json reply = call(kPay, row.body);
        if (!row.code) {
            EXPECT_EQ(reply["responseCode"], "200MERSUCC") << reply.dump();
            EXPECT_EQ(reply["data"]["kovenaTransactionId"], nextId++) << "refusals use up no id";
            continue;
        }
        EXPECT_EQ(
            keysOf(reply), std::set<std::string>({ "success", "responseCode", "responseMessage", "data" }));
        EXPECT_EQ(reply["success"], "false");
        EXPECT_EQ(reply["responseCode"], row.code);
        EXPECT_FALSE(reply["responseMessage"].get<std::string>().empty());
        EXPECT_EQ(reply["data"], json::object());
    }
}

TEST_F(BankPaymentTest, PageShowsThePaymentOnlyForTheFormAsTheLibraryPostsIt)
{
    const Registered card = registerPayment(cardBody("ORD<9>&device_type=1"));
    const Registered bank = registerPayment(netBankingBody("1002", "ORD-N"));
    const std::string upiId = registerUpi("ORD-U")["data"]["kovenaTransactionId"].dump();
    ASSERT_NE(card.form.find("device_type=1"), std::string::npos);
    auto replace = [](std::string text, const std::string &from, const std::string &to) {
        return text.replace(text.find(from), from.size(), to);
    };
    struct Row
    {
        const char *what;
        std::string body;
        int status;
        std::vector<std::string> shown;
        bool buttons;
    };
    const Row rows[] = {
        { "card form as the library posts it", asTheLibraryPostsIt(card.form), 200,
            { "Card ending 1111", "ORD&lt;9&gt;&amp;device_type=1",
                "\xE2\x82\xB9"
                "10.50" },
            true },
        { "bank form as the library posts it", asTheLibraryPostsIt(bank.form), 200,
            { "HDFC Bank", "ORD-N",
                "\xE2\x82\xB9"
                "10.50" },
            true },
        { "device type left at 1", card.form, 403,
            { "This page cannot be shown inside an app (device_type=1)" }, false },
        { "no device type", replace(card.form, "&device_type=1", ""), 400, { "device_type" }, false },
        { "device type 2", replace(card.form, "device_type=1", "device_type=2"), 400, { "device_type" },
            false },
        { "amount changed", replace(asTheLibraryPostsIt(card.form), "amount=10.50", "amount=1.50"), 400,
            { "altered" }, false },
        { "unknown transaction", replace(card.form, std::to_string(card.id), "1799999999999"), 404,
            { "Unknown payment" }, false },
        { "UPI transaction", "kovenaTransactionId=" + upiId + "&device_type=0", 404, { "Unknown payment" },
            false },
        { "empty body", "", 404, { "Unknown payment" }, false },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        auto result = postForm("/bank/pay", row.body);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, row.status);
        EXPECT_EQ(result->get_header_value("Content-Type"), "text/html; charset=utf-8");
        for (const std::string &text : row.shown)
            EXPECT_NE(result->body.find(text), std::string::npos) << text << "\n" << result->body;
        for (const char *control : { "id=\"approve\"", "id=\"decline\"", "<form" })
            EXPECT_EQ(result->body.find(control) != std::string::npos, row.buttons) << control;
    }
    EXPECT_EQ(
        postForm("/bank/pay", asTheLibraryPostsIt(bank.form))->body.find("Card ending"), std::string::npos);
    EXPECT_EQ(paymentStatus(card.id), 0) << "showing the page decides nothing";
}

TEST_F(BankPaymentTest, FormIsReadWhateverTheContentTypeSays)
{
    const Registered card = registerPayment(cardBody());
    const std::string body = asTheLibraryPostsIt(card.form);
    for (const char *contentType :
        { "application/x-www-form-urlencoded", "text/plain", "application/json" }) {
        auto result = postForm("/bank/pay", body, contentType);
        ASSERT_TRUE(result) << contentType;
        EXPECT_NE(result->body.find("id=\"approve\""), std::string::npos) << contentType;
    }
    RawConnection connection(sandbox.port());
    ASSERT_TRUE(connection.send("POST /bank/pay HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: "
        + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body));
    bool closed = false;
    EXPECT_NE(connection.readToEnd(closed).find("id=\"approve\""), std::string::npos)
        << "no Content-Type at all";
    EXPECT_EQ(sandbox.requests().back().header("Content-Type"), "");
}

TEST_F(BankPaymentTest, DecisionRedirectsToTheReturnAddressAndSettlesTheStatus)
{
    const std::pair<const char *, int> rows[] = { { "approve", 1 }, { "decline", 2 } };
    for (const auto &[decision, expected] : rows) {
        SCOPED_TRACE(decision);
        const Registered card = registerPayment(cardBody(std::string("ORD-") + decision));
        auto answer = confirm(card.id, decision);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 303);
        EXPECT_EQ(answer->get_header_value("Location"),
            "http://127.0.0.1:" + std::to_string(sandbox.port())
                + "/KoVena//v3/return?kovenaTransactionId=" + std::to_string(card.id));
        EXPECT_EQ(paymentStatus(card.id), expected);

        auto again = confirm(card.id, expected == 1 ? "decline" : "approve");
        ASSERT_TRUE(again);
        EXPECT_EQ(again->status, 409);
        EXPECT_EQ(again->get_header_value("Location"), "");
        EXPECT_EQ(paymentStatus(card.id), expected);
        auto pageAgain = postForm("/bank/pay", asTheLibraryPostsIt(card.form));
        ASSERT_TRUE(pageAgain);
        EXPECT_EQ(pageAgain->status, 409);
        EXPECT_EQ(pageAgain->body.find("id=\"approve\""), std::string::npos);
    }
}

TEST_F(BankPaymentTest, ConfirmationsThatDecideNothing)
{
    const Registered card = registerPayment(cardBody());
    const std::string id = std::to_string(card.id);
    const std::string upiId = registerUpi("ORD-U")["data"]["kovenaTransactionId"].dump();
    const std::pair<std::string, int> rows[] = {
        { "kovenaTransactionId=1799999999999&decision=approve", 404 },
        { "decision=approve", 404 },
        { "kovenaTransactionId=" + upiId + "&decision=approve", 404 },
        { "kovenaTransactionId=42&decision=decline", 404 },
        { "kovenaTransactionId=" + id, 400 },
        { "kovenaTransactionId=" + id + "&decision=maybe", 400 },
        { "kovenaTransactionId=" + id + "&decision=APPROVE", 400 },
    };
    for (const auto &[body, code] : rows) {
        SCOPED_TRACE(body);
        auto result = postForm("/bank/confirm", body);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, code);
        EXPECT_EQ(result->get_header_value("Location"), "");
    }
    EXPECT_EQ(paymentStatus(card.id), 0);
    EXPECT_EQ(status("42", "")["data"]["paymentStatus"], 1);
    EXPECT_EQ(status(upiId, "")["data"]["paymentStatus"], 0);
}

TEST_F(BankPaymentTest, BothSpellingsOfTheReturnAddressLoad)
{
    httplib::Client client("127.0.0.1", sandbox.port());
    const char *paths[]
        = { "/KoVena/v3/return", "/KoVena//v3/return", "/KoVena//v3/return?kovenaTransactionId=7" };
    for (const char *path : paths) {
        for (const char *method : { "GET", "POST" }) {
            SCOPED_TRACE(std::string(method) + " " + path);
            sandbox.clearRequests();
            auto result
                = std::string(method) == "GET" ? client.Get(path) : client.Post(path, "", "text/plain");
            ASSERT_TRUE(result);
            EXPECT_EQ(result->status, 200);
            EXPECT_EQ(result->get_header_value("Content-Type"), "text/html; charset=utf-8");
            EXPECT_NE(result->body.find("Payment finished, returning to the merchant"), std::string::npos);
            ASSERT_EQ(sandbox.requests().size(), 1u);
            EXPECT_EQ(sandbox.requests()[0].path, std::string(path).substr(0, std::string(path).find('?')));
        }
    }
}

TEST(Rupees, GroupsDigitsTheIndianWay)
{
    const std::pair<const char *, const char *> rows[] = {
        { "0.5", "0.50" },
        { "100", "100.00" },
        { "1000", "1,000.00" },
        { "99999.9", "99,999.90" },
        { "100000", "1,00,000.00" },
        { "1234567.5", "12,34,567.50" },
        { "0.125", "0.125" },
    };
    for (const auto &[amount, shown] : rows)
        EXPECT_EQ(wire::rupees(amount), std::string("\xE2\x82\xB9") + shown) << amount;
}

} // namespace
} // namespace kovena::sandbox::test
