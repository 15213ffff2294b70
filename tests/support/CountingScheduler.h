#pragma once

// The manual clock, counting what other threads queue on it.
#include "platform/Dispatch.h"
#include "platform/ManualScheduler.h"

#include <atomic>

namespace kovena::testing {

// Forwards to the manual clock and counts the blocks other threads queue: every backend answer
// a screen receives is at least one, so a test knows when an answer has arrived.
class CountingScheduler : public Scheduler
{
public:
    explicit CountingScheduler(ManualScheduler &clock)
        : m_clock(clock)
    { }
    void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) override
    {
        if (!dispatch::isMainThread())
            ++m_fromOtherThreads;
        m_clock.post(queue, delay, std::move(block));
    }
    int fromOtherThreads() const { return m_fromOtherThreads; }

private:
    ManualScheduler &m_clock;
    std::atomic<int> m_fromOtherThreads { 0 };
};

} // namespace kovena::testing
