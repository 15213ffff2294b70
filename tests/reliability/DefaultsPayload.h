#pragma once

#include <QString>

namespace kovena::test {

// The value the writer stores in its write number `generation`: the number, then text that
// grows with it (wrapping at 64 KiB so the file stays small), so that any value read back names
// the write it came from and can be checked whole.
inline QString defaultsPayload(int generation)
{
    const int length = 16 + (generation * 613) % 65536;
    QString text = QString::number(generation) + QLatin1Char('|');
    text.reserve(text.size() + length);
    for (int i = 0; i < length; ++i)
        text += QChar(u'a' + (generation + i) % 26);
    return text;
}

// The write number at the front of a value; -1 when there is none.
inline int defaultsGeneration(const QString &payload)
{
    bool ok = false;
    const int generation = payload.section(QLatin1Char('|'), 0, 0).toInt(&ok);
    return ok ? generation : -1;
}

} // namespace kovena::test
