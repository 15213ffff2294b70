// The faults chosen by a "fault-<name>" token, as they look on the wire.
#include "RawConnection.h"
#include "SandboxClient.h"

#include "sandbox/Fault.h"
#include "sandbox/RecordingServer.h"
#include "sandbox/WireText.h"

#include <functional>

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

// What came back on one connection that asked with "Connection: close".
struct RawReply
{
    std::string head; // status line and headers, without the blank line
    std::string body;
    bool headComplete = false;
    bool closed = false; // an orderly end
    bool reset = false;

    int status() const { return headComplete ? std::stoi(head.substr(9, 3)) : 0; }
    std::string header(const std::string &name) const
    {
        for (const auto &[key, value] : RecordingServer::parseHeaderBlock(head + "\r\n\r\n")) {
            if (wire::toLower(key) == wire::toLower(name))
                return value;
        }
        return {};
    }
};

class FaultTest : public SandboxTest
{
protected:
    // `endpoint` is under "/KoVena/" unless it starts with a slash.
    RawReply ask(const std::string &token, const std::string &endpoint = kStatus,
        const std::string &body = R"({"kovenaRefNumber":"42","transactionRefNumber":"","txnOtp":""})")
    {
        const std::string path = endpoint.front() == '/' ? endpoint : "/KoVena/" + endpoint;
        RawConnection connection(sandbox.port());
        EXPECT_TRUE(connection.send("POST " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
            + "Authorization: Bearer " + token + "\r\nContent-Type: application/json;charset=UTF-8\r\n"
            + "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body));
        RawReply reply;
        const std::string received = connection.readToEnd(reply.closed);
        reply.reset = connection.wasReset();
        const auto end = received.find("\r\n\r\n");
        reply.headComplete = end != std::string::npos;
        reply.head = received.substr(0, end);
        reply.body = reply.headComplete ? received.substr(end + 4) : std::string();
        return reply;
    }
};

// Every fault against the status enquiry of a stored transaction, next to its normal answer.
TEST_F(FaultTest, EachTokenPlaysItsFaultOnTheWire)
{
    const RawReply normal = ask("t");
    ASSERT_EQ(normal.status(), 200);
    ASSERT_TRUE(normal.closed);

    using Check = std::function<void(const RawReply &)>;
    const std::pair<std::string, Check> rows[] = {
        { "reset-before-headers",
            [](const RawReply &r) {
                EXPECT_TRUE(r.reset);
                EXPECT_EQ(r.head, "");
            } },
        { "reset-after-headers",
            [&](const RawReply &r) {
                EXPECT_TRUE(r.reset);
                ASSERT_TRUE(r.headComplete);
                EXPECT_EQ(r.status(), 200);
                EXPECT_EQ(r.header("Content-Length"), std::to_string(normal.body.size()));
                EXPECT_EQ(r.body, "");
            } },
        { "cut-body",
            [&](const RawReply &r) {
                EXPECT_TRUE(r.closed);
                EXPECT_EQ(r.header("Content-Length"), std::to_string(normal.body.size()));
                EXPECT_EQ(r.body, normal.body.substr(0, normal.body.size() / 2));
            } },
        { "http-500",
            [&](const RawReply &r) {
                EXPECT_EQ(r.status(), 500);
                EXPECT_EQ(r.body, normal.body);
            } },
        { "html",
            [](const RawReply &r) {
                EXPECT_EQ(r.status(), 200);
                EXPECT_EQ(r.header("Content-Type"), "text/html; charset=utf-8");
                EXPECT_EQ(r.body.rfind("<!DOCTYPE html>", 0), 0u);
            } },
        { "empty-body",
            [](const RawReply &r) {
                EXPECT_EQ(r.status(), 200);
                EXPECT_EQ(r.header("Content-Length"), "0");
                EXPECT_EQ(r.body, "");
            } },
        // Compared as text: the extra member comes first, the normal answer follows unchanged.
        { "huge-body",
            [&](const RawReply &r) {
                EXPECT_EQ(r.body,
                    R"({"padding":")" + std::string(Fault::kHugeBodyBytes, 'x') + "\","
                        + normal.body.substr(1));
            } },
        { "deep-nesting",
            [&](const RawReply &r) {
                const std::size_t depth = Fault::kNestingDepth;
                EXPECT_EQ(r.body,
                    R"({"nested":)" + std::string(depth, '[') + std::string(depth, ']') + ","
                        + normal.body.substr(1));
            } },
        { "invalid-utf8",
            [&](const RawReply &r) {
                EXPECT_FALSE(json::accept(r.body));
                const auto remarks = r.body.find(",\"success\"");
                ASSERT_NE(remarks, std::string::npos);
                EXPECT_EQ("{" + r.body.substr(remarks + 1), normal.body);
            } },
        { "big-numbers",
            [&](const RawReply &r) {
                const std::string big = Fault::kBigNumber;
                const json parsed = json::parse(r.body);
                EXPECT_NE(r.body.find("\"paymentStatus\":" + big + ","), std::string::npos);
                EXPECT_NE(r.body.find("\"serverTime\":" + big + ","), std::string::npos);
                EXPECT_NE(r.body.find("\"kovenaRefNumber\":" + big + ","), std::string::npos);
                EXPECT_TRUE(parsed["data"]["merchantId"].is_number_float());
                EXPECT_EQ(parsed["data"]["transactionRefNumber"], "ORD-1") << "strings stay";
            } },
        { "huge-numbers",
            [&](const RawReply &r) {
                EXPECT_NE(
                    r.body.find("\"paymentStatus\":9" + std::string(400, '0') + ","), std::string::npos);
                EXPECT_THROW(static_cast<void>(json::parse(r.body).is_object()), json::out_of_range)
                    << "beyond any double";
            } },
        { "no-such-fault", [](const RawReply &r) { EXPECT_EQ(r.body, R"({"error":"Unknown fault"})"); } },
    };
    for (const auto &[name, check] : rows) {
        SCOPED_TRACE(name);
        sandbox.clearRequests();
        check(ask("fault-" + name));
        EXPECT_EQ(sandbox.requests().size(), 1u) << "recorded like any request";
    }
    for (const std::string &name : Fault::names()) {
        const bool covered = std::any_of(
            std::begin(rows), std::end(rows), [&](const auto &row) { return row.first == name; });
        EXPECT_TRUE(covered || name == "late") << name << " has no row";
    }
}

// A client that sends a request again meets the same fault, even on an unknown endpoint (each
// request type against each fault is in the client's fault suite).
TEST_F(FaultTest, EveryAttemptMeetsTheFault)
{
    for (const char *endpoint : { kStatus, "v1/no/such/endpoint" }) {
        SCOPED_TRACE(endpoint);
        for (int attempt = 0; attempt < 2; ++attempt) {
            const RawReply reply = ask("fault-reset-before-headers", endpoint, "{}");
            EXPECT_TRUE(reply.reset);
            EXPECT_EQ(reply.head, "");
        }
        EXPECT_EQ(ask("fault-http-500", endpoint, "{}").status(), 500);
    }
    // Outside the API, on the bank's pages, a token means nothing.
    const RawReply page = ask("fault-reset-before-headers", "/bank/pay", "kovenaTransactionId=1");
    EXPECT_EQ(page.status(), 404);
    EXPECT_NE(page.header("Content-Type").find("text/html"), std::string::npos);
}

} // namespace
} // namespace kovena::sandbox::test
