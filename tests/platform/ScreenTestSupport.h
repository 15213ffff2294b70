#pragma once

#include "platform/NavigationController.h"
#include "platform/ViewController.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
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
    void viewWillDisappear(bool) override
    {
        note(
            isMovingFromParent() ? QStringLiteral("willDisappear(moving)") : QStringLiteral("willDisappear"));
    }
    void viewDidDisappear(bool) override
    {
        note(isMovingFromParent() ? QStringLiteral("didDisappear(moving)") : QStringLiteral("didDisappear"));
    }

private:
    void note(const QString &call) { m_journal->append(m_name + QLatin1Char('.') + call); }

    QString m_name;
    QStringList *m_journal;
};

// Spins the event loop until `done` holds or three seconds pass; returns whether it held.
inline bool waitUntil(const std::function<bool()> &done)
{
    QDeadlineTimer deadline(3000);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}

} // namespace kovena::test
