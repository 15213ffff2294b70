#pragma once

#include <optional>
#include <string>

namespace kovena::sandbox {

// How a UPI collect request plays out: the number of status answers that stay pending, then
// the final payment status (none: pending for ever). Chosen by the customer's VPA.
struct CollectScenario
{
    int pendingAnswers = 2;
    std::optional<int> finalStatus = 1;

    // "success@kovena", "failure@kovena", "pending@kovena", "success<N>@kovena",
    // "failure<N>@kovena" (N from 0 to 1000); any other VPA behaves like "success@kovena".
    static CollectScenario forVpa(const std::string &vpa);

    bool operator==(const CollectScenario &) const = default;
};

} // namespace kovena::sandbox
