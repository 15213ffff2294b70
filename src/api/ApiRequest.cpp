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

// The request for `url` with all that is the same for every request to it: parsing the URL and
// setting up a request cost as much as the rest of a status enquiry's own work, and each
// operation posts to one URL of a server that rarely changes.
QNetworkRequest preparedRequest(const QString &url)
{
    static QMutex mutex;
    static QHash<QString, QNetworkRequest> prepared;
    QMutexLocker lock(&mutex);
    if (const auto it = prepared.constFind(url); it != prepared.cend())
        return *it;
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative())
        fatalError("a request URL cannot be parsed");
    QNetworkRequest request = UrlSession::makeRequest(parsed);
    request.setRawHeader(
        Constants::PG::PG_CONTENT_TYPE().toLatin1(), Constants::PG::PG_CONTENT_TYPE_VALUE().toLatin1());
    constexpr qsizetype kKept = 32; // far more than the operations' URLs on one server
    if (prepared.size() >= kKept)
        prepared.clear();
    prepared.insert(url, request);
    return request;
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
    QNetworkRequest request = preparedRequest(url);
    static const QByteArray authorization = Constants::PG::PG_AUTHORIZATION().toLatin1();
    request.setRawHeader(authorization, authorizationValue(token));
    const std::optional<QByteArray> encoded = encodeBody(operation, body);

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
