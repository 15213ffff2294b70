#pragma once

// The sandbox backend inside the test process, shared by the suites that talk to a backend.
#include "sandbox/Sandbox.h"

#include <nlohmann/json.hpp>

#include <QString>

#include <string>
#include <vector>

namespace kovena::testing {

// How long a test waits for the backend (or the browser) before it fails.
inline constexpr int kWaitMs = 15000;

// The endpoints, as the sandbox records their paths and scripts their replies.
inline constexpr const char *kStatusEndpoint = "v1/sdk/txn/1/false/2";
inline constexpr const char *kPayEndpoint = "v1/sdk/payForService";
inline constexpr const char *kCollectEndpoint = "v1/sdk/sendCollectOrSMS";
inline constexpr const char *kBankListEndpoint = "v1/netbanking/listofbanks";

// The process's sandbox, started on first use, with the client pointed at it before any request.
sandbox::Sandbox &inProcessBackend();

// Empties the backend's request log and scripted replies, and the user defaults; then stores
// what the facade and the navigation controller store for a checkout with `accessToken`.
void resetBackendForCheckout(const QString &accessToken);

// The JSON bodies the backend received for `endpoint`, in order (round trips left out).
std::vector<nlohmann::json> bodiesSentTo(const std::string &endpoint);

// Sends a status enquiry of its own (its id is kRoundTripId) and waits until the client has
// handed its reply over. A request the library started before has reached the backend by then,
// and a reply that came back before it has been delivered: what is left is on the main queue.
bool roundTrip();
inline constexpr const char *kRoundTripId = "round-trip";

} // namespace kovena::testing
