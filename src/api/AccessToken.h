#pragma once

#include <QString>

namespace kovena {

// The bearer token that every request carries, one for the whole process. It starts as the
// placeholder "MERCHANT_ACCESS_TOKEN" and follows the token the facade stores in the user
// defaults; it is never cleared. Safe to use from any thread.
class AccessToken
{
public:
    AccessToken() = delete;

    // Takes the token stored under "accessToken" when anything is stored there (fatal if that
    // is not a string) and returns the token to send.
    static QString refresh();
    static QString current();
};

} // namespace kovena
