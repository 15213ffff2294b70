#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace kovena {

// A timer on the main queue, driven by the installed scheduler (so tests move it with the
// manual clock). fire() runs the action at once; a one-shot timer that has fired, or any timer
// that was invalidated, never runs again. Main thread only.
class Timer : public std::enable_shared_from_this<Timer>
{
public:
    using Action = std::function<void(Timer &)>;

    // Schedules `action` every `interval` (or once, when `repeats` is false).
    static std::shared_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Action action, bool repeats);

    void fire();
    void invalidate();
    bool isValid() const { return m_valid; }
    std::chrono::milliseconds timeInterval() const { return m_interval; }

private:
    Timer(std::chrono::milliseconds interval, Action action, bool repeats);
    void schedule();

    std::chrono::milliseconds m_interval;
    Action m_action;
    bool m_repeats;
    bool m_valid = true;
    // Bumped by every fire(): a scheduled tick of an earlier round is stale.
    unsigned m_round = 0;
};

} // namespace kovena
