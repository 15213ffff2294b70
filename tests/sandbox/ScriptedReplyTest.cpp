#include "RawConnection.h"
#include "SandboxClient.h"

namespace kovena::sandbox::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

class ScriptedReplyTest : public SandboxTest
{
};

TEST_F(ScriptedReplyTest, BodyAndStatusAreSentAsScripted)
{
    const ScriptedReply rows[] = {
        { 200, R"({"responseCode":"200MERSUCC"})", false, 0ms },
        { 500, R"({"success":"true","responseCode":"200TRANSRESPSUCC"})", false, 0ms },
        { 200, "", false, 0ms },
        { 200, "this is not json", false, 0ms },
        { 404, "true", false, 0ms },
        { 200, R"({"data":{"kovenaRefNumber":)", false, 0ms },
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

TEST_F(ScriptedReplyTest, ScriptedReplyComesBeforeAuthorizationAndBodyChecks)
{
    sandbox.enqueueReply(kPay, { 200, R"({"scripted":true})", false, 0ms });
    auto result = post(kPay, "garbage", "");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->body, R"({"scripted":true})");
    EXPECT_EQ(json::parse(post(kPay, "garbage", "")->body), json({ { "error", "Unauthorized" } }));
}

TEST_F(ScriptedReplyTest, QueuesAreUsedUpInOrderPerEndpoint)
{
    sandbox.enqueueReply(kStatus, { 200, "first", false, 0ms });
    sandbox.enqueueReply(kPay, { 200, "pay", false, 0ms });
    sandbox.enqueueReply(kStatus, { 200, "second", false, 0ms });
    const std::string body = R"({"kovenaRefNumber":"42"})";

    EXPECT_EQ(post(kStatus, body)->body, "first");
    EXPECT_NE(post(kCollect, body)->body, "pay");
    EXPECT_EQ(post(kPay, body)->body, "pay");
    EXPECT_EQ(post(kStatus, body)->body, "second");
    EXPECT_EQ(json::parse(post(kStatus, body)->body)["data"]["kovenaRefNumber"], 42);
    EXPECT_NE(post(kPay, body)->body, "pay");
}

TEST_F(ScriptedReplyTest, DroppedConnectionIsATransportErrorForTheClient)
{
    sandbox.enqueueReply(kStatus, { 200, "never sent", true, 0ms });
    auto result = post(kStatus, R"({"kovenaRefNumber":"42"})");
    EXPECT_FALSE(result);
    ASSERT_TRUE(sandbox.waitForRequests(1, 5s));
    EXPECT_EQ(sandbox.requests().front().path, "/KoVena/v1/sdk/txn/1/false/2");

    // The next request is answered normally.
    auto next = post(kStatus, R"({"kovenaRefNumber":"42"})");
    ASSERT_TRUE(next);
    EXPECT_EQ(json::parse(next->body)["responseCode"], "200TRANSRESPSUCC");
}

TEST_F(ScriptedReplyTest, DroppedConnectionSendsNoByteAtAll)
{
    sandbox.enqueueReply(kCollect, { 200, "never sent", true, 0ms });
    RawConnection connection(sandbox.port());
    ASSERT_TRUE(connection.connected());
    const std::string body = "{}";
    ASSERT_TRUE(connection.send("POST /KoVena/v1/sdk/sendCollectOrSMS HTTP/1.1\r\nHost: x\r\n"
                                "Authorization: Bearer t\r\nContent-Length: 2\r\n\r\n"
        + body));
    bool closed = false;
    EXPECT_EQ(connection.readToEnd(closed), "");
    EXPECT_TRUE(closed);
}

TEST_F(ScriptedReplyTest, TruncatedReplyStopsAfterItsHeaders)
{
    ScriptedReply cut;
    cut.truncateAfterHeaders = true;
    cut.body = R"({"responseCode":"200MERSUCC"})";
    sandbox.enqueueReply(kPay, cut);
    EXPECT_FALSE(post(kPay, "{}"));

    sandbox.enqueueReply(kPay, cut);
    RawConnection connection(sandbox.port());
    ASSERT_TRUE(connection.send("POST /KoVena/v1/sdk/payForService HTTP/1.1\r\nHost: x\r\n"
                                "Content-Length: 2\r\n\r\n{}"));
    bool closed = false;
    std::string received = connection.readToEnd(closed);
    EXPECT_TRUE(closed);
    EXPECT_EQ(received.rfind("HTTP/1.1 200 OK\r\n", 0), 0u) << received;
    EXPECT_NE(
        received.find("Content-Length: " + std::to_string(cut.body.size()) + "\r\n"), std::string::npos);
    EXPECT_EQ(received.substr(received.size() - 4), "\r\n\r\n");
}

TEST_F(ScriptedReplyTest, DelayHoldsTheReplyBack)
{
    sandbox.enqueueReply(kStatus, { 200, "late", false, 3000ms });
    httplib::Client impatient("127.0.0.1", sandbox.port());
    impatient.set_read_timeout(0, 100000);
    auto result = impatient.Post("/KoVena/v1/sdk/txn/1/false/2", "{}", "application/json");
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), httplib::Error::Read);
    // Stopping does not wait for the delay to run out.
    sandbox.stop();
}

TEST_F(ScriptedReplyTest, DelayThenNormalHandling)
{
    ScriptedReply slow;
    slow.delay = 20ms;
    slow.handleNormally = true;
    sandbox.enqueueReply(kStatus, slow);
    json reply = status("43", "");
    EXPECT_EQ(reply["data"]["paymentStatus"], 2);
}

} // namespace
} // namespace kovena::sandbox::test
