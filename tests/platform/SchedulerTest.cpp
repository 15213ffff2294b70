#include "platform/Dispatch.h"
#include "platform/ManualScheduler.h"
#include "platform/QtScheduler.h"

#include <QCoreApplication>
#include <QMutex>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using kovena::DispatchWorkItem;
using kovena::ManualScheduler;
using kovena::QueueKind;
using kovena::ScopedScheduler;

namespace {

TEST(ManualScheduler, RunsDueBlocksInDueThenPostingOrder)
{
    struct Case
    {
        const char *label;
        std::vector<std::pair<char, int>> posts; // name, delay in ms
        int advanceMs;
        std::string expectedRun;
        int expectedPending;
    };
    const Case cases[] = {
        { "same due: FIFO", { { 'a', 5 }, { 'b', 5 }, { 'c', 5 } }, 5, "abc", 0 },
        { "due order beats posting order", { { 'a', 30 }, { 'b', 10 }, { 'c', 20 } }, 30, "bca", 0 },
        { "boundary is inclusive", { { 'a', 100 }, { 'b', 101 } }, 100, "a", 1 },
        { "nothing due yet", { { 'a', 1 } }, 0, "", 1 },
        { "negative delay is now", { { 'a', 0 }, { 'b', -50 } }, 0, "ab", 0 },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.label);
        ManualScheduler s;
        std::string ran;
        for (const auto &[name, delay] : c.posts)
            s.post(QueueKind::Main, std::chrono::milliseconds(delay), [&ran, name] { ran += name; });
        EXPECT_EQ(s.advance(std::chrono::milliseconds(c.advanceMs)), static_cast<int>(c.expectedRun.size()));
        EXPECT_EQ(ran, c.expectedRun);
        EXPECT_EQ(s.pendingCount(), c.expectedPending);
        EXPECT_EQ(s.now(), std::chrono::milliseconds(c.advanceMs));
    }
}

TEST(ManualScheduler, BlocksPostedDuringAdvanceRunWhenInsideTheWindow)
{
    ManualScheduler s;
    using Log = std::vector<std::pair<std::string, std::chrono::milliseconds>>;
    Log log;
    s.post(QueueKind::Global, 1s, [&] {
        log.emplace_back("first", s.now());
        s.post(QueueKind::Main, 10s, [&] {
            log.emplace_back("second", s.now());
            s.post(QueueKind::Main, 1s, [&] { log.emplace_back("third", s.now()); });
        });
        s.post(QueueKind::Main, 0ms, [&] { log.emplace_back("immediate", s.now()); });
    });

    EXPECT_EQ(s.advance(11s), 3);
    EXPECT_EQ(log, (Log { { "first", 1s }, { "immediate", 1s }, { "second", 11s } }));
    EXPECT_EQ(s.nextDueIn(), 1s);
    EXPECT_EQ(s.advance(999ms), 0);
    EXPECT_EQ(s.runDue(), 0);
    EXPECT_EQ(s.now(), 11999ms) << "running what is due does not move the clock";
    EXPECT_EQ(s.advance(1ms), 1);
    EXPECT_EQ(s.nextDueIn(), -1ms);
}

TEST(ManualScheduler, AcceptsPostsFromOtherThreads)
{
    ManualScheduler s;
    std::atomic<int> ran { 0 };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 250; ++i)
                s.post(QueueKind::Main, std::chrono::milliseconds(i % 7), [&] { ++ran; });
        });
    for (auto &t : threads)
        t.join();
    EXPECT_EQ(s.advance(10ms), 1000);
    EXPECT_EQ(ran.load(), 1000);
}

// A reply that another thread queues while the clock runs must not be handled before the test
// gets control back, however quickly it arrived.
TEST(ManualScheduler, WhatAnotherThreadPostsWhileTheClockRunsWaitsForTheNextCall)
{
    ManualScheduler s;
    std::vector<std::string> order;
    s.post(QueueKind::Main, 0ms, [&] {
        order.push_back("first");
        std::thread([&] { s.post(QueueKind::Main, 0ms, [&] { order.push_back("from thread"); }); }).join();
        s.post(QueueKind::Main, 0ms, [&] { order.push_back("from block"); });
    });
    EXPECT_EQ(s.runDue(), 2);
    EXPECT_EQ(order, (std::vector<std::string> { "first", "from block" }));
    EXPECT_EQ(s.runDue(), 1);
    EXPECT_EQ(order.back(), "from thread");
}

// Work items go to the queue they were posted to, on the manual clock while it is installed.
TEST(Dispatch, WorkItemCancelledBeforeItsTimeDoesNotRun)
{
    ManualScheduler s;
    std::optional<ScopedScheduler> installed(std::in_place, s);
    int ran = 0;
    auto kept = std::make_shared<DispatchWorkItem>([&] { ++ran; });
    auto cancelled = std::make_shared<DispatchWorkItem>([&] { ++ran; });
    kovena::dispatch::main().asyncAfter(2s, kept);
    kovena::dispatch::global().asyncAfter(1s, cancelled);
    std::weak_ptr<DispatchWorkItem> watch = cancelled;
    EXPECT_EQ(s.pendingQueues(), (std::vector<QueueKind> { QueueKind::Global, QueueKind::Main }));
    cancelled->cancel();
    cancelled.reset();
    EXPECT_FALSE(watch.expired()) << "the queue keeps the item alive until its time";
    EXPECT_EQ(s.advance(2s), 2);
    EXPECT_EQ(ran, 1);
    EXPECT_TRUE(watch.expired());
    installed.reset();
    EXPECT_EQ(&kovena::scheduler(), &kovena::QtScheduler::instance());
}

TEST(QtScheduler, MainBlocksFromAnotherThreadRunOnTheGuiThreadInOrder)
{
    QMutex mutex;
    std::vector<int> order;
    std::vector<bool> onMain;
    std::thread poster([&] {
        EXPECT_FALSE(kovena::dispatch::isMainThread());
        for (int i = 0; i < 5; ++i)
            kovena::dispatch::main().async([&, i] {
                QMutexLocker lock(&mutex);
                order.push_back(i);
                onMain.push_back(kovena::dispatch::isMainThread());
            });
        kovena::dispatch::main().asyncAfter(30ms, [&] {
            QMutexLocker lock(&mutex);
            order.push_back(99);
            onMain.push_back(QThread::currentThread() == qApp->thread());
        });
    });
    poster.join();
    ASSERT_TRUE(QTest::qWaitFor([&] {
        QMutexLocker lock(&mutex);
        return order.size() == 6;
    }));
    EXPECT_EQ(order, (std::vector<int> { 0, 1, 2, 3, 4, 99 }));
    EXPECT_EQ(onMain, std::vector<bool>(6, true));
}

TEST(QtScheduler, GlobalBlocksRunOffTheGuiThread)
{
    std::atomic<int> done { 0 };
    std::atomic<QThread *> immediateThread { nullptr };
    std::atomic<QThread *> delayedThread { nullptr };
    kovena::dispatch::global().async([&] {
        immediateThread = QThread::currentThread();
        ++done;
    });
    auto item = std::make_shared<DispatchWorkItem>([&] {
        delayedThread = QThread::currentThread();
        ++done;
    });
    kovena::dispatch::global().asyncAfter(20ms, item);
    ASSERT_TRUE(QTest::qWaitFor([&] { return done.load() == 2; }));
    EXPECT_NE(immediateThread.load(), qApp->thread());
    EXPECT_EQ(immediateThread.load(), delayedThread.load());
}

} // namespace
