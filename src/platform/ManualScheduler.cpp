#include "platform/ManualScheduler.h"

#include "platform/Dispatch.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>

namespace kovena {
namespace {
bool runsBefore(
    std::chrono::milliseconds dueA, std::uint64_t seqA, std::chrono::milliseconds dueB, std::uint64_t seqB)
{
    return dueA < dueB || (dueA == dueB && seqA < seqB);
}

// The event loop deletes what deleteLater() handed it before it delivers the next event; the
// manual clock stands in for that loop, so it does the same before each block and when it stops.
void deleteWhatWasDeletedLater()
{
    if (dispatch::isMainThread())
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
} // namespace

void ManualScheduler::post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block)
{
    if (!block)
        return;
    QMutexLocker lock(&m_mutex);
    const auto due = m_now + std::max(delay, std::chrono::milliseconds(0));
    m_entries.push_back(Entry { due, m_seq++, queue, QThread::currentThreadId(), std::move(block) });
}

bool ManualScheduler::takeNextDue(std::chrono::milliseconds limit, std::uint64_t postedBefore, Entry &out)
{
    QMutexLocker lock(&m_mutex);
    const Qt::HANDLE runner = QThread::currentThreadId();
    auto best = m_entries.end();
    for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
        if (it->due > limit)
            continue;
        // What another thread posts while the clock runs waits for the next call, so a test
        // never depends on how quickly that thread was.
        if (it->seq >= postedBefore && it->postedBy != runner)
            continue;
        if (best == m_entries.end() || runsBefore(it->due, it->seq, best->due, best->seq))
            best = it;
    }
    if (best == m_entries.end())
        return false;
    out = std::move(*best);
    m_entries.erase(best);
    m_now = std::max(m_now, out.due);
    return true;
}

int ManualScheduler::advance(std::chrono::milliseconds by)
{
    std::chrono::milliseconds limit;
    std::uint64_t postedBefore = 0;
    {
        QMutexLocker lock(&m_mutex);
        limit = m_now + std::max(by, std::chrono::milliseconds(0));
        postedBefore = m_seq;
    }
    int ran = 0;
    Entry entry;
    deleteWhatWasDeletedLater();
    while (takeNextDue(limit, postedBefore, entry)) {
        // Run outside the lock: the block may post more work or read the clock.
        auto block = std::move(entry.block);
        block();
        block = nullptr; // what the block held goes now, as a finished event's would
        ++ran;
        deleteWhatWasDeletedLater();
    }
    QMutexLocker lock(&m_mutex);
    m_now = std::max(m_now, limit);
    return ran;
}

int ManualScheduler::runDue()
{
    return advance(std::chrono::milliseconds(0));
}

std::chrono::milliseconds ManualScheduler::now() const
{
    QMutexLocker lock(&m_mutex);
    return m_now;
}

int ManualScheduler::pendingCount() const
{
    QMutexLocker lock(&m_mutex);
    return static_cast<int>(m_entries.size());
}

std::chrono::milliseconds ManualScheduler::nextDueIn() const
{
    QMutexLocker lock(&m_mutex);
    if (m_entries.empty())
        return std::chrono::milliseconds(-1);
    auto earliest = m_entries.front().due;
    for (const auto &e : m_entries)
        earliest = std::min(earliest, e.due);
    return earliest - m_now;
}

std::vector<QueueKind> ManualScheduler::pendingQueues() const
{
    QMutexLocker lock(&m_mutex);
    std::vector<const Entry *> order;
    order.reserve(m_entries.size());
    for (const auto &e : m_entries)
        order.push_back(&e);
    std::sort(order.begin(), order.end(),
        [](const Entry *a, const Entry *b) { return runsBefore(a->due, a->seq, b->due, b->seq); });
    std::vector<QueueKind> out;
    out.reserve(order.size());
    for (const Entry *e : order)
        out.push_back(e->queue);
    return out;
}

} // namespace kovena
