#pragma once

#include "platform/ViewController.h"

#include <QList>
#include <QString>

#include <functional>

namespace kovena {

// A modal alert with a title, a message and buttons. Each button runs its handler and then
// closes the alert. Buttons carry object names "alertAction0", "alertAction1", ...
class AlertController : public ViewController
{
    Q_OBJECT

public:
    enum class ActionStyle { Default, Cancel, Destructive };
    struct Action
    {
        QString title;
        ActionStyle style = ActionStyle::Default;
        std::function<void()> handler;
    };

    AlertController(QString title, QString message, QWidget *parent = nullptr);
    void addAction(Action action);
    QString title() const { return m_title; }
    QString message() const { return m_message; }
    QList<Action> actions() const { return m_actions; }

    void viewDidLoad() override;
    // Presses the action with this title, as the customer would. False if there is none.
    bool trigger(const QString &actionTitle);

private:
    void run(int index);

    QString m_title;
    QString m_message;
    QList<Action> m_actions;
};

} // namespace kovena
