#include "sandbox/CardCheck.h"

#include "sandbox/WireText.h"

#include <algorithm>
#include <ctime>
#include <regex>

namespace kovena::sandbox {

namespace {

const std::string kInvalid = "400CARDINVALID";
const std::string kExpired = "400CARDEXPIRED";
const std::string kDeclined = "400CARDDECLINED";

// Numbers that pass every check of their own and that the issuer then refuses.
struct TestCard
{
    const char *number;
    const char *code;
    const char *message;
};
const TestCard kRefusedCards[] = {
    { "4000000000000002", "400CARDDECLINED", "Card declined by the issuer" },
    { "4000000000009995", "400CARDDECLINED", "Card declined: insufficient funds" },
    { "4000000000000069", "400CARDEXPIRED", "Card expired" },
};

bool allDigits(const std::string &text)
{
    return !text.empty()
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isAmex(const std::string &number)
{
    return number.rfind("34", 0) == 0 || number.rfind("37", 0) == 0;
}

// Maestro cards may come without CVV or expiry; the card screen sends them as they are.
bool isMaestro(const std::string &number)
{
    // Never destroyed: a host may end the process while a server thread still runs.
    static const std::regex &prefix = *new std::regex("^(5[0678]|6304|6390|67)");
    return std::regex_search(number, prefix);
}

std::optional<int> expiryMonth(const std::string &text)
{
    if (text.size() > 2 || !allDigits(text))
        return std::nullopt;
    int month = std::stoi(text);
    return month >= 1 && month <= 12 ? std::optional(month) : std::nullopt;
}

std::optional<int> expiryYear(const std::string &text)
{
    if (text.size() != 4 || !allDigits(text))
        return std::nullopt;
    return std::stoi(text);
}

} // namespace

std::optional<CardRefusal> CardCheck::refusal(const CardDetails &card, Month current)
{
    if (card.number.size() < 12 || card.number.size() > 19 || !allDigits(card.number))
        return CardRefusal { kInvalid, "Invalid card number" };
    if (!passesLuhn(card.number))
        return CardRefusal { kInvalid, "Invalid card number (checksum)" };
    if (card.name.find_first_not_of(' ') == std::string::npos)
        return CardRefusal { kInvalid, "Missing name on card" };

    const bool maestro = isMaestro(card.number);
    auto month = expiryMonth(card.expiryMonth);
    auto year = expiryYear(card.expiryYear);
    if (month && year) {
        if (*year < current.year || (*year == current.year && *month < current.month))
            return CardRefusal { kExpired, "Card expired" };
    } else if (!maestro) {
        return CardRefusal { kInvalid, "Invalid card expiry" };
    }

    const std::size_t cvvLength = isAmex(card.number) ? 4 : 3;
    if (!(maestro && card.cvv.empty()) && (card.cvv.size() != cvvLength || !allDigits(card.cvv)))
        return CardRefusal { kInvalid, "Invalid CVV" };

    for (const TestCard &test : kRefusedCards) {
        if (card.number == test.number)
            return CardRefusal { test.code, test.message };
    }
    return std::nullopt;
}

CardCheck::Month CardCheck::currentMonth()
{
    std::time_t t = std::time(nullptr);
    std::tm tm {};
    localtime_r(&t, &tm);
    return { tm.tm_year + 1900, tm.tm_mon + 1 };
}

bool CardCheck::passesLuhn(const std::string &digits)
{
    int sum = 0;
    bool twice = false;
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        int d = *it - '0';
        if (twice)
            d = d * 2 > 9 ? d * 2 - 9 : d * 2;
        sum += d;
        twice = !twice;
    }
    return !digits.empty() && sum % 10 == 0;
}

} // namespace kovena::sandbox
