#pragma once

// Keys for whichever widget has the keyboard at each moment: "<Down>", "<BS>", ... press that
// key, "<All>" selects all, "<Paste=text>" pastes the text, any other character is typed.
#include <QApplication>
#include <QClipboard>
#include <QHash>
#include <QTest>

#include <gtest/gtest.h>

namespace kovena::testing {

inline void press(const QString &keys)
{
    static const QHash<QString, Qt::Key> named = { { QStringLiteral("BS"), Qt::Key_Backspace },
        { QStringLiteral("Left"), Qt::Key_Left }, { QStringLiteral("Home"), Qt::Key_Home },
        { QStringLiteral("End"), Qt::Key_End }, { QStringLiteral("Up"), Qt::Key_Up },
        { QStringLiteral("Down"), Qt::Key_Down }, { QStringLiteral("Return"), Qt::Key_Return },
        { QStringLiteral("Enter"), Qt::Key_Enter }, { QStringLiteral("Escape"), Qt::Key_Escape } };
    for (qsizetype i = 0; i < keys.size(); ++i) {
        QWidget *target = QApplication::focusWidget();
        ASSERT_TRUE(target);
        if (keys.at(i) != u'<') {
            QTest::keyClicks(target, QString(keys.at(i)));
            continue;
        }
        const qsizetype end = keys.indexOf(u'>', i);
        const QString key = keys.mid(i + 1, end - i - 1);
        i = end;
        if (key.startsWith(u"Paste=")) {
            QApplication::clipboard()->setText(key.mid(6));
            QTest::keySequence(target, QKeySequence::Paste);
        } else if (key == u"All") {
            QTest::keySequence(target, QKeySequence::SelectAll);
        } else {
            ASSERT_TRUE(named.contains(key)) << key.toStdString();
            QTest::keyClick(target, named.value(key));
        }
    }
}

} // namespace kovena::testing
