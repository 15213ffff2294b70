#pragma once

#include "api/DataTask.h"
#include "api/JsonValue.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace kovena {

// How one operation answers its caller: the failure value, or its own handling of a reply
// object that passed the common checks. Each runs at most once per request, on the session
// thread, and the two together run exactly once.
struct ReplyHandlers
{
    std::function<void()> failure;
    std::function<void(const JsonValue &reply)> success;
};

// The request side and the common reply path that every backend operation shares.
class ApiRequest
{
public:
    ApiRequest() = delete;

    // Sends `body` as a pretty-printed JSON POST to `url` with the content type and the bearer
    // `token`, and hands the reply to handleReply(). `operation` names the request in
    // diagnostics. A URL that does not parse is fatal.
    static DataTaskPtr post(const char *operation, const QString &url, const QString &token,
        const JsonValue &body, ReplyHandlers handlers);

    // The common reply path. A transport error or a missing body gives the failure value; an
    // undecodable body gives the failure value and then a diagnostic line; a decoded value that
    // is not an object is fatal; a string "error" member gives the failure value; any other
    // object goes to the operation. The HTTP status plays no part.
    static void handleReply(
        const char *operation, const DataTaskResult &result, const ReplyHandlers &handlers);

    // "Bearer " and the token, without control characters: a token can never split the header.
    static QByteArray authorizationValue(const QString &token);
};

} // namespace kovena
