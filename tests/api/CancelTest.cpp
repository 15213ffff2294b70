// Cancelling a task and shutting the session down: the callback still comes, once.
#include "ApiTestSupport.h"

#include "api/SessionDataTask.h"
#include "api/UrlSession.h"

#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace kovena;
using namespace kovena::test;
using namespace std::chrono_literals;

namespace {

const char *kSuccess = R"({"responseCode":"200TRANSRESPSUCC"})";

enum class When { BeforeTheServerSeesIt, WhileTheServerAnswers, FromAnotherThread, AtShutdown };

class CancelTest : public ::testing::TestWithParam<When>
{
};

TEST_P(CancelTest, GivesTheFailureValueOnce)
{
    resetBackendAndDefaults();
    auto recorder = std::make_shared<Recorder>();
    backend().enqueueReply(statusRequest.path, { 200, kSuccess, false, 5000ms }); // would succeed, late
    DataTaskPtr task = statusRequest.send(recorder);
    if (GetParam() != When::BeforeTheServerSeesIt) {
        ASSERT_TRUE(backend().waitForRequests(1, 10s));
    }
    switch (GetParam()) {
    case When::BeforeTheServerSeesIt:
    case When::WhileTheServerAnswers:
        task->cancel();
        break;
    case When::FromAnotherThread:
        std::thread([task] { task->cancel(); }).join();
        break;
    case When::AtShutdown:
        UrlSession::shutdownShared(); // the next request starts a new session
        break;
    }
    ASSERT_TRUE(recorder->waitForCallback());
    task->cancel(); // a cancel after the end changes nothing
    flushSessionThread();

    const auto calls = recorder->calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].kind, "status");
    EXPECT_FALSE(calls[0].status);
    EXPECT_TRUE(calls[0].onSessionThread);
    EXPECT_TRUE(task->isFinished());

    if (GetParam() == When::AtShutdown) {
        backend().clearScriptedReplies();
        const auto next = exchange(statusRequest, { 200, kSuccess });
        EXPECT_TRUE(next.status) << "a new session took over";
    }
}

INSTANTIATE_TEST_SUITE_P(AllMoments, CancelTest,
    ::testing::Values(
        When::BeforeTheServerSeesIt, When::WhileTheServerAnswers, When::FromAnotherThread, When::AtShutdown));

TEST(SessionTask, CancelledBeforeResumeNeverReachesTheServer)
{
    resetBackendAndDefaults();
    std::atomic<int> completions { 0 };
    std::optional<QString> error;
    const QUrl url(QString::fromStdString(backend().baseUrl() + statusRequest.path));
    auto task = UrlSession::shared()->dataTask(
        UrlSession::makeRequest(url), QByteArray("{}"), [&](DataTaskResult result) {
            error = result.error;
            ++completions;
        });
    task->cancel();
    task->resume();
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions.load() > 0; }, kWaitMs));
    exchange(statusRequest, { 200, kSuccess });
    EXPECT_EQ(completions.load(), 1);
    EXPECT_EQ(error, SessionDataTask::cancelledError());
    EXPECT_EQ(backend().requests().size(), 1u) << "only the later request went out";
}

TEST(SessionTask, RequestsMadeFromCompletionsGoOutOnceEachInOrder)
{
    resetBackendAndDefaults();
    const QUrl url(QString::fromStdString(backend().baseUrl() + statusRequest.path));
    constexpr int kChain = 3;
    std::vector<DataTaskPtr> tasks;
    std::atomic<int> completions { 0 };
    std::atomic<bool> allOnSessionThread { true };
    std::function<void()> next = [&] {
        const int index = int(tasks.size());
        auto task = UrlSession::shared()->dataTask(UrlSession::makeRequest(url),
            QByteArray("{\"n\":") + QByteArray::number(index) + '}', [&](DataTaskResult result) {
                allOnSessionThread = allOnSessionThread && UrlSession::isSessionThread() && result.body;
                if (++completions < kChain)
                    next(); // from inside the completion, on the session thread
            });
        tasks.push_back(task);
        task->resume();
    };
    next();
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions.load() == kChain; }, kWaitMs));
    flushSessionThread();
    EXPECT_EQ(completions.load(), kChain);
    EXPECT_TRUE(allOnSessionThread);
    const auto requests = backend().requests();
    ASSERT_EQ(requests.size(), std::size_t(kChain));
    for (int i = 0; i < kChain; ++i)
        EXPECT_EQ(requests[std::size_t(i)].body, "{\"n\":" + std::to_string(i) + "}");
}

} // namespace
