#include "platform/QtScheduler.h"

#include "platform/Logging.h"

#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QObject>
#include <QPointer>
#include <QThread>
#include <QTimer>

namespace kovena {
namespace {

// The background thread of the global queue. Started on first use, stopped when the
// application object is destroyed so no block outlives the event loops.
class GlobalThread
{
public:
    static QObject *context()
    {
        QMutexLocker lock(&s_mutex);
        if (!QCoreApplication::instance())
            return nullptr;
        if (!s_thread) {
            s_thread = new QThread;
            s_thread->setObjectName(QStringLiteral("kovena-global"));
            s_worker = new QObject;
            s_worker->moveToThread(s_thread);
            QObject::connect(s_thread, &QThread::finished, s_worker, &QObject::deleteLater);
            s_thread->start();
            qAddPostRoutine(&GlobalThread::stop);
        }
        return s_worker;
    }

private:
    static void stop()
    {
        QThread *thread = nullptr;
        {
            QMutexLocker lock(&s_mutex);
            thread = s_thread;
            s_thread = nullptr;
            s_worker = nullptr;
        }
        if (!thread)
            return;
        thread->quit();
        thread->wait();
        delete thread;
    }

    static inline QMutex s_mutex;
    static inline QThread *s_thread = nullptr;
    static inline QObject *s_worker = nullptr;
};

void postOn(QObject *context, std::chrono::milliseconds delay, std::function<void()> block)
{
    if (delay.count() <= 0) {
        QMetaObject::invokeMethod(context, std::move(block), Qt::QueuedConnection);
        return;
    }
    // The timer must belong to the thread that runs the block, so start it from there.
    if (QThread::currentThread() == context->thread()) {
        QTimer::singleShot(delay, Qt::PreciseTimer, context, std::move(block));
        return;
    }
    QPointer<QObject> guard(context);
    QMetaObject::invokeMethod(
        context,
        [guard, delay, block = std::move(block)]() mutable {
            if (guard)
                QTimer::singleShot(delay, Qt::PreciseTimer, guard.data(), std::move(block));
        },
        Qt::QueuedConnection);
}

} // namespace

QtScheduler &QtScheduler::instance()
{
    static QtScheduler s;
    return s;
}

void QtScheduler::post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block)
{
    if (!block)
        return;
    QObject *context = queue == QueueKind::Main ? QCoreApplication::instance() : GlobalThread::context();
    if (!context) {
        qCWarning(lcKovena) << "block dropped: no application event loop to run it";
        return;
    }
    postOn(context, delay, std::move(block));
}

} // namespace kovena
