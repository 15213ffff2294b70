#pragma once

#include <QString>

namespace kovena {

class CardUtils;

// How the card form's fields take an edit, as plain functions of the field's text before the
// edit, the replaced range (UTF-16 units) and the replacement; the card screen only forwards.
namespace cardFormEditing {

// What becomes of an edit of the card number field.
struct NumberEdit
{
    enum class Kind {
        Refuse, // the field keeps its text
        Accept, // the edit is applied as typed; the stored number does not change
        Show, // the field shows `shown` in place of the edit, and the number is stored as `card`
    };
    Kind kind = Kind::Refuse;
    QString shown;
    QString card;
};

// Digits only; up to 16 digits grouped in fours with "-", and up to 19 ungrouped once the
// stored number `card` (from before this edit) is a Maestro number.
NumberEdit numberEdit(const CardUtils &cardUtils, const QString &fieldText, int start, int length,
    const QString &replacement, const QString &card);

// The value a field's stored copy (CVV, name on card) takes after an edit: the field's text
// without its last character for a deletion, else the field's text with the replacement added
// at the end, wherever it was typed. `stored` is kept for a deletion in an empty field.
QString followedText(const QString &stored, const QString &fieldText, const QString &replacement);

// True when the text holds nothing but the ASCII digits "0"..."9".
bool isDigitsOnly(const QString &text);

} // namespace cardFormEditing
} // namespace kovena
