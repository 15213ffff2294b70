#include "RawConnection.h"
#include "SandboxClient.h"

namespace kovena::sandbox::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

using ScriptedReplyTest = SandboxTest;

TEST_F(ScriptedReplyTest, BodyAndStatusAreSentAsScripted)
{
    const ScriptedReply rows[] = {
        { 200, R"({"responseCode":"200MERSUCC"})" },
        { 500, R"({"success":"true","responseCode":"200TRANSRESPSUCC"})" },
        { 200, "" },
        { 404, "true" },
    };
    for (const ScriptedReply &row : rows) {
        SCOPED_TRACE(row.body);
        sandbox.enqueueReply(kStatus, row);
        auto result = post(kStatus, R"({"kovenaRefNumber":"42"})");
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, row.status);
        EXPECT_EQ(result->body, row.body);
    }
}

TEST_F(ScriptedReplyTest, QueuesAreUsedUpInOrderPerEndpointBeforeAnyCheck)
{
    sandbox.enqueueReply(kStatus, { 200, "first" });
    sandbox.enqueueReply(kPay, { 200, "pay" });
    sandbox.enqueueReply(kStatus, { 200, "second" });
    const std::string body = R"({"kovenaRefNumber":"42"})";

    EXPECT_EQ(post(kStatus, body)->body, "first");
    EXPECT_NE(post(kCollect, body)->body, "pay");
    EXPECT_EQ(post(kPay, "garbage", "")->body, "pay") << "no authorization, no JSON: still scripted";
    EXPECT_EQ(post(kStatus, body)->body, "second");
    EXPECT_EQ(json::parse(post(kStatus, body)->body)["data"]["kovenaRefNumber"], 42);
    EXPECT_EQ(json::parse(post(kPay, "garbage", "")->body), json({ { "error", "Unauthorized" } }));
}

// A dropped connection sends nothing at all; a truncated reply stops after its headers. Either
// way a client sees a transport error, and the next request is answered normally.
TEST_F(ScriptedReplyTest, DroppedAndTruncatedRepliesAreTransportErrors)
{
    ScriptedReply drop { 200, "never sent" };
    drop.dropConnection = true;
    ScriptedReply cut { 200, R"({"responseCode":"200TRANSRESPSUCC"})" };
    cut.truncateAfterHeaders = true;
    const std::string request = "POST /KoVena/v1/sdk/txn/1/false/2 HTTP/1.1\r\nHost: x\r\n"
                                "Authorization: Bearer t\r\nContent-Length: 2\r\n\r\n{}";
    for (const ScriptedReply &script : { drop, cut }) {
        SCOPED_TRACE(script.dropConnection ? "drop" : "truncate");
        sandbox.enqueueReply(kStatus, script);
        EXPECT_FALSE(post(kStatus, R"({"kovenaRefNumber":"42"})"));
        sandbox.enqueueReply(kStatus, script);
        RawConnection connection(sandbox.port());
        ASSERT_TRUE(connection.send(request));
        bool closed = false;
        const std::string received = connection.readToEnd(closed);
        EXPECT_TRUE(closed);
        if (script.dropConnection) {
            EXPECT_EQ(received, "");
        } else {
            EXPECT_EQ(received.rfind("HTTP/1.1 200 OK\r\n", 0), 0u) << received;
            EXPECT_NE(received.find("Content-Length: " + std::to_string(script.body.size()) + "\r\n"),
                std::string::npos);
            EXPECT_EQ(received.substr(received.size() - 4), "\r\n\r\n");
        }
        ASSERT_TRUE(sandbox.waitForRequests(2, 5s)) << "both requests were recorded";
        sandbox.clearRequests();

        auto next = post(kStatus, R"({"kovenaRefNumber":"42"})");
        ASSERT_TRUE(next);
        EXPECT_EQ(json::parse(next->body)["responseCode"], "200TRANSRESPSUCC");
    }
}

TEST_F(ScriptedReplyTest, DelayHoldsTheReplyBack)
{
    ScriptedReply slow;
    slow.delay = 20ms;
    slow.handleNormally = true;
    sandbox.enqueueReply(kStatus, slow);
    EXPECT_EQ(status("43", "")["data"]["paymentStatus"], 2) << "answered normally after the delay";

    sandbox.enqueueReply(kStatus, { 200, "late", false, 3000ms });
    httplib::Client impatient("127.0.0.1", sandbox.port());
    impatient.set_read_timeout(0, 100000);
    auto result = impatient.Post("/KoVena/v1/sdk/txn/1/false/2", "{}", "application/json");
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), httplib::Error::Read);
    // Stopping does not wait for the delay to run out.
    sandbox.stop();
}

} // namespace
} // namespace kovena::sandbox::test
