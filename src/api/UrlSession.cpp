#include "api/UrlSession.h"

#include "api/SessionDataTask.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <vector>

namespace kovena {

namespace {

thread_local bool t_onSessionThread = false;

// The current session, replaced after a shutdown. Kept apart from the session itself so that
// a task's completion can start requests without waiting for the session that runs it.
struct SharedSlot
{
    QMutex mutex;
    std::shared_ptr<UrlSession> session;

    ~SharedSlot()
    {
        // A process without an application object never runs the post routine.
        if (session)
            session->close();
    }
};

SharedSlot &slot()
{
    static SharedSlot s;
    return s;
}

void closeSharedSession()
{
    UrlSession::shutdownShared();
}

} // namespace

void UrlSession::shutdownShared()
{
    std::shared_ptr<UrlSession> session;
    {
        QMutexLocker lock(&slot().mutex);
        session = std::move(slot().session);
    }
    if (session)
        session->close();
}

// A request ends itself after this long without progress; the watchdog looks at the running
// requests once per tick, so one ends between the limit and a tick later.
constexpr std::chrono::milliseconds kNoProgressLimit { 60000 };
constexpr std::chrono::milliseconds kWatchdogTick { 1000 };

struct UrlSession::Private
{
    QThread thread;
    QObject *context = nullptr; // lives on the session thread
    QNetworkAccessManager *manager = nullptr; // created on the session thread
    // One timer for all requests, running while there are any (and one tick beyond).
    QTimer *watchdog = nullptr; // created on the session thread
    std::vector<std::shared_ptr<SessionDataTask>> running; // few at a time

    QMutex mutex; // guards closed and the posting of blocks
    bool closed = false;
};

UrlSession::UrlSession()
    : d(std::make_unique<Private>())
{ }

UrlSession::~UrlSession()
{
    close();
}

std::shared_ptr<UrlSession> UrlSession::shared()
{
    QMutexLocker lock(&slot().mutex);
    if (!slot().session) {
        std::shared_ptr<UrlSession> session(new UrlSession);
        session->start();
        slot().session = session;
        // Stop the thread while Qt is still whole: the application object runs its post
        // routines first thing in its destructor.
        qRemovePostRoutine(closeSharedSession);
        qAddPostRoutine(closeSharedSession);
    }
    return slot().session;
}

bool UrlSession::isSessionThread()
{
    return t_onSessionThread;
}

QNetworkRequest UrlSession::makeRequest(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    return request;
}

void UrlSession::start()
{
    d->thread.setObjectName(QStringLiteral("kovena-url-session"));
    d->context = new QObject;
    d->context->moveToThread(&d->thread);
    d->thread.start();
    // The first block on the thread, so every task finds the manager ready.
    Private *p = d.get();
    QMetaObject::invokeMethod(
        d->context,
        [p] {
            t_onSessionThread = true;
            p->manager = new QNetworkAccessManager(p->context);
            p->watchdog = new QTimer(p->context);
            p->watchdog->setInterval(kWatchdogTick);
            QObject::connect(p->watchdog, &QTimer::timeout, p->context, [p] {
                if (p->running.empty()) {
                    p->watchdog->stop();
                    return;
                }
                const auto running = p->running; // an abort completes its task, which leaves the list
                for (const auto &task : running)
                    task->abortIfStalled(kNoProgressLimit);
            });
        },
        Qt::QueuedConnection);
}

void UrlSession::close()
{
    {
        QMutexLocker lock(&d->mutex);
        if (d->closed)
            return;
        d->closed = true;
    }
    // Blocks posted before `closed` was set run first; tasks they started are aborted here.
    // Closing from the session thread itself would wait on itself.
    Q_ASSERT(!isSessionThread());
    Private *p = d.get();
    QMetaObject::invokeMethod(
        d->context,
        [p] {
            const auto running = p->running;
            for (const auto &task : running)
                task->cancelOnSessionThread();
            p->running.clear();
            delete p->manager;
            p->manager = nullptr;
            delete p->watchdog;
            p->watchdog = nullptr;
            p->context->deleteLater(); // runs as the thread finishes
            p->context = nullptr;
            QThread::currentThread()->quit();
        },
        Qt::BlockingQueuedConnection);
    d->thread.wait();
}

bool UrlSession::post(std::function<void()> block)
{
    QMutexLocker lock(&d->mutex);
    if (d->closed)
        return false;
    QMetaObject::invokeMethod(d->context, std::move(block), Qt::QueuedConnection);
    return true;
}

bool UrlSession::isOpenHere() const
{
    if (QThread::currentThread() != &d->thread)
        return false;
    QMutexLocker lock(&d->mutex);
    return !d->closed;
}

QNetworkAccessManager *UrlSession::manager() const
{
    return d->manager;
}

void UrlSession::taskStarted(const std::shared_ptr<SessionDataTask> &task)
{
    d->running.push_back(task);
    // Left running between the requests of a chain: starting and stopping a timer per request
    // would cost as much as the timer it replaces.
    if (!d->watchdog->isActive())
        d->watchdog->start();
}

void UrlSession::taskFinished(const std::shared_ptr<SessionDataTask> &task)
{
    const auto it = std::find(d->running.begin(), d->running.end(), task);
    if (it != d->running.end()) {
        std::swap(*it, d->running.back());
        d->running.pop_back();
    }
}

std::shared_ptr<SessionDataTask> UrlSession::dataTask(
    QNetworkRequest request, std::optional<QByteArray> body, Completion completion)
{
    // The length goes out as Qt would send it for any body; with it Qt streams the body (a
    // device that cannot be rewound, see OneShotBody) instead of reading it all first.
    const qint64 length = body ? body->size() : 0;
    if (const QVariant set = request.header(QNetworkRequest::ContentLengthHeader);
        !set.isValid() || set.toLongLong() != length)
        request.setHeader(QNetworkRequest::ContentLengthHeader, length);
    return std::make_shared<SessionDataTask>(
        shared_from_this(), request, std::move(body), std::move(completion));
}

} // namespace kovena
