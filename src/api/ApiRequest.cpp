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

// No reply of the backend nests more than a few levels. A far deeper one is refused before its
// tree is built: the parser copies an object's members, recursively, each time the object
// grows, and a tree 100 000 levels deep would overflow the session thread's stack there.
constexpr int kMaxReplyDepth = 512;

struct TooDeep
{
};

// The reply body as JSON, or nullopt with what was wrong in `fault`: the position and kind of
// the fault, never the body's text.
std::optional<JsonValue> decode(const QByteArray &body, std::string &fault)
{
    const auto limitDepth = [](int depth, JsonValue::parse_event_t, JsonValue &) {
        if (depth > kMaxReplyDepth)
            throw TooDeep();
        return true;
    };
    try {
        return JsonValue::parse(body.constBegin(), body.constEnd(), limitDepth);
    } catch (const JsonValue::parse_error &e) {
        fault = "parse error " + std::to_string(e.id) + " at byte " + std::to_string(e.byte);
    } catch (const JsonValue::out_of_range &e) {
        // A number beyond the range of a double.
        fault = "number out of range, error " + std::to_string(e.id);
    } catch (const TooDeep &) {
        fault = "nested deeper than " + std::to_string(kMaxReplyDepth) + " levels";
    }
    return std::nullopt;
}

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

    std::string fault;
    const std::optional<JsonValue> decoded = decode(*result.body, fault);
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
