#pragma once

#include <QString>
#include <QVariantMap>

namespace kovena {

// A card scheme as the type table names it: a display name and the pattern a whole number of
// that scheme matches. Two records are the same scheme when their names are equal.
class CreditCardValidationType
{
public:
    CreditCardValidationType() = default;
    CreditCardValidationType(QString name, QString regex);
    // From the keys "name" and "regex"; a missing key or a value that is not a string gives "".
    explicit CreditCardValidationType(const QVariantMap &dict);

    QString name;
    QString regex;

    friend bool operator==(const CreditCardValidationType &a, const CreditCardValidationType &b)
    {
        return a.name == b.name;
    }
};

} // namespace kovena
