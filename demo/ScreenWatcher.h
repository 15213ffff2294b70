#pragma once

#include <QObject>
#include <QSet>

namespace kovena::demo {

// Watches the whole application for what the customer sees: a toast ("kovenaToast" label)
// being added to a screen, and a library screen (one with a storyboard identifier) becoming
// visible. Reports each toast once and each appearance of a screen once.
class ScreenWatcher : public QObject
{
    Q_OBJECT

public:
    explicit ScreenWatcher(QObject *parent = nullptr);
    ~ScreenWatcher() override;
    void install();

Q_SIGNALS:
    void toastShown(const QString &message);
    void screenShown(const QString &storyboardIdentifier);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void reportToast(QObject *label);
    void markReported(QObject *label);

    QSet<QObject *> m_reportedToasts;
    bool m_installed = false;
};

} // namespace kovena::demo
