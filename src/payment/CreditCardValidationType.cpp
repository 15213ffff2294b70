#include "payment/CreditCardValidationType.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

QString stringValue(const QVariantMap &dict, const QString &key)
{
    const QVariant value = dict.value(key);
    // Only a string counts: a number or a list is not converted.
    if (value.metaType() != QMetaType::fromType<QString>())
        return QString();
    return value.toString();
}

} // namespace

CreditCardValidationType::CreditCardValidationType(QString name, QString regex)
    : name(std::move(name))
    , regex(std::move(regex))
{ }

CreditCardValidationType::CreditCardValidationType(const QVariantMap &dict)
    : name(stringValue(dict, u"name"_s))
    , regex(stringValue(dict, u"regex"_s))
{ }

} // namespace kovena
