#include "flow/BaseViewController.h"

#include "flow/Toast.h"
#include "platform/Dispatch.h"
#include "platform/TextField.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QInputMethod>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace kovena {

BaseViewController::BaseViewController(QWidget *parent)
    : ViewController(parent)
{ }

void BaseViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();
}

void BaseViewController::addDismissKeyboardTap()
{
    if (m_tapRecognizers++ == 0)
        installEventFilter(this);
}

bool BaseViewController::eventFilter(QObject *watched, QEvent *event)
{
    // A click that reaches the view itself (its background, or a child that ignores clicks)
    // is a tap: every recogniser ends editing.
    if (watched == this && event->type() == QEvent::MouseButtonRelease) {
        for (int i = 0; i < m_tapRecognizers; ++i)
            dismissKeyboard();
    }
    return ViewController::eventFilter(watched, event);
}

void BaseViewController::dismissKeyboard()
{
    QWidget *focused = QApplication::focusWidget();
    if (focused && (focused == this || isAncestorOf(focused)))
        focused->clearFocus();
    QGuiApplication::inputMethod()->hide();
}

void BaseViewController::addDoneButtonOnKeyboard()
{
    // A rebuilt bar replaces the old one on the text fields; the old one stays hidden and is
    // released with the screen, so a field never points at a deleted bar.
    auto *bar = new QToolBar(this);
    bar->setObjectName(u"doneToolbar"_s);
    bar->setMovable(false);
    bar->hide();

    auto *flexibleSpace = new QWidget(bar);
    flexibleSpace->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(flexibleSpace);

    QAction *done = bar->addAction(u"Done"_s);
    done->setObjectName(u"doneAction"_s);
    QFont doneFont = done->font();
    doneFont.setBold(true);
    done->setFont(doneFont);
    connect(done, &QAction::triggered, this, &BaseViewController::dismissKeyboard);
    bar->adjustSize();

    m_doneToolbar = bar;
    const auto fields = findChildren<TextField *>();
    for (TextField *field : fields)
        field->setInputAccessoryView(bar);
}

QToolBar *BaseViewController::doneToolbar() const
{
    return m_doneToolbar;
}

void BaseViewController::loadering(bool flag)
{
    QPointer<BaseViewController> self(this);
    dispatch::main().async([self, flag] {
        if (!self)
            return;
        if (flag)
            self->m_loader.showActivityIndicator(self);
        else
            self->m_loader.hideActivityIndicator();
    });
}

void BaseViewController::showToast(const QString &message)
{
    QPointer<BaseViewController> self(this);
    dispatch::main().async([self, message] {
        if (self)
            Toast::show(self, message);
    });
}

} // namespace kovena
