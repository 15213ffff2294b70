#include "ScreenWatcher.h"

#include "platform/ViewController.h"

#include <QApplication>
#include <QChildEvent>
#include <QLabel>
#include <QPointer>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace kovena::demo {

ScreenWatcher::ScreenWatcher(QObject *parent)
    : QObject(parent)
{ }

ScreenWatcher::~ScreenWatcher()
{
    if (m_installed && qApp)
        qApp->removeEventFilter(this);
}

void ScreenWatcher::install()
{
    if (m_installed)
        return;
    qApp->installEventFilter(this);
    m_installed = true;
}

bool ScreenWatcher::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ChildAdded: {
        QObject *child = static_cast<QChildEvent *>(event)->child();
        if (qobject_cast<QLabel *>(child) && child->objectName() == "kovenaToast"_L1)
            reportToast(child);
        break;
    }
    case QEvent::Show:
        // Spontaneous shows come from the window system (a window restored), not from navigation.
        if (!event->spontaneous()) {
            if (auto *screen = qobject_cast<ViewController *>(watched)) {
                const QString id = screen->storyboardIdentifier();
                if (!id.isEmpty())
                    Q_EMIT screenShown(id);
            }
        }
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void ScreenWatcher::reportToast(QObject *label)
{
    if (m_reportedToasts.contains(label))
        return;
    const QString text = static_cast<QLabel *>(label)->text();
    if (text.isEmpty()) {
        // The text may be set right after the label was parented: read it once the current
        // event has been handled.
        QTimer::singleShot(0, this, [this, guard = QPointer<QObject>(label)] {
            if (guard && !m_reportedToasts.contains(guard.data())) {
                markReported(guard.data());
                Q_EMIT toastShown(static_cast<QLabel *>(guard.data())->text());
            }
        });
        return;
    }
    markReported(label);
    Q_EMIT toastShown(text);
}

void ScreenWatcher::markReported(QObject *label)
{
    m_reportedToasts.insert(label);
    connect(label, &QObject::destroyed, this, [this, label] { m_reportedToasts.remove(label); });
}

} // namespace kovena::demo
