#include "api/SessionDataTask.h"

#include "api/OneShotBody.h"
#include "api/UrlSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <chrono>

namespace kovena {

using namespace Qt::StringLiterals;

namespace {

// Errors by which Qt reports an HTTP status it received. The exchange itself worked, so the
// reply body, not the status, decides what it means.
bool isHttpStatusError(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::ContentConflictError:
    case QNetworkReply::ContentGoneError:
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::InternalServerError:
    case QNetworkReply::OperationNotImplementedError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return true;
    default:
        return false;
    }
}

QString sessionClosedError()
{
    return u"the network session has been shut down"_s;
}

} // namespace

SessionDataTask::SessionDataTask(std::shared_ptr<UrlSession> session, QNetworkRequest request,
    std::optional<QByteArray> body, Completion completion)
    : m_session(std::move(session))
    , m_request(std::move(request))
    , m_body(std::move(body))
    , m_completion(std::move(completion))
{ }

SessionDataTask::~SessionDataTask() = default;

QString SessionDataTask::cancelledError()
{
    return u"cancelled"_s;
}

void SessionDataTask::resume()
{
    if (m_resumed.exchange(true))
        return;
    // Resumed from a completion (the next request of a chain): already where it runs, so it
    // starts at once instead of waiting for another turn of the session's event loop.
    if (m_session->isOpenHere()) {
        startOnSessionThread();
        return;
    }
    auto self = shared_from_this();
    if (!m_session->post([self] { self->startOnSessionThread(); }))
        complete({ std::nullopt, sessionClosedError() });
}

void SessionDataTask::cancel()
{
    if (m_finished.load() || m_cancelRequested.exchange(true))
        return;
    auto self = shared_from_this();
    if (!m_session->post([self] { self->cancelOnSessionThread(); }))
        complete({ std::nullopt, cancelledError() });
}

void SessionDataTask::startOnSessionThread()
{
    // Cancelled before it could start: it already completed.
    if (m_finished.load() || m_reply)
        return;
    auto *body = new OneShotBody(m_body.value_or(QByteArray()));
    m_body.reset();
    m_reply = m_session->manager()->post(m_request, body);
    body->setParent(m_reply);
    m_sinceProgress.start();
    auto self = shared_from_this();
    m_session->taskStarted(self);
    QObject::connect(
        m_reply, &QNetworkReply::finished, m_reply, [self = std::move(self)] { self->onReplyFinished(); });
}

void SessionDataTask::abortIfStalled(std::chrono::milliseconds limit)
{
    if (!m_reply || m_finished.load() || !m_reply->isRunning())
        return;
    // Progress is looked at here, once per watchdog tick, rather than followed through the
    // reply's progress signals: a connection per request and a call per signal would cost a
    // status enquiry on loopback a noticeable part of its time. The body goes out in one write
    // (a few hundred bytes), so what counts is the reply arriving: its status line, then its
    // bytes, which stay in the reply until it finishes.
    const bool answered = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    const qint64 mark = m_reply->bytesAvailable() + (answered ? 1 : 0);
    if (mark != m_progressMark) {
        m_progressMark = mark;
        m_sinceProgress.restart();
        return;
    }
    if (m_sinceProgress.elapsed() >= limit.count())
        m_reply->abort(); // finished() follows, with an error
}

void SessionDataTask::cancelOnSessionThread()
{
    if (m_finished.load())
        return;
    if (m_reply && m_reply->isRunning())
        m_reply->abort(); // emits finished(), which completes the task
    else if (!m_reply)
        complete({ std::nullopt, cancelledError() });
}

void SessionDataTask::onReplyFinished()
{
    QNetworkReply *reply = m_reply;
    const QNetworkReply::NetworkError error = reply->error();
    // Whether a status line came back is asked only of a reply that has an error.
    const auto answered
        = [reply] { return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid(); };

    DataTaskResult result;
    if (m_cancelRequested.load() && error == QNetworkReply::OperationCanceledError) {
        result.error = cancelledError();
    } else if (error != QNetworkReply::NoError && !(isHttpStatusError(error) && answered())) {
        result.error = reply->errorString();
    } else {
        QByteArray body = reply->readAll();
        if (!body.isEmpty())
            result.body = std::move(body);
    }

    m_session->taskFinished(shared_from_this());
    reply->deleteLater();
    complete(std::move(result));
}

void SessionDataTask::complete(DataTaskResult result)
{
    if (m_finished.exchange(true))
        return;
    Completion completion = std::move(m_completion);
    m_completion = nullptr;
    if (completion)
        completion(std::move(result));
    // `completion` goes out of scope here, releasing whatever it held (the caller's callback).
}

} // namespace kovena
