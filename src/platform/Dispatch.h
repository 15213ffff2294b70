#pragma once

#include "platform/Scheduler.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace kovena {

// A block that can be cancelled before it runs. Cancelling never interrupts a block that
// already started; a cancelled item that is performed later does nothing.
class DispatchWorkItem
{
public:
    explicit DispatchWorkItem(std::function<void()> block);
    void perform();
    void cancel();
    bool isCancelled() const;

private:
    std::function<void()> m_block;
    std::atomic<bool> m_cancelled { false };
};

// A dispatch queue: a thin handle over the scheduler for one queue kind.
class DispatchQueue
{
public:
    explicit DispatchQueue(QueueKind kind)
        : m_kind(kind)
    { }
    QueueKind kind() const { return m_kind; }

    void async(std::function<void()> block) const;
    void asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) const;
    // Holds the item, not the screen that made it: a cancelled item is simply skipped.
    void asyncAfter(std::chrono::milliseconds delay, std::shared_ptr<DispatchWorkItem> item) const;

private:
    QueueKind m_kind;
};

namespace dispatch {
DispatchQueue main(); // the GUI thread
DispatchQueue global(); // the background pool
bool isMainThread();
} // namespace dispatch

} // namespace kovena
