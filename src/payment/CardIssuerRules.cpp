#include "payment/CardIssuerRules.h"

#include <QTextBoundaryFinder>

namespace kovena::cardrules {

qsizetype characterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

QString issuerSearchText(const QString &cardNumber)
{
    QString text = cardNumber.left(characterCount(cardNumber));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (c.isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

} // namespace kovena::cardrules
