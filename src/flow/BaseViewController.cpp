#include "flow/BaseViewController.h"

#include "flow/MainKovena.h"
#include "flow/Theme.h"
#include "flow/Toast.h"
#include "platform/Dispatch.h"
#include "platform/TextField.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QInputMethod>
#include <QLayout>
#include <QPainter>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

// The scenes name the layout of their form "mainLayout"; a screen without one (the bank page's
// browser) takes the whole view.
QLayout *formLayout(QWidget *view)
{
    QLayout *layout = view->layout();
    return layout && layout->objectName() == u"mainLayout" ? layout : nullptr;
}

} // namespace

BaseViewController::BaseViewController(QWidget *parent)
    : ViewController(parent)
{
    // Every scene built on this inherits the library's font unless it sets its own.
    setFont(kovenaFont(14));
}

QRect BaseViewController::columnRect() const
{
    if (!formLayout(const_cast<BaseViewController *>(this)) || width() <= kColumnWidth)
        return rect();
    return QRect((width() - kColumnWidth) / 2, 0, kColumnWidth, height());
}

void BaseViewController::resizeEvent(QResizeEvent *event)
{
    ViewController::resizeEvent(event);
    QLayout *layout = formLayout(this);
    if (!layout)
        return;
    const QMargins margins = layout->contentsMargins();
    const int side = columnRect().left() + kColumnMargin;
    if (margins.left() != side || margins.right() != side)
        layout->setContentsMargins(side, margins.top(), side, margins.bottom());
}

void BaseViewController::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    const QRect column = columnRect();
    if (column == rect()) {
        painter.fillRect(rect(), Qt::white);
        return;
    }
    // Wider than a phone: the form sits on a white sheet in the middle of a light surround.
    painter.fillRect(rect(), theme::kSurround);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xE1, 0xE7, 0xEC), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(column).adjusted(0.5, 16.5, -0.5, -16.5), 16, 16);
}

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
