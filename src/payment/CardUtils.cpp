#include "payment/CardUtils.h"

#include "payment/CardIssuerRules.h"
#include "platform/Dispatch.h"
#include "platform/FatalError.h"
#include "platform/ToastPresenter.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <utility>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

using cardrules::characterCount;

// The issuer patterns compiled once, in rule order. Compiling (and JIT-compiling) here, inside
// the one-time initialisation, leaves nothing to be built lazily when several threads match.
const std::array<QRegularExpression, cardrules::issuerRules.size()> &compiledIssuerRules()
{
    static const auto compiled = [] {
        std::array<QRegularExpression, cardrules::issuerRules.size()> rules;
        for (std::size_t i = 0; i < rules.size(); ++i) {
            rules[i] = QRegularExpression(
                cardrules::issuerRules[i].pattern.toString(), cardrules::issuerPatternOptions);
            rules[i].optimize();
        }
        return rules;
    }();
    return compiled;
}

// The scheme table in the order it is tried, as the dictionaries the records are built from.
const QList<QVariantMap> &typeDictionaries()
{
    static const QList<QVariantMap> table = [] {
        const std::pair<QString, QString> rows[] = {
            { u"Amex"_s, u"^3[47][0-9]{5,}$"_s },
            { u"Visa"_s, u"^4\\d{0,}$"_s },
            { u"MasterCard"_s, u"^5[1-5]\\d{0,14}$"_s },
            { u"Maestro"_s, u"^(?:5[0678]\\d\\d|6304|6390|67\\d\\d)\\d{8,15}$"_s },
            { u"Diners"_s, u"^3(?:0[0-5]|[68][0-9])[0-9]{4,}$"_s },
            { u"JCB"_s, u"^(?:2131|1800|35[0-9]{3})[0-9]{3,}$"_s },
            { u"Discover"_s, u"^6(?:011|5[0-9]{2})[0-9]{3,}$"_s },
            { u"UnionPay"_s, u"^62[0-5]\\d{13,16}$"_s },
            { u"Mir"_s, u"^22[0-9]{1,14}$"_s },
            { u"Rupay"_s, cardrules::rupayPattern.toString() },
        };
        QList<QVariantMap> list;
        for (const auto &[name, regex] : rows)
            list.append(QVariantMap { { u"name"_s, name }, { u"regex"_s, regex } });
        return list;
    }();
    return table;
}

// Whole-string matchers for the scheme patterns, compiled once and looked up by pattern text.
bool matchesWhole(const QString &regex, const QString &text)
{
    static const QHash<QString, QRegularExpression> matchers = [] {
        QHash<QString, QRegularExpression> compiled;
        for (const QVariantMap &dict : typeDictionaries()) {
            const QString pattern = dict.value(u"regex"_s).toString();
            QRegularExpression re(
                QRegularExpression::anchoredPattern(pattern), cardrules::typePatternOptions);
            re.optimize();
            compiled.insert(pattern, re);
        }
        return compiled;
    }();
    const auto found = matchers.constFind(regex);
    const QRegularExpression re = found != matchers.cend()
        ? *found
        : QRegularExpression(QRegularExpression::anchoredPattern(regex), cardrules::typePatternOptions);
    return re.isValid() && re.match(text).hasMatch();
}

// Only the Unicode decimal digits (category Nd) of the text, in order.
QString decimalDigits(const QString &text)
{
    std::u32string kept;
    for (const char32_t c : text.toUcs4()) {
        if (QChar::isDigit(c))
            kept.push_back(c);
    }
    return QString::fromUcs4(kept.data(), static_cast<qsizetype>(kept.size()));
}

// An optional sign followed by ASCII digits, within 64 bits; nothing for anything else
// (blanks, other digits, an empty text).
std::optional<qint64> integerValue(const QString &text)
{
    qsizetype i = 0;
    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'+' || text.front() == u'-')) {
        negative = text.front() == u'-';
        ++i;
    }
    if (i == text.size())
        return std::nullopt;
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    constexpr qint64 min = std::numeric_limits<qint64>::min();
    qint64 value = 0;
    for (; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        const int digit = c - u'0';
        if (negative) {
            if (value < (min + digit) / 10)
                return std::nullopt;
            value = value * 10 - digit;
        } else {
            if (value > (max - digit) / 10)
                return std::nullopt;
            value = value * 10 + digit;
        }
    }
    return value;
}

bool isIssuer(const QString &issuer, QStringView constant)
{
    return issuer.toLower() == constant.toString().toLower();
}

[[noreturn]] void absent(const char *caller, const char *argument)
{
    const std::string what = std::string(caller) + ": " + argument + " is nil";
    fatalError(what.c_str());
}

// The last few answers of a pure lookup on one thread, the newest first: a keystroke asks about
// the same few texts again and again.
template<typename Value> class RecentAnswers
{
public:
    const Value *find(const QString &key) const
    {
        for (const auto &entry : m_entries) {
            if (entry && entry->first == key)
                return &entry->second;
        }
        return nullptr;
    }

    void remember(const QString &key, Value value)
    {
        std::rotate(m_entries.begin(), m_entries.end() - 1, m_entries.end());
        m_entries.front().emplace(key, std::move(value));
    }

private:
    std::array<std::optional<std::pair<QString, Value>>, 4> m_entries;
};

} // namespace

CardUtils::CardUtils(Today today)
    : m_today(today ? std::move(today) : Today(&QDate::currentDate))
{ }

const QList<CreditCardValidationType> &CardUtils::types() const
{
    if (!m_types) {
        QList<CreditCardValidationType> records;
        for (const QVariantMap &dict : typeDictionaries())
            records.append(CreditCardValidationType(dict));
        m_types = std::move(records);
    }
    return *m_types;
}

QString CardUtils::getCardIssuer(const QString &cardNumber) const
{
    // One keystroke asks for the issuer of the same number several times (the field, the icon,
    // the CVV length, the proceed state), with and without its dashes.
    thread_local RecentAnswers<QString> recent;
    if (const QString *known = recent.find(cardNumber))
        return *known;

    QString issuer;
    const QString subject = cardrules::issuerSearchText(cardNumber);
    const auto &compiled = compiledIssuerRules();
    for (std::size_t i = 0; i < compiled.size(); ++i) {
        // A pattern the engine rejects is skipped, as if it had not matched.
        if (compiled[i].isValid() && compiled[i].match(subject).hasMatch()) {
            issuer = cardrules::issuerRules[i].issuer.toString();
            break;
        }
    }
    recent.remember(cardNumber, issuer);
    return issuer;
}

QString CardUtils::getCardIssuerIcon(const QString &cardNumber) const
{
    static constexpr std::pair<QStringView, QStringView> icons[] = {
        { CardIssuer::AMEX, u"ci_amex.png" },
        { CardIssuer::VISA, u"ci_visa.png" },
        { CardIssuer::MASTER, u"ci_mastercard.png" },
        { CardIssuer::MAESTRO, u"ci_maestro.png" },
        { CardIssuer::DINER, u"ci_diner.png" },
        { CardIssuer::JCB, u"ci_jcb.png" },
        { CardIssuer::DISCOVER, u"ci_discover.png" },
        { CardIssuer::LASER, u"ci_laser.png" },
        { CardIssuer::RUPAY, u"ci_rupee.png" },
    };
    const QString issuer = getCardIssuer(cardNumber);
    for (const auto &[constant, icon] : icons) {
        if (issuer == constant)
            return icon.toString();
    }
    return QString();
}

std::optional<CreditCardValidationType> CardUtils::type(const QString &cardNumber) const
{
    // Asked for the same number several times per keystroke, as the issuer is.
    thread_local RecentAnswers<std::optional<CreditCardValidationType>> recent;
    if (const auto *known = recent.find(cardNumber))
        return *known;

    std::optional<CreditCardValidationType> found;
    const QString digits = decimalDigits(cardNumber);
    for (const CreditCardValidationType &record : types()) {
        if (matchesWhole(record.regex, digits)) {
            found = record;
            break;
        }
    }
    recent.remember(cardNumber, found);
    return found;
}

int CardUtils::getCvvLength(const QString &cardNumber) const
{
    const std::optional<CreditCardValidationType> record = type(cardNumber);
    return record && isIssuer(record->name, CardIssuer::AMEX) ? 4 : 3;
}

bool CardUtils::isValidCvv(const std::optional<QString> &cardNumber, const std::optional<QString> &cvv) const
{
    if (!cardNumber)
        absent("CardUtils::isValidCvv", "cardNumber");
    const QString issuer = getCardIssuer(*cardNumber);
    if (isIssuer(issuer, CardIssuer::MAESTRO))
        return true;
    if (!cvv)
        absent("CardUtils::isValidCvv", "cvv");
    if (cvv->isEmpty())
        return false;
    return characterCount(*cvv) == (isIssuer(issuer, CardIssuer::AMEX) ? 4 : 3);
}

bool CardUtils::isValidMonth(const std::optional<QString> &cardNumber, const std::optional<QString> &month,
    const std::optional<QString> &year) const
{
    if (!cardNumber)
        absent("CardUtils::isValidMonth", "cardNumber");
    if (isIssuer(getCardIssuer(*cardNumber), CardIssuer::MAESTRO))
        return true;
    if (!month)
        absent("CardUtils::isValidMonth", "month");
    if (month->isEmpty() || month->toLower() == u"mm")
        return false;
    const QDate today = m_today();
    if (!year)
        absent("CardUtils::isValidMonth", "year");
    // The year has normally been checked first; a text that is not a number here is a caller's
    // mistake, not something to guess about.
    const std::optional<qint64> yearValue = integerValue(*year);
    if (!yearValue)
        fatalError("CardUtils::isValidMonth: year is not a number");
    const std::optional<qint64> monthValue = integerValue(*month);
    if (!monthValue)
        fatalError("CardUtils::isValidMonth: month is not a number");
    // A past year is not rejected here: the year list offers none.
    if (*yearValue == today.year())
        return *monthValue >= today.month();
    return true;
}

bool CardUtils::isValidYear(
    const std::optional<QString> &cardNumber, const std::optional<QString> &year) const
{
    if (!cardNumber)
        absent("CardUtils::isValidYear", "cardNumber");
    // Decided by the scheme table, unlike the month and CVV checks, which go by the issuer.
    const std::optional<CreditCardValidationType> record = type(*cardNumber);
    if (record && record->name.toLower() == u"maestro")
        return true;
    if (!year)
        absent("CardUtils::isValidYear", "year");
    if (year->isEmpty())
        return false;
    return year->toLower() != u"yyyy";
}

std::optional<QString> CardUtils::firstFailure(const char *caller, const std::optional<QString> &cardNumber,
    const std::optional<QString> &cardName, const std::optional<QString> &month,
    const std::optional<QString> &year, const std::optional<QString> &cvv) const
{
    if (!cardNumber)
        absent(caller, "cardNumber");
    // No checksum and no upper limit: the entry field limits the length while typing.
    if (cardNumber->isEmpty() || getCardIssuer(*cardNumber).isEmpty() || characterCount(*cardNumber) <= 12)
        return u"Card is not valid !!"_s;
    if (!cardName)
        absent(caller, "cardName");
    if (cardName->isEmpty())
        return u"Card name is not valid !!"_s;
    if (!isValidYear(cardNumber, year))
        return u"Year is not valid !!"_s;
    if (!isValidMonth(cardNumber, month, year))
        return u"Month is not valid !!"_s;
    if (!isValidCvv(cardNumber, cvv))
        return u"CVV is not valid !!"_s;
    return std::nullopt;
}

bool CardUtils::isValidCardDetails(ToastPresenter &context, const std::optional<QString> &cardNumber,
    const std::optional<QString> &cardName, const std::optional<QString> &month,
    const std::optional<QString> &year, const std::optional<QString> &cvv) const
{
    const std::optional<QString> failure
        = firstFailure("CardUtils::isValidCardDetails", cardNumber, cardName, month, year, cvv);
    if (!failure)
        return true;
    // Shown after the current event has been handled; the screen may be gone by then.
    dispatch::main().async([presenter = context.weakHandle(), message = *failure] {
        if (const auto handle = presenter.lock())
            (*handle)->showToast(message);
    });
    return false;
}

bool CardUtils::isButtonProceedEnabled(const std::optional<QString> &cardNumber,
    const std::optional<QString> &cardName, const std::optional<QString> &month,
    const std::optional<QString> &year, const std::optional<QString> &cvv) const
{
    return !firstFailure("CardUtils::isButtonProceedEnabled", cardNumber, cardName, month, year, cvv);
}

} // namespace kovena
