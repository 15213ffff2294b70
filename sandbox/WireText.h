#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Small text helpers shared by the sandbox's endpoints and its request log.
namespace kovena::sandbox::wire {

// A positive decimal integer written with digits only (no sign, blanks or exponent).
std::optional<std::int64_t> parseDecimalId(const std::string &text);
// One or more digits, optionally a point and one or more digits.
bool isDecimalAmount(const std::string &text);
// A stable, realistic-looking hexadecimal digest of the text (not a cryptographic hash).
std::string hexDigest(const std::string &text, std::size_t length = 64);
// "2024-01-31T09:15:00.123Z"
std::string utcTimestamp();
// "2024-01-31 14:45:00" in local time, as the backend writes transaction times.
std::string transactionTime();
// The body with the values of any "cardNumber" (all but the last four digits) and "cvv"
// masked: members at any depth of a JSON body; in a body that does not parse, the values that
// follow those names as JSON members or form fields.
std::string maskCardData(const std::string &body);
std::string toLower(std::string text);

// application/x-www-form-urlencoded: every byte but letters, digits and "-._~" as %XX.
std::string formEncode(const std::string &text);
// "+" as a blank and %XX as its byte; a broken escape stays as it is.
std::string formDecode(const std::string &text);
// The name=value pairs of a form body, decoded, in order (duplicates kept).
std::vector<std::pair<std::string, std::string>> parseForm(const std::string &body);
// The first value of `name` in parsed form pairs; nullopt when absent.
std::optional<std::string> formValue(
    const std::vector<std::pair<std::string, std::string>> &form, const std::string &name);
// "1234567.5" as "₹12,34,567.50": Indian digit grouping, at least two decimals, none dropped.
std::string rupees(const std::string &amount);

} // namespace kovena::sandbox::wire
