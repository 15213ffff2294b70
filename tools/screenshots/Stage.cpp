#include "Stage.h"

#include "DemoOptions.h"
#include "MerchantScreen.h"

#include "platform/NavigationController.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QPainter>
#include <QThread>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace kovena::screenshots {

Stage::Stage(QSize size)
    : m_window(std::make_unique<QWidget>())
{
    m_window->setObjectName(u"screenshotStage"_s);
    m_window->setWindowTitle(u"Kovena checkout"_s);
    m_window->resize(size);
}

Stage::~Stage()
{
    m_window.reset();
    // Screens released with deleteLater() go now, before the next stage starts.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Stage::startCheckout(const demo::DemoOptions &options)
{
    auto *merchant = new demo::MerchantScreen(options, m_window.get());
    merchant->setGeometry(m_window->rect());
    m_window->show();
    settle(50);
    merchant->startCheckout(options);
}

void Stage::adopt(std::unique_ptr<QWidget> content)
{
    m_window = std::move(content);
    m_window->show();
}

ViewController *Stage::topScreen() const
{
    auto *nav = qobject_cast<NavigationController *>(rootViewController(m_window.get()));
    return nav ? nav->topViewController() : nullptr;
}

bool Stage::waitFor(const std::function<bool()> &done, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    return true;
}

void Stage::settle(int ms)
{
    QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
}

bool Stage::waitForScreen(const QString &identifier, int timeoutMs) const
{
    const bool arrived = waitFor(
        [this, &identifier] {
            ViewController *top = topScreen();
            return top && top->storyboardIdentifier() == identifier && top->isVisible();
        },
        timeoutMs);
    if (arrived)
        settle(); // the move-in of the push
    return arrived;
}

QImage Stage::capture() const
{
    QImage image = m_window->grab().toImage().convertToFormat(QImage::Format_RGB32);
    // A drop-down list is a window of its own above this one: drawn where it shows.
    QPainter painter(&image);
    const QPoint origin = m_window->mapToGlobal(QPoint(0, 0));
    const auto topLevels = QApplication::topLevelWidgets();
    for (QWidget *popup : topLevels) {
        if (popup->isVisible() && popup->windowType() == Qt::Popup && popup->parentWidget()
            && popup->parentWidget()->window() == m_window.get())
            painter.drawPixmap(popup->mapToGlobal(QPoint(0, 0)) - origin, popup->grab());
    }
    return image;
}

} // namespace kovena::screenshots
