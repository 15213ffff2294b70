#pragma once

#include "api/DataTask.h"

#include <QMutex>
#include <QNetworkRequest>

#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class QObject;
class QThread;

namespace kovena {

class SessionDataTask;

// The process's one HTTP session: a thread of its own that owns the network access manager.
// Tasks are made on any thread and run on the session thread, where their completions are
// called. The session starts on first use and stops when the application object goes away;
// tasks still running then complete with an error.
class UrlSession : public std::enable_shared_from_this<UrlSession>
{
public:
    using Completion = std::function<void(DataTaskResult)>;

    // The running session, started if there is none.
    static std::shared_ptr<UrlSession> shared();
    // Closes the running session, if any (see close()). The application object's destructor
    // calls it; the next request starts a new session.
    static void shutdownShared();
    // True on the thread that runs the session's tasks and completions.
    static bool isSessionThread();
    // A request for `url` with the session's defaults: redirects only within the same origin
    // (so the credentials never reach another host), no cookies kept or sent, and the body
    // streamed as it is rather than copied into a buffer that could be replayed. Each task ends
    // itself after 60 s without progress (SessionDataTask).
    static QNetworkRequest makeRequest(const QUrl &url);

    ~UrlSession();
    UrlSession(const UrlSession &) = delete;
    UrlSession &operator=(const UrlSession &) = delete;

    // A POST of `body` (none: an empty one), with its length set on `request`. Nothing is sent
    // before resume().
    std::shared_ptr<SessionDataTask> dataTask(
        QNetworkRequest request, std::optional<QByteArray> body, Completion completion);

    // Completes every unfinished task with an error and stops the thread. Later tasks of this
    // session complete at once with an error; shared() then starts a new session.
    void close();

private:
    friend class SessionDataTask;
    struct Private;

    UrlSession();
    void start();
    // Runs `block` on the session thread; false (and nothing runs) once the session is closed.
    bool post(std::function<void()> block);
    // True on this session's own thread while it is open, where a block may run at once. A task
    // closed later is still found by close(), which runs after the block that started it.
    bool isOpenHere() const;
    QNetworkAccessManager *manager() const; // session thread only
    void taskStarted(const std::shared_ptr<SessionDataTask> &task); // session thread only
    void taskFinished(const std::shared_ptr<SessionDataTask> &task); // session thread only

    std::unique_ptr<Private> d;
};

} // namespace kovena
