#pragma once

#include <QString>

namespace kovena {

// The customer's contact details as the payment requests send them.
struct CustomerFields
{
    QString customerMobNum;
    QString customerEmail;
};

// The per-checkout fields that the checkout flow keeps in the user defaults.
struct StoredRequestFields
{
    bool retry = false;
    QString requestId;
};

// Reads and writes the user-defaults entries the payment requests depend on.
class StoredFields
{
public:
    StoredFields() = delete;

    // Both stored values, or both empty unless both are stored. A stored value that is not a
    // string is fatal.
    static CustomerFields customer();
    // "retry" (a boolean) and "requestId" (a string); either missing or of another kind is fatal.
    static StoredRequestFields request();
    // Marks the checkout as having had an accepted payment request.
    static void markRetry();
};

} // namespace kovena
