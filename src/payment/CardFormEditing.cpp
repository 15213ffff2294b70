#include "payment/CardFormEditing.h"

#include "payment/CardUtils.h"

#include <QTextBoundaryFinder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace kovena::cardFormEditing {

namespace {

// More digits than this are grouped no further and, unless the number is a Maestro one, refused.
constexpr qsizetype kGroupedDigits = 16;
// The most digits any number may have.
constexpr qsizetype kMaxDigits = 19;

QString digitsOf(const QString &text)
{
    QString digits;
    for (const QChar c : text) {
        if (c >= u'0' && c <= u'9')
            digits.append(c);
    }
    return digits;
}

// Up to three groups of four digits, each followed by "-", then whatever remains.
QString grouped(const QString &digits, bool hasLeadingOne)
{
    QString text;
    qsizetype next = 0;
    if (hasLeadingOne) {
        text = u"1 "_s;
        next = 1;
    }
    for (int group = 0; group < 3 && digits.size() - next > 4; ++group) {
        text += u"%1-"_s.arg(digits.mid(next, 4));
        next += 4;
    }
    return text + digits.mid(next);
}

QString withoutLastCharacter(const QString &text)
{
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, text);
    graphemes.toEnd();
    const qsizetype last = graphemes.toPreviousBoundary();
    return text.left(std::max<qsizetype>(last, 0));
}

} // namespace

bool isDigitsOnly(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

NumberEdit numberEdit(const CardUtils &cardUtils, const QString &fieldText, int start, int length,
    const QString &replacement, const QString &card)
{
    if (!isDigitsOnly(replacement))
        return {};
    const QString newText = QString(fieldText).replace(start, length, replacement);
    const QString digits = digitsOf(newText);
    const qsizetype count = digits.size();
    // Code value 1 is a control character, never a typed "1", so this never holds and the
    // "1 " prefix of the grouping is never written.
    const bool hasLeadingOne = count > 0 && digits.at(0).unicode() == 1;
    // The scheme of the number as it was before this edit decides how long it may grow.
    const bool storedMaestro = cardUtils.getCardIssuer(card) == CardUtils::CardIssuer::MAESTRO;

    if (count == 0 || (count > kGroupedDigits && (count > kMaxDigits || !hasLeadingOne))) {
        // Past 16 digits, or emptied: the edit is taken as typed (or not at all) by its length
        // in the field, dashes included, and the stored number stays as it was.
        const qsizetype newLength = fieldText.size() + replacement.size() - length;
        const qsizetype limit = storedMaestro ? kMaxDigits + 1 : kGroupedDigits + 1;
        return { newLength < limit ? NumberEdit::Kind::Accept : NumberEdit::Kind::Refuse, {}, {} };
    }

    NumberEdit edit { NumberEdit::Kind::Show, {}, {} };
    if (storedMaestro) {
        // Maestro numbers are shown ungrouped. Leaving a grouped text, the edit goes at the end.
        edit.shown = fieldText.contains(u'-') ? QString(fieldText).remove(u'-') + replacement : newText;
    } else {
        edit.shown = grouped(digits, hasLeadingOne);
    }
    edit.card = QString(edit.shown).remove(u'-');
    return edit;
}

QString followedText(const QString &stored, const QString &fieldText, const QString &replacement)
{
    if (!replacement.isEmpty())
        return fieldText + replacement;
    return fieldText.isEmpty() ? stored : withoutLastCharacter(fieldText);
}

} // namespace kovena::cardFormEditing
