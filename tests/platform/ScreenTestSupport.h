#pragma once

#include "platform/NavigationController.h"
#include "platform/ViewController.h"

#include <QCoreApplication>
#include <QStringList>

#include <functional>

namespace kovena::test {

// A screen that writes every lifecycle call into a shared journal as "<name>.<call>".
class RecordingScreen : public ViewController
{
public:
    RecordingScreen(QString name, QStringList *journal)
        : m_name(std::move(name))
        , m_journal(journal)
    {
        setObjectName(m_name);
    }

    std::function<void()> onLoad;
    std::function<void()> onWillAppear;

    void viewDidLoad() override
    {
        note(QStringLiteral("load"));
        if (onLoad)
            onLoad();
    }
    void viewWillAppear(bool) override
    {
        note(QStringLiteral("willAppear"));
        if (onWillAppear)
            onWillAppear();
    }
    void viewDidAppear(bool) override { note(QStringLiteral("didAppear")); }
    void viewWillDisappear(bool) override { note(QStringLiteral("willDisappear") + moving()); }
    void viewDidDisappear(bool) override { note(QStringLiteral("didDisappear") + moving()); }

private:
    void note(const QString &call) { m_journal->append(m_name + QLatin1Char('.') + call); }
    QString moving() const { return isMovingFromParent() ? QStringLiteral("(moving)") : QString(); }

    QString m_name;
    QStringList *m_journal;
};

// Releases the screens that were handed to deleteLater().
inline void flushDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace kovena::test
