#include "api/ApiRequest.h"

#include "api/Constants.h"
#include "api/LogRedaction.h"
#include "api/SessionDataTask.h"
#include "api/UrlSession.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"

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
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid() || parsed.isRelative())
        fatalError("a request URL cannot be parsed");

    QNetworkRequest request = UrlSession::makeRequest(parsed);
    const std::optional<QByteArray> encoded = encodeBody(operation, body);
    request.setRawHeader(
        Constants::PG::PG_CONTENT_TYPE().toLatin1(), Constants::PG::PG_CONTENT_TYPE_VALUE().toLatin1());
    request.setRawHeader(Constants::PG::PG_AUTHORIZATION().toLatin1(), authorizationValue(token));

    if (lcApi().isDebugEnabled()) {
        const std::string shown = LogRedaction::redacted(body).dump();
        qCDebug(lcApi, "%s: POST %s %s", operation, qUtf8Printable(parsed.path()), shown.c_str());
    }

    auto completion = [operation, handlers = std::move(handlers)](
                          DataTaskResult result) { handleReply(operation, result, handlers); };
    auto task = UrlSession::shared()->dataTask(request, encoded, std::move(completion));
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

    JsonValue reply;
    try {
        reply = JsonValue::parse(result.body->constBegin(), result.body->constEnd());
    } catch (const JsonValue::exception &e) {
        // Malformed text is a parse_error; a number beyond a double's range ("1e400") is an
        // out_of_range. Either way the body does not decode.
        handlers.failure();
        // The position and kind of the fault, never the body's text (which e.what() may quote).
        if (const auto *parseError = dynamic_cast<const JsonValue::parse_error *>(&e))
            qCWarning(lcApi, "%s: reply is not valid JSON (parse error %d at byte %zu)", operation, e.id,
                parseError->byte);
        else
            qCWarning(lcApi, "%s: reply is not valid JSON (error %d)", operation, e.id);
        return;
    }

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
