#pragma once

#include "payment/CardUtils.h"

#include <QRegularExpression>
#include <QString>
#include <QStringView>

#include <array>

// The card scheme patterns as data, so that anything that needs to run them its own way (a
// benchmark compiling them on every call, a test comparing against fresh compilations) reads the
// same text, options and search subject as CardUtils.
namespace kovena::cardrules {

// One issuer rule: the first rule whose pattern is found anywhere in the number names its issuer.
struct IssuerRule
{
    QStringView pattern;
    QStringView issuer;
};

// Shared by the last issuer rule and the "Rupay" record of the type table. Only the first
// alternative is anchored and none ends in "$"; kept as it is, since which numbers it names
// depends on exactly that.
inline constexpr QStringView rupayPattern
    = u"^508[5-9][0-9][0-9]|60698[5-9]|60699[0-9]|607[0-8][0-9][0-9]|6079[0-7][0-9]|60798[0-4]|"
      u"(?!608000)608[0-4][0-9][0-9]|608500|6521[5-9][0-9]|652[2-9][0-9][0-9]|6530[0-9][0-9]|"
      u"6531[0-4][0-9]";

// In the order they are tried. The unanchored fourth rule is meant to win over MASTER and
// MAESTRO for numbers that carry 6011 or 65xx followed by seven digits further in.
inline constexpr std::array<IssuerRule, 10> issuerRules { {
    { u"^4", CardUtils::CardIssuer::VISA },
    { u"^3[47][0-9]", CardUtils::CardIssuer::AMEX },
    { u"^6(?:011|5[0-9]{2})[0-9]", CardUtils::CardIssuer::DISCOVER },
    { u"6(?:011|5[0-9]{2})[0-9]{6}[\\d]+", CardUtils::CardIssuer::LASER },
    { u"^((6304)|(6706)|(6771)|(6709))[\\d]+", CardUtils::CardIssuer::LASER },
    { u"^5[1-5]\\d", CardUtils::CardIssuer::MASTER },
    { u"^(?:5[0678]\\d\\d|6304|6390|67\\d\\d)\\d", CardUtils::CardIssuer::MAESTRO },
    { u"^3(?:0[0-5]|[68][0-9])[0-9]", CardUtils::CardIssuer::DINER },
    { u"^(?:2131|1800|35[0-9]{3})[0-9]", CardUtils::CardIssuer::JCB },
    { rupayPattern, CardUtils::CardIssuer::RUPAY },
} };

// Issuer patterns: "\d" is any Unicode decimal digit, and letters match in either case.
inline constexpr QRegularExpression::PatternOptions issuerPatternOptions
    = QRegularExpression::UseUnicodePropertiesOption | QRegularExpression::CaseInsensitiveOption;

// Type patterns: whole-string matches (QRegularExpression::anchoredPattern), case-sensitive.
inline constexpr QRegularExpression::PatternOptions typePatternOptions
    = QRegularExpression::UseUnicodePropertiesOption;

// The text the issuer rules search: the number's first N UTF-16 units, N being its count of
// user-perceived characters, so that a number holding multi-unit characters loses its tail (as
// a search over a character-counted range of UTF-16 text does). Unpaired surrogates, which no
// rule can match, become U+FFFD so that the regular-expression engine accepts the text.
QString issuerSearchText(const QString &cardNumber);

// Count of user-perceived characters (grapheme clusters).
qsizetype characterCount(const QString &text);

} // namespace kovena::cardrules
