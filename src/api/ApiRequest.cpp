#include "api/ApiRequest.h"

#include "api/Constants.h"
#include "api/JsonReader.h"
#include "api/LogRedaction.h"
#include "api/SessionDataTask.h"
#include "api/UrlSession.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>
#include <QUrl>

#include <optional>
#include <string>

namespace kovena {

namespace {

std::optional<QByteArray> encodeBody(const char *operation, const JsonValue &body)
{
    try {
        const std::string text = body.dump(2, ' ', false, JsonValue::error_handler_t::strict);
        return QByteArray(text.data(), qsizetype(text.size()));
    } catch (const JsonValue::exception &e) {
        qCWarning(lcApi, "%s: request body could not be encoded: %s", operation, e.what());
        return std::nullopt;
    }
}

const QByteArray &authorizationHeader()
{
    static const QByteArray header = Constants::PG::PG_AUTHORIZATION().toLatin1();
    return header;
}

// The request for `url`, carrying the bearer `token` and the body's `length`. Parsing the URL and
// setting up a request cost as much as the rest of a status enquiry's own work; each operation
// posts to one URL of a server that rarely changes, with the same token, and an enquiry repeated
// while a payment is pending sends a body of the same length: such a request is reused whole.
QNetworkRequest preparedRequest(const QString &url, const QString &token, qint64 length)
{
    struct Prepared
    {
        QNetworkRequest request;
        std::optional<QString> token; // none until the header is set
        qint64 length = -1;
    };
    static QMutex mutex;
    static QHash<QString, Prepared> prepared;
    QMutexLocker lock(&mutex);
    auto it = prepared.find(url);
    if (it == prepared.end()) {
        const QUrl parsed(url, QUrl::StrictMode);
        if (!parsed.isValid() || parsed.isRelative())
            fatalError("a request URL cannot be parsed");
        QNetworkRequest request = UrlSession::makeRequest(parsed);
        request.setRawHeader(
            Constants::PG::PG_CONTENT_TYPE().toLatin1(), Constants::PG::PG_CONTENT_TYPE_VALUE().toLatin1());
        constexpr qsizetype kKept = 32; // far more than the operations' URLs on one server
        if (prepared.size() >= kKept)
            prepared.clear();
        it = prepared.insert(url, Prepared { request, std::nullopt, -1 });
    }
    Prepared &entry = *it;
    if (entry.token != token) {
        entry.request.setRawHeader(authorizationHeader(), ApiRequest::authorizationValue(token));
        entry.token = token;
    }
    if (entry.length != length) {
        entry.request.setHeader(QNetworkRequest::ContentLengthHeader, length);
        entry.length = length;
    }
    return entry.request;
}

} // namespace

QByteArray ApiRequest::authorizationValue(const QString &token)
{
    QByteArray value = QByteArrayLiteral("Bearer ") + token.toUtf8();
    value.removeIf([](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
    return value;
}

DataTaskPtr ApiRequest::post(const char *operation, const QString &url, const QString &token,
    const JsonValue &body, ReplyHandlers handlers)
{
    const std::optional<QByteArray> encoded = encodeBody(operation, body);
    QNetworkRequest request = preparedRequest(url, token, encoded ? encoded->size() : 0);

    if (lcApi().isDebugEnabled()) {
        const std::string shown = LogRedaction::redacted(body).dump();
        qCDebug(lcApi, "%s: POST %s %s", operation, qUtf8Printable(request.url().path()), shown.c_str());
    }

    auto completion = [operation, handlers = std::move(handlers)](
                          DataTaskResult result) { handleReply(operation, result, handlers); };
    auto task = UrlSession::shared()->dataTask(std::move(request), encoded, std::move(completion));
    task->resume();
    return task;
}

void ApiRequest::handleReply(
    const char *operation, const DataTaskResult &result, const ReplyHandlers &handlers)
{
    if (result.error || !result.body) {
        handlers.failure();
        return;
    }

    std::string fault;
    const std::optional<JsonValue> decoded = JsonReader::read(*result.body, fault);
    if (!decoded) {
        handlers.failure();
        qCWarning(lcApi, "%s: reply is not valid JSON (%s)", operation, fault.c_str());
        return;
    }

    const JsonValue &reply = *decoded;
    if (!reply.is_object())
        fatalError("a backend reply is not a JSON object");

    const JsonValue *error = findMember(reply, "error");
    if (error && error->is_string()) {
        handlers.failure();
        return;
    }
    handlers.success(reply);
}

} // namespace kovena
