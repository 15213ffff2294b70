#pragma once

#include "platform/Scheduler.h"

#include <QMutex>
#include <qnamespace.h>

#include <chrono>
#include <cstdint>
#include <vector>

namespace kovena {

// A scheduler whose clock only moves when told to. Every block, whatever its queue, runs on
// the thread that calls advance()/runDue(), in order of due time, then of posting. Blocks that
// other threads post while the clock runs wait for the next call. On the main thread it also
// stands in for the event loop's deferred deletes: objects handed to deleteLater() are deleted
// before each block runs and when the call returns, as they would be between two events.
// Install it with ScopedScheduler (or setScheduler) in tests.
class ManualScheduler : public Scheduler
{
public:
    void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) override;

    // Runs every block due at or before now + `by`, moving the clock to each due time in turn;
    // blocks the running blocks post meanwhile run too if they fall inside the window. Returns
    // how many ran.
    int advance(std::chrono::milliseconds by);
    // Runs the blocks due now (including ones they post for now). Returns how many ran.
    int runDue();

    std::chrono::milliseconds now() const;
    int pendingCount() const;
    // Delay from now to the earliest pending block, or -1 ms if none.
    std::chrono::milliseconds nextDueIn() const;
    // Queue kinds of the pending blocks, in due order (for checking where a delay was posted).
    std::vector<QueueKind> pendingQueues() const;

private:
    struct Entry
    {
        std::chrono::milliseconds due;
        std::uint64_t seq;
        QueueKind queue;
        Qt::HANDLE postedBy;
        std::function<void()> block;
    };
    bool takeNextDue(std::chrono::milliseconds limit, std::uint64_t postedBefore, Entry &out);

    mutable QMutex m_mutex;
    std::vector<Entry> m_entries;
    std::chrono::milliseconds m_now { 0 };
    std::uint64_t m_seq = 0;
};

// Installs a scheduler for the life of the object.
class ScopedScheduler
{
public:
    explicit ScopedScheduler(Scheduler &s) { setScheduler(&s); }
    ~ScopedScheduler() { setScheduler(nullptr); }
    ScopedScheduler(const ScopedScheduler &) = delete;
    ScopedScheduler &operator=(const ScopedScheduler &) = delete;
};

} // namespace kovena
