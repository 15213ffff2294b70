#pragma once

#include <QString>

namespace kovena {

// The backend's base URL for this process. It may be changed until the first request
// reads it for sending; from then on it is fixed, so that one checkout never talks to two
// backends.
class ServerUrl
{
public:
    ServerUrl() = delete;

    static QString current();
    // The base URL for a request that is about to be sent; fixes it for the process.
    static QString lockForRequest();
    // False when already fixed or when `url` is not an absolute http(s) URL without user
    // info, query or fragment whose path ends in "/KoVena/".
    static bool set(const QString &url);
    static bool isAcceptable(const QString &url);
};

} // namespace kovena
