#pragma once

#include <optional>
#include <string>

namespace kovena::sandbox {

// The card of a card payment, as the registration request carries it. Lives no longer than
// the request: the sandbox keeps only the last four digits.
struct CardDetails
{
    std::string number;
    std::string name;
    std::string expiryMonth;
    std::string expiryYear;
    std::string cvv;
};

// Why the backend refuses a card at registration.
struct CardRefusal
{
    std::string code;
    std::string message;
    bool operator==(const CardRefusal &) const = default;
};

// The card checks of registration: the form of each detail, the Luhn checksum, an expiry in
// the past, and the documented test cards that the issuer refuses. Any other card passes.
class CardCheck
{
public:
    struct Month
    {
        int year;
        int month; // 1 to 12
    };

    static std::optional<CardRefusal> refusal(const CardDetails &card, Month current);
    // The current month in local time.
    static Month currentMonth();
    static bool passesLuhn(const std::string &digits);
};

} // namespace kovena::sandbox
