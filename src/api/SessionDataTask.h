#pragma once

#include "api/DataTask.h"

#include <QElapsedTimer>
#include <QNetworkRequest>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QNetworkReply;

namespace kovena {

class UrlSession;

// A data task of the UrlSession. It is created suspended; resume() hands it to the session
// thread. 60 s without progress (nothing of the reply arriving) ends it with an error. It completes
// exactly once, on the session thread, however resume(), cancel(), the reply and the session's
// shutdown interleave.
class SessionDataTask final : public DataTask, public std::enable_shared_from_this<SessionDataTask>
{
public:
    using Completion = std::function<void(DataTaskResult)>;

    SessionDataTask(std::shared_ptr<UrlSession> session, QNetworkRequest request,
        std::optional<QByteArray> body, Completion completion);
    ~SessionDataTask() override;

    // Starts the request; calling it again does nothing.
    void resume();
    void cancel() override;
    bool isFinished() const override { return m_finished.load(); }

    // The error text of a task that was cancelled.
    static QString cancelledError();

private:
    friend class UrlSession;

    void startOnSessionThread();
    void cancelOnSessionThread();
    void onReplyFinished();
    // Aborts the request once `limit` has passed without progress (session thread only).
    void abortIfStalled(std::chrono::milliseconds limit);
    void complete(DataTaskResult result);

    std::shared_ptr<UrlSession> m_session;
    QNetworkRequest m_request;
    std::optional<QByteArray> m_body;

    Completion m_completion;

    std::atomic<bool> m_resumed { false };
    std::atomic<bool> m_cancelRequested { false };
    std::atomic<bool> m_finished { false };
    QNetworkReply *m_reply = nullptr; // session thread only
    QElapsedTimer m_sinceProgress; // session thread only
    qint64 m_progressMark = 0; // session thread only: what had arrived when last looked at
};

} // namespace kovena
