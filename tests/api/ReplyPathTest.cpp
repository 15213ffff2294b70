// The reply path all requests share, run against each of them: which replies give the failure
// value and which reach the operation, on which thread, how often, and how often sent.
#include "ApiTestSupport.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;
using kovena::sandbox::ScriptedReply;

namespace {

struct Operation
{
    const char *name;
    const char *endpoint;
    std::string successMembers; // make this operation succeed; no braces
    std::function<void(std::shared_ptr<Recorder>)> send;
    std::function<bool(const Recorder::Call &)> isFailureValue;
};

const Operation kOperations[] = {
    { "status", "v1/sdk/txn/1/false/2", R"("responseCode":"200TRANSRESPSUCC","data":{"paymentStatus":1})",
        [](auto cb) { ApiManager::getTransactionStatus(cb, "1", "ORD-1"); },
        [](const Recorder::Call &call) { return call.kind == "status" && !call.status; } },
    { "upiCollect", "v1/sdk/payForService",
        R"("responseCode":"200MERSUCC","data":{"kovenaTransactionId":77,"getRequestRefNumResponse":{"merchantTransactionRef":"M"}})",
        [](auto cb) { ApiManager::payUPICollect(cb, QStringLiteral("M"), "1.00", QStringLiteral("1001")); },
        [](const Recorder::Call &call) {
            return call.kind == "upi1" && call.first == "" && call.second == "";
        } },
    { "collectByVpa", "v1/sdk/sendCollectOrSMS", R"("responseCode":"200MERSUCC")",
        [](auto cb) {
            ApiManager::payUPICollectByVPA(cb, QStringLiteral("77"), std::nullopt, QStringLiteral("1.00"),
                QStringLiteral("a@upi"), "1001");
        },
        [](const Recorder::Call &call) { return call.kind == "upi2" && !call.upi; } },
};

struct ReplyCase
{
    const char *name;
    int status;
    std::string body; // "%" stands for the operation's success members
    bool drop;
    bool reachesOperation;
    bool logsAfterCallback;
};

const ReplyCase kReplies[] = {
    { "droppedConnection", 200, "", true, false, false },
    { "emptyBody", 200, "", false, false, false },
    { "invalidJson", 200, R"({"responseCode": )", false, false, true },
    { "errorString", 200, R"({"error":"denied",%})", false, false, false },
    { "emptyErrorString", 200, R"({"error":"",%})", false, false, false },
    { "numericErrorGoesOn", 200, R"({"error":5,%})", false, true, false },
    { "nullErrorGoesOn", 200, R"({"error":null,%})", false, true, false },
    { "http500WithSuccessBody", 500, "{%}", false, true, false },
    { "http401WithSuccessBody", 401, "{%}", false, true, false },
    { "http200Success", 200, "{%}", false, true, false },
};

std::string bodyFor(const ReplyCase &reply, const Operation &op)
{
    std::string body = reply.body;
    if (const auto at = body.find('%'); at != std::string::npos)
        body.replace(at, 1, op.successMembers);
    return body;
}

class ReplyPathTest : public ::testing::TestWithParam<std::tuple<int, int>>
{
};

TEST_P(ReplyPathTest, AnswersExactlyOnceOnTheSessionThread)
{
    const Operation &op = kOperations[std::get<0>(GetParam())];
    const ReplyCase &reply = kReplies[std::get<1>(GetParam())];
    resetBackendAndDefaults();
    backend().enqueueReply(op.endpoint, { reply.status, bodyFor(reply, op), reply.drop });

    auto recorder = std::make_shared<Recorder>();
    LogCapture capture(recorder);
    op.send(recorder);
    ASSERT_TRUE(recorder->waitForCallback());

    const auto calls = recorder->calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_TRUE(calls[0].onSessionThread);
    EXPECT_FALSE(calls[0].onMainThread);
    EXPECT_EQ(op.isFailureValue(calls[0]), !reply.reachesOperation);
    // Qt would re-send a request whose connection closed unanswered; a payment must go out once.
    EXPECT_EQ(backend().requests().size(), 1u);

    std::vector<std::string> order;
    for (const auto &entry : recorder->sequence()) {
        if (entry.kind != "debug")
            order.push_back(entry.isCallback() ? "callback" : "log");
    }
    const std::vector<std::string> expected = reply.logsAfterCallback
        ? std::vector<std::string> { "callback", "log" }
        : std::vector<std::string> { "callback" };
    EXPECT_EQ(order, expected);
}

INSTANTIATE_TEST_SUITE_P(AllOperations, ReplyPathTest,
    ::testing::Combine(
        ::testing::Range(0, int(std::size(kOperations))), ::testing::Range(0, int(std::size(kReplies)))),
    [](const auto &info) {
        return std::string(kOperations[std::get<0>(info.param)].name) + "_"
            + kReplies[std::get<1>(info.param)].name;
    });

class ReplyPathDeathTest : public ::testing::TestWithParam<std::tuple<int, const char *>>
{
};

TEST_P(ReplyPathDeathTest, NonObjectReplyIsFatal)
{
    const Operation &op = kOperations[std::get<0>(GetParam())];
    EXPECT_DEATH(
        {
            resetBackendAndDefaults();
            exchange(op.endpoint, { 200, std::get<1>(GetParam()) }, op.send);
        },
        "not a JSON object");
}

INSTANTIATE_TEST_SUITE_P(Fragments, ReplyPathDeathTest,
    ::testing::Combine(::testing::Range(0, int(std::size(kOperations))),
        ::testing::Values("true", "[]", "\"text\"", "null")));

} // namespace
