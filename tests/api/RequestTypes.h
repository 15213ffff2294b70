#pragma once

#include "ApiTestSupport.h"

#include <QString>

#include <array>
#include <string>

namespace kovena::test {

// One request type, sent with arguments the sandbox accepts, so that a reply that stays a valid
// success shows as one.
struct RequestType
{
    const char *name;
    const char *path; // under the server URL
    bool registersPayment; // a success stores "retry"
    bool namesPendingPayment; // the collect request: it needs a registered UPI payment
    // `pendingId`: that registered payment's id.
    DataTaskPtr (*send)(std::shared_ptr<Recorder> recorder, const QString &pendingId);
    // The callback in a few words: "failure" for the failure value, else what it carried.
    std::string (*describe)(const Recorder::Call &call);
};

// Status enquiry, UPI registration, UPI collect, card, net banking, bank list.
inline constexpr std::size_t kTypeCount = 6;
extern const std::array<RequestType, kTypeCount> kRequestTypes;
using Outcomes = std::array<std::string, kTypeCount>; // in the order of kRequestTypes
// How each type describes its success against the sandbox. Inline, so that tables of other
// files can be built from it during static initialisation.
inline const Outcomes kSuccesses {
    "record 200TRANSRESPSUCC, paymentStatus 1",
    "registered ORD-F",
    "collect 200MERSUCC",
    "bank page",
    "bank page",
    "banks",
};

// Registers a UPI payment under the token "setup-token" and returns its id ("" on failure), for
// a collect request to name. Changes the stored token.
QString registerPendingPayment();

} // namespace kovena::test
