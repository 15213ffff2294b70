#pragma once

#include <chrono>
#include <functional>

namespace kovena {

// Where a scheduled block runs: the GUI thread's event loop, or the background pool.
enum class QueueKind { Main, Global };

// The one scheduler behind every delay the flow waits on and every block queued on a queue.
// Production runs on Qt timers; tests install a ManualScheduler and move its clock by hand.
class Scheduler
{
public:
    virtual ~Scheduler() = default;
    // Runs `block` on `queue` once `delay` has passed. Blocks due at the same moment run in
    // the order they were posted. Safe to call from any thread.
    virtual void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) = 0;
};

// The installed scheduler (the Qt-timer one unless a test installed another).
Scheduler &scheduler();
// Installs `s` for the whole process; nullptr restores the Qt-timer scheduler.
// The caller keeps ownership and must uninstall it before destroying it.
void setScheduler(Scheduler *s);

} // namespace kovena
