#include "flow/Utils.h"

#include "platform/FatalError.h"
#include "platform/Reachability.h"
#include "sdk/CheckoutStatusCode.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <cmath>
#include <cstdlib>
#include <locale.h>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

// Number of user-perceived characters (grapheme clusters) in text[from, end).
qsizetype characterCount(const QString &text, qsizetype from)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(from);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

// Position just after the `n`th character that starts at `from`.
qsizetype afterCharacters(const QString &text, qsizetype from, int n)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(from);
    qsizetype pos = from;
    for (int i = 0; i < n; ++i)
        pos = finder.toNextBoundary();
    return pos;
}

} // namespace

// strtof in the C locale: the application may have switched LC_NUMERIC to one with a decimal
// comma. strtof would skip leading blanks, so they are refused first.
std::optional<float> Utils::floatValue(const QString &text)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    if (text.isEmpty() || text.front().isSpace())
        return std::nullopt;
    const QByteArray utf8 = text.toUtf8();
    char *end = nullptr;
    const float value = strtof_l(utf8.constData(), &end, cLocale);
    if (end != utf8.constData() + utf8.size())
        return std::nullopt;
    return value;
}

bool Utils::isValidAmount(const std::optional<QString> &amount)
{
    if (!amount)
        fatalError("Utils::isValidAmount: amount is nil");
    if (amount->isEmpty())
        return false;
    static const QRegularExpression pattern(u"^\\d+(\\.\\d{1,})?$"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    if (!pattern.isValid())
        return false;
    return pattern.match(*amount).hasMatch();
}

bool Utils::isValidRange(const std::optional<QString> &amount)
{
    if (!amount)
        fatalError("Utils::isValidRange: amount is nil");
    const std::optional<float> value = floatValue(*amount);
    if (!value)
        fatalError("Utils::isValidRange: amount is not a number");
    const std::optional<float> lowerBound = floatValue(u"1"_s);
    if (*lowerBound > *value)
        return false;
    const std::optional<std::int64_t> whole = truncatedInt64(*value);
    if (!whole)
        fatalError("Utils::isValidRange: amount out of integer range");
    return *whole < 1000000;
}

std::optional<std::int64_t> Utils::truncatedInt64(float value)
{
    // The float range of int64 is [-2^63, 2^63); anything outside (or NaN) cannot be truncated.
    constexpr float twoTo63 = 9223372036854775808.0f;
    if (!std::isfinite(value) || value >= twoTo63 || value < -twoTo63)
        return std::nullopt;
    return static_cast<std::int64_t>(value);
}

bool Utils::isValidVPA(const QString &virtualAddress)
{
    if (!virtualAddress.contains(u'@') || virtualAddress.isEmpty())
        return false;
    const QStringList parts = virtualAddress.split(u'@');
    const QString &name = parts.at(0);
    const QString &handle = parts.at(1);
    if (name.isEmpty() || handle.isEmpty())
        return false;
    for (const QString &provider : { u"gmail"_s, u"hotmail"_s, u"yahoo"_s, u".com"_s }) {
        if (handle.contains(provider, Qt::CaseSensitive))
            return false;
    }
    if (handle.contains(u'_'))
        return false;
    if (handle.contains(u'@'))
        return false;
    if (handle.contains(u'.'))
        return false;
    return true;
}

QString Utils::amountFormat(const QString &amount)
{
    const qsizetype point = amount.indexOf(u'.');
    if (point < 0)
        return amount;
    const qsizetype decimals = characterCount(amount, point + 1);
    if (decimals == 1)
        return amount + u'0';
    if (decimals == 0)
        fatalError("Utils::amountFormat: nothing after the decimal point");
    return amount.left(afterCharacters(amount, point + 1, 2));
}

bool Utils::isConnectedToNetwork()
{
    const std::optional<std::uint32_t> flags = reachability::zeroAddressFlags();
    if (!flags)
        return false;
    const bool reachable = (*flags & reachability::Reachable) != 0;
    const bool needsConnection = (*flags & reachability::ConnectionRequired) != 0;
    return reachable && !needsConnection;
}

QString Utils::getStatusDescription(std::int32_t paymentStatus)
{
    namespace code = CheckoutStatusCode;
    if (paymentStatus == 9 || paymentStatus == 14)
        return u"Pending"_s;
    if (paymentStatus == code::CANCELLED)
        return u"Cancelled"_s;
    if (paymentStatus == 2)
        return u"Fail"_s;
    // A negative status must not reach the shift.
    if (paymentStatus >= 0 && paymentStatus < 12 && ((code::SUCCESS_MASK >> paymentStatus) & 1u) != 0)
        return u"Success"_s;
    switch (paymentStatus) {
    case code::AMOUNT_NIL:
        return u"Missing SDK params,amount nil "_s;
    case code::AMOUNT_EMPTY:
        return u"Missing SDK params,amount is empty or missing "_s;
    case code::AMOUNT_INVALID:
        return u"Missing SDK params,amount is not valid"_s;
    case code::AMOUNT_RANGE_INVALID:
        return u"Missing SDK params,amount range is invalid"_s;
    case code::ORDER_ID_NIL:
        return u"Missing SDK params,orderId nil"_s;
    case code::ORDER_ID_EMPTY:
        return u"Missing SDK params,orderId is empty or missing"_s;
    default:
        return u"Error"_s;
    }
}

} // namespace kovena
