#include "platform/Dispatch.h"

#include <QCoreApplication>
#include <QThread>

namespace kovena {

DispatchWorkItem::DispatchWorkItem(std::function<void()> block)
    : m_block(std::move(block))
{ }

void DispatchWorkItem::perform()
{
    if (m_cancelled.load(std::memory_order_acquire) || !m_block)
        return;
    m_block();
}

void DispatchWorkItem::cancel()
{
    m_cancelled.store(true, std::memory_order_release);
}

bool DispatchWorkItem::isCancelled() const
{
    return m_cancelled.load(std::memory_order_acquire);
}

void DispatchQueue::async(std::function<void()> block) const
{
    scheduler().post(m_kind, std::chrono::milliseconds(0), std::move(block));
}

void DispatchQueue::asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) const
{
    scheduler().post(m_kind, delay, std::move(block));
}

void DispatchQueue::asyncAfter(std::chrono::milliseconds delay, std::shared_ptr<DispatchWorkItem> item) const
{
    if (!item)
        return;
    scheduler().post(m_kind, delay, [item = std::move(item)] { item->perform(); });
}

namespace dispatch {

DispatchQueue main()
{
    return DispatchQueue(QueueKind::Main);
}

DispatchQueue global()
{
    return DispatchQueue(QueueKind::Global);
}

bool isMainThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

} // namespace dispatch
} // namespace kovena
