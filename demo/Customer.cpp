#include "Customer.h"

#include "platform/AlertController.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QWidget>

namespace kovena::demo::customer {
namespace {

// The key a person presses for a character on a US keyboard, and whether Shift is held.
std::pair<int, Qt::KeyboardModifiers> keyFor(QChar c)
{
    if (c >= u'a' && c <= u'z')
        return { Qt::Key_A + (c.unicode() - u'a'), Qt::NoModifier };
    if (c >= u'A' && c <= u'Z')
        return { Qt::Key_A + (c.unicode() - u'A'), Qt::ShiftModifier };
    if (c >= u'0' && c <= u'9')
        return { Qt::Key_0 + (c.unicode() - u'0'), Qt::NoModifier };
    switch (c.unicode()) {
    case u'@':
        return { Qt::Key_At, Qt::ShiftModifier };
    case u'_':
        return { Qt::Key_Underscore, Qt::ShiftModifier };
    case u'#':
        return { Qt::Key_NumberSign, Qt::ShiftModifier };
    case u' ':
        return { Qt::Key_Space, Qt::NoModifier };
    default:
        // Latin-1 punctuation has key codes equal to its code point.
        return { c.unicode() < 0x100 ? int(c.unicode()) : int(Qt::Key_unknown), Qt::NoModifier };
    }
}

void sendMouse(QWidget *widget, QEvent::Type type, Qt::MouseButtons buttons)
{
    const QPointF local = QRectF(widget->rect()).center();
    QMouseEvent event(type, local, widget->mapToGlobal(local), Qt::LeftButton, buttons, Qt::NoModifier,
        QPointingDevice::primaryPointingDevice());
    QCoreApplication::sendEvent(widget, &event);
}

} // namespace

QWidget *visibleWidget(const QString &objectName)
{
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (widget->objectName() == objectName && widget->isVisible())
            return widget;
    }
    return nullptr;
}

QAbstractButton *alertButton(const QString &title)
{
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        auto *alert = qobject_cast<AlertController *>(widget);
        if (!alert || !alert->isVisible())
            continue;
        const auto buttons = alert->findChildren<QAbstractButton *>();
        for (QAbstractButton *button : buttons) {
            if (button->text() == title && button->isVisible())
                return button;
        }
    }
    return nullptr;
}

void tap(QWidget *widget)
{
    sendMouse(widget, QEvent::MouseButtonPress, Qt::LeftButton);
    sendMouse(widget, QEvent::MouseButtonRelease, Qt::NoButton);
}

void typeCharacter(QWidget *widget, QChar character)
{
    const auto [key, modifiers] = keyFor(character);
    const QString text(character);
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(widget, &release);
}

void pressKey(QWidget *widget, Qt::Key key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &release);
}

bool loaderVisible()
{
    return visibleWidget(QStringLiteral("loaderContainer")) != nullptr;
}

} // namespace kovena::demo::customer
