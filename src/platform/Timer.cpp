#include "platform/Timer.h"

#include "platform/Dispatch.h"

namespace kovena {

std::shared_ptr<Timer> Timer::scheduledTimer(std::chrono::milliseconds interval, Action action, bool repeats)
{
    std::shared_ptr<Timer> timer(new Timer(interval, std::move(action), repeats));
    timer->schedule();
    return timer;
}

Timer::Timer(std::chrono::milliseconds interval, Action action, bool repeats)
    : m_interval(interval)
    , m_action(std::move(action))
    , m_repeats(repeats)
{ }

void Timer::schedule()
{
    // Like a run loop, the pending tick keeps the timer alive until it is due.
    dispatch::main().asyncAfter(m_interval, [timer = shared_from_this(), round = m_round] {
        if (timer->m_valid && timer->m_round == round)
            timer->fire();
    });
}

void Timer::fire()
{
    if (!m_valid)
        return;
    ++m_round;
    const std::shared_ptr<Timer> keepAlive = shared_from_this();
    if (!m_repeats)
        m_valid = false;
    m_action(*this);
    if (m_repeats && m_valid)
        schedule();
}

void Timer::invalidate()
{
    m_valid = false;
}

} // namespace kovena
