// The reply path all requests share, run against each of them: which replies give the failure
// value and which reach the operation, on which thread, how often, how often sent, and what is logged.
#include "RequestTypes.h"

#include "platform/UserDefaults.h"

#include <QLoggingCategory>
#include <QScopeGuard>

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::test;

namespace {

// What makes each request type succeed, in the order of kRequestTypes; no braces.
const std::array<std::string, kTypeCount> kSuccessMembers {
    R"("responseCode":"200TRANSRESPSUCC","data":{"paymentStatus":1})",
    R"("responseCode":"200MERSUCC","data":{"kovenaTransactionId":77,"getRequestRefNumResponse":{"merchantTransactionRef":"M"}})",
    R"("responseCode":"200MERSUCC")",
    R"("responseCode":"200MERSUCC","data":{"kovenaTransactionId":77,"paymentData":{"url":"https://b.in/p","data":"a=1"}})",
    R"("responseCode":"200MERSUCC","data":{"kovenaTransactionId":77,"paymentData":{"url":"https://b.in/p","data":"a=1"}})",
    R"("data":[{"netBankingId":1}])",
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

// An empty body and a 500 with a success body are among the sandbox's faults (FaultTest.cpp).
const ReplyCase kReplies[] = {
    { "droppedConnection", 200, "", true, false, false },
    { "invalidJson", 200, R"({"responseCode": )", false, false, true },
    { "errorString", 200, R"({"error":"denied",%})", false, false, false },
    { "emptyErrorString", 200, R"({"error":"",%})", false, false, false },
    { "numericErrorGoesOn", 200, R"({"error":5,%})", false, true, false },
    { "nullErrorGoesOn", 200, R"({"error":null,%})", false, true, false },
    { "http401WithSuccessBody", 401, "{%}", false, true, false },
    { "http407WithSuccessBody", 407, "{%}", false, true, false },
    { "http200Success", 200, "{%}", false, true, false },
};

std::string bodyFor(const ReplyCase &reply, std::size_t type)
{
    std::string body = reply.body;
    if (const auto at = body.find('%'); at != std::string::npos)
        body.replace(at, 1, kSuccessMembers[type]);
    return body;
}

TEST(ReplyPath, AnswersExactlyOnceOnTheSessionThread)
{
    // The request line is logged as well; no line may show the token, the customer's contact
    // details, the VPA, the card or the reply's text.
    QLoggingCategory::setFilterRules("kovena.api.debug=true");
    const auto restoreRules = qScopeGuard([] { QLoggingCategory::setFilterRules(QString()); });
    const char *neverLogged[] = { "tok-SECRET-1", "9812345678", "someone@mail.in", "success@kovena",
        "responseCode", kCardNumber, kCardName, kCvv, "paymentData" };
    for (std::size_t i = 0; i < kTypeCount; ++i) {
        const RequestType &type = kRequestTypes[i];
        for (const ReplyCase &reply : kReplies) {
            SCOPED_TRACE(std::string(type.name) + " " + reply.name);
            resetBackendAndDefaults();
            UserDefaults &defaults = UserDefaults::standard();
            defaults.setString("accessToken", neverLogged[0]);
            defaults.setString("customerMobNum", neverLogged[1]);
            defaults.setString("customerEmail", neverLogged[2]);
            backend().enqueueReply(type.path, { reply.status, bodyFor(reply, i), reply.drop });

            auto recorder = std::make_shared<Recorder>();
            LogCapture capture(recorder);
            type.send(recorder, QStringLiteral("42"));
            ASSERT_TRUE(recorder->waitForCallback());

            const auto calls = recorder->calls();
            ASSERT_EQ(calls.size(), 1u);
            EXPECT_TRUE(calls[0].onSessionThread);
            EXPECT_FALSE(calls[0].onMainThread);
            EXPECT_EQ(type.describe(calls[0]) == "failure", !reply.reachesOperation)
                << type.describe(calls[0]);
            // Qt would re-send a request whose connection closed unanswered; a payment must go out once.
            EXPECT_EQ(backend().requests().size(), 1u);

            std::string order;
            for (const auto &entry : recorder->sequence()) {
                order += entry.isCallback() ? "callback;" : entry.kind + ";";
                for (const char *secret : neverLogged)
                    EXPECT_FALSE(entry.first.contains(QLatin1String(secret))) << qPrintable(entry.first);
            }
            EXPECT_EQ(order, reply.logsAfterCallback ? "debug;callback;log;" : "debug;callback;");
        }
    }
}

} // namespace
