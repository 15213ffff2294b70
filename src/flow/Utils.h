#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace kovena {

// Checks and formatting shared by the screens. Pure except isConnectedToNetwork().
class Utils
{
public:
    Utils() = delete;

    // An absent argument is fatal where the argument is required.
    static bool isValidAmount(const std::optional<QString> &amount);
    static bool isValidRange(const std::optional<QString> &amount);
    static bool isValidVPA(const QString &virtualAddress);
    static QString amountFormat(const QString &amount);
    static bool isConnectedToNetwork();
    static QString getStatusDescription(std::int32_t paymentStatus);

    // The whole text as a single-precision number, read the same way in every locale
    // ("1.5", "1e3", "-2"); nothing when it is not one number (blanks, commas, empty).
    static std::optional<float> floatValue(const QString &text);
    // `value` truncated towards zero; nothing when no 64-bit integer holds it (infinite, not a
    // number, beyond the range), where a plain conversion would be undefined.
    static std::optional<std::int64_t> truncatedInt64(float value);
};

} // namespace kovena
