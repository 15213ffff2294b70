#include "platform/Scheduler.h"

#include "platform/QtScheduler.h"

#include <atomic>

namespace kovena {
namespace {
std::atomic<Scheduler *> g_installed { nullptr };
}

Scheduler &scheduler()
{
    Scheduler *s = g_installed.load(std::memory_order_acquire);
    return s ? *s : QtScheduler::instance();
}

void setScheduler(Scheduler *s)
{
    g_installed.store(s, std::memory_order_release);
}

} // namespace kovena
