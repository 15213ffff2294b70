#pragma once

#include "platform/Scheduler.h"

namespace kovena {

// The production scheduler: main-queue blocks run on the GUI thread's event loop, global-queue
// blocks on one background thread with its own event loop; delays are Qt timers on the thread
// that runs the block.
class QtScheduler : public Scheduler
{
public:
    static QtScheduler &instance();

    void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) override;
};

} // namespace kovena
