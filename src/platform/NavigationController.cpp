#include "platform/NavigationController.h"

#include "platform/Dispatch.h"
#include "platform/Logging.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPainter>
#include <QPixmap>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace kovena {

namespace {

// A left-pointing chevron for the back button, drawn at twice its on-screen size.
QIcon backChevron(const QColor &colour)
{
    constexpr qreal scale = 2.0;
    QPixmap pixmap(QSize(16, 16) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(colour, 2.0);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter.setPen(pen);
    const QPointF points[] = { { 10.5, 2.5 }, { 5, 8 }, { 10.5, 13.5 } };
    painter.drawPolyline(points, 3);
    return QIcon(pixmap);
}

// Height of the bar: a comfortable target for a finger.
constexpr int kBarHeight = 52;

} // namespace

NavigationController::NavigationController(QWidget *parent)
    : ViewController(parent)
{
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    m_bar = new QWidget(this);
    m_bar->setObjectName(QStringLiteral("navBar"));
    m_bar->setAttribute(Qt::WA_StyledBackground);
    m_bar->setFixedHeight(kBarHeight);
    auto *barLayout = new QHBoxLayout(m_bar);
    barLayout->setContentsMargins(8, 6, 12, 6);
    barLayout->setSpacing(8);
    m_backButton = new QPushButton(tr("Back"), m_bar);
    m_backButton->setObjectName(QStringLiteral("navBackButton"));
    m_backButton->setFlat(true);
    m_backButton->setIcon(backChevron(QColor(0x39, 0x7B, 0x9E)));
    m_backButton->setCursor(Qt::PointingHandCursor);
    m_backButton->setAccessibleName(tr("Back"));
    m_backButton->setAccessibleDescription(tr("Returns to the previous screen"));
    m_titleLabel = new QLabel(m_bar);
    m_titleLabel->setObjectName(QStringLiteral("navTitle"));
    m_titleLabel->setAlignment(Qt::AlignCenter);
    m_rightButton = new QPushButton(m_bar);
    m_rightButton->setObjectName(QStringLiteral("navRightButton"));
    m_rightButton->setCursor(Qt::PointingHandCursor);
    barLayout->addWidget(m_backButton);
    // The title stays centred whichever of the two buttons shows.
    barLayout->addWidget(m_titleLabel, 1);
    barLayout->addWidget(m_rightButton);
    outer->addWidget(m_bar);

    auto *stackArea = new QWidget(this);
    stackArea->setObjectName(QStringLiteral("navStackArea"));
    m_stackLayout = new QStackedLayout(stackArea);
    m_stackLayout->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(stackArea, 1);

    connect(m_backButton, &QPushButton::clicked, this, [this] { popViewController(true); });
    connect(m_rightButton, &QPushButton::clicked, this, [this] {
        // The action is looked up at click time: the top screen may have changed its item.
        ViewController *top = topViewController();
        if (!top || !top->navigationItem().rightBarButtonItem)
            return;
        const auto action = top->navigationItem().rightBarButtonItem->action;
        if (action)
            action();
    });
    refreshNavigationBar();
}

void NavigationController::setViewControllers(const QList<ViewController *> &stack)
{
    QList<QPointer<ViewController>> next;
    for (ViewController *vc : stack) {
        if (!vc)
            continue;
        bool duplicate = false;
        for (const auto &p : next)
            duplicate = duplicate || p == vc;
        if (duplicate) {
            qCWarning(lcFlow) << "a screen appears twice in the new stack; keeping the first";
            continue;
        }
        next.append(vc);
    }
    // Screens dropped from the stack are released, except the one on display: settle() lets it
    // disappear first.
    for (const auto &old : std::as_const(m_stack)) {
        if (old && !next.contains(old) && old != m_shownTop) {
            m_stackLayout->removeWidget(old);
            old->m_navigationController = nullptr;
            old->hide();
            old->deleteLater();
        }
    }
    for (const auto &vc : std::as_const(next)) {
        vc->m_navigationController = this;
        if (m_stackLayout->indexOf(vc) < 0)
            m_stackLayout->addWidget(vc);
    }
    m_stack = next;
    if (m_visible)
        settle(false);
    else
        refreshNavigationBar();
}

QList<ViewController *> NavigationController::viewControllers() const
{
    QList<ViewController *> out;
    for (const auto &vc : m_stack)
        if (vc)
            out.append(vc);
    return out;
}

ViewController *NavigationController::topViewController() const
{
    for (auto it = m_stack.crbegin(); it != m_stack.crend(); ++it)
        if (*it)
            return *it;
    return nullptr;
}

void NavigationController::pushViewController(ViewController *vc, bool animated)
{
    if (!vc)
        return;
    for (const auto &p : std::as_const(m_stack)) {
        if (p == vc) {
            qCWarning(lcFlow) << "push of a screen that is already on the stack ignored";
            return;
        }
    }
    vc->m_navigationController = this;
    m_stackLayout->addWidget(vc);
    m_stack.append(vc);
    if (m_visible)
        settle(animated);
    else
        refreshNavigationBar();
}

ViewController *NavigationController::popViewController(bool animated)
{
    if (viewControllers().size() < 2)
        return nullptr;
    ViewController *popped = topViewController();
    m_stack.removeAll(QPointer<ViewController>(popped));
    if (m_visible && popped == m_shownTop) {
        settle(animated); // the popped screen disappears there and is released
    } else {
        m_stackLayout->removeWidget(popped);
        popped->m_navigationController = nullptr;
        popped->hide();
        popped->deleteLater();
        if (m_visible)
            settle(animated);
        else
            refreshNavigationBar();
    }
    return popped;
}

void NavigationController::addTransition(const Transition &transition)
{
    m_pendingTransition = transition;
}

void NavigationController::appear()
{
    if (m_visible)
        return;
    m_visible = true;
    viewWillAppear(false);
    settle(false);
    viewDidAppear(false);
}

void NavigationController::disappear()
{
    if (!m_visible)
        return;
    viewWillDisappear(false);
    m_visible = false;
    if (ViewController *shown = m_shownTop) {
        shown->viewWillDisappear(false);
        shown->viewDidDisappear(false);
    }
    m_shownTop = nullptr;
    viewDidDisappear(false);
}

void NavigationController::settle(bool animated)
{
    // Screens may push or pop from their lifecycle calls; the outermost call keeps going
    // until the top no longer changes.
    if (m_settling)
        return;
    m_settling = true;
    for (;;) {
        ViewController *top = topViewController();
        if (top && !top->isViewLoaded()) {
            top->loadViewIfNeeded();
            continue;
        }
        if (top == m_shownTop)
            break;

        QPointer<ViewController> leaving = m_shownTop;
        const bool removed = leaving && !m_stack.contains(leaving);
        if (leaving) {
            leaving->m_movingFromParent = removed;
            leaving->viewWillDisappear(animated);
        }
        if (top)
            top->viewWillAppear(animated);
        if (top != topViewController()) {
            // viewWillAppear changed the stack: the screen that was shown stays the one leaving.
            if (leaving)
                leaving->m_movingFromParent = false;
            continue;
        }
        if (top) {
            m_stackLayout->setCurrentWidget(top);
            top->show();
        }
        m_shownTop = top;
        if (top)
            playTransition(top);
        refreshNavigationBar();
        if (leaving) {
            leaving->viewDidDisappear(animated);
            leaving->m_movingFromParent = false;
            if (removed) {
                m_stackLayout->removeWidget(leaving);
                leaving->m_navigationController = nullptr;
                leaving->hide();
                leaving->deleteLater();
            }
        }
        if (top) {
            top->viewDidAppear(animated);
            Q_EMIT didShowViewController(top);
        }
    }
    m_settling = false;
    refreshNavigationBar();
}

void NavigationController::playTransition(QWidget *incoming)
{
    if (!m_pendingTransition)
        return;
    const Transition t = *m_pendingTransition;
    m_pendingTransition.reset();
    m_lastTransition = t;
    if (t.type != QLatin1String("moveIn") || t.subtype != QLatin1String("fromTop") || t.duration <= 0)
        return;
    // Purely visual: the stack and the lifecycle calls already reflect the push.
    const QPoint end = incoming->pos();
    const int height = incoming->height() > 0 ? incoming->height() : m_stackLayout->geometry().height();
    auto *animation = new QPropertyAnimation(incoming, "pos", incoming);
    animation->setDuration(static_cast<int>(t.duration * 1000.0));
    animation->setStartValue(QPoint(end.x(), end.y() - height));
    animation->setEndValue(end);
    animation->setEasingCurve(QEasingCurve::OutCubic);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void NavigationController::refreshNavigationBar()
{
    ViewController *top = topViewController();
    if (!top) {
        m_backButton->hide();
        m_titleLabel->clear();
        m_rightButton->hide();
        return;
    }
    const NavigationItem &item = top->navigationItem();
    const bool canPop = viewControllers().size() > 1;
    m_backButton->setVisible(canPop && !item.hidesBackButton && item.hasBackItem);
    m_titleLabel->setText(item.title);
    // A bar with nothing to show gives its room to the screen.
    m_bar->setVisible(!m_backButton->isHidden() || !item.title.isEmpty() || item.rightBarButtonItem);
    if (item.rightBarButtonItem) {
        const BarButtonItem &button = *item.rightBarButtonItem;
        m_rightButton->setText(button.title);
        m_rightButton->setAccessibleName(button.title);
        m_rightButton->setAccessibleDescription(button.accessibleDescription);
        const QColor bg = button.background;
        // A widget's own style sheet makes it stop taking the family from its parent: keep it.
        QFont font = m_rightButton->font();
        font.setFamily(font.family());
        m_rightButton->setFont(font);
        m_rightButton->setStyleSheet(bg.isValid()
                ? QStringLiteral("QPushButton { background-color: %1; } QPushButton:pressed { "
                                 "background-color: %2; }")
                      .arg(bg.name(QColor::HexArgb), bg.darker(120).name(QColor::HexArgb))
                : QString());
        m_rightButton->show();
    } else {
        m_rightButton->hide();
    }
    // Tab runs through the screen first; the bar's right button (its Cancel) comes last, after
    // the screen's proceed button. The back button keeps its place before the screen.
    // Disabled controls count: a proceed button enabled later must still come before Cancel.
    QWidget *last = nullptr;
    for (QWidget *w = top->nextInFocusChain(); w && w != top; w = w->nextInFocusChain()) {
        if (top->isAncestorOf(w) && w->isVisibleTo(top) && (w->focusPolicy() & Qt::TabFocus))
            last = w;
    }
    if (last)
        QWidget::setTabOrder(last, m_rightButton);
}

namespace {

// Remembers the root installed in a window and keeps a plain window's root filling it.
class RootHolder : public QObject
{
public:
    explicit RootHolder(QWidget *window)
        : QObject(window)
        , m_window(window)
    {
        setObjectName(QStringLiteral("kovenaRootHolder"));
        window->installEventFilter(this);
    }

    static RootHolder *find(QWidget *window)
    {
        return window
            ? window->findChild<RootHolder *>(QStringLiteral("kovenaRootHolder"), Qt::FindDirectChildrenOnly)
            : nullptr;
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_window)
            return false;
        if (event->type() == QEvent::Resize && root && !qobject_cast<QMainWindow *>(m_window)
            && root->parentWidget() == m_window)
            root->setGeometry(m_window->rect());
        if (event->type() == QEvent::Show && m_loadWhenShown) {
            m_loadWhenShown = false;
            loadRootSoon();
        }
        return false;
    }

    // The root loads on the next turn of the main queue, as views load in the next layout pass:
    // whatever the caller stores right after installing it is visible to the first screens. A
    // window that is not on screen then shows nothing, so nothing loads until it is shown: a
    // flow started there makes no request and reports nothing before the customer can see it.
    void loadRootSoon()
    {
        QPointer<RootHolder> self(this);
        QPointer<ViewController> vc(root);
        dispatch::main().async([self, vc] {
            if (!self || !vc || self->root != vc)
                return;
            if (!self->m_window->isVisible()) {
                self->m_loadWhenShown = true;
                return;
            }
            vc->loadViewIfNeeded();
            if (auto *nav = qobject_cast<NavigationController *>(vc.data())) {
                nav->appear();
            } else {
                vc->viewWillAppear(false);
                vc->viewDidAppear(false);
            }
        });
    }

    QPointer<ViewController> root;

private:
    QWidget *m_window;
    bool m_loadWhenShown = false;
};

void releaseRoot(ViewController *old)
{
    if (!old)
        return;
    if (auto *nav = qobject_cast<NavigationController *>(old))
        nav->disappear();
    old->hide();
    old->deleteLater();
}

} // namespace

void setRootViewController(QWidget *widget, ViewController *vc)
{
    if (!widget || !vc) {
        qCWarning(lcFlow) << "setRootViewController needs a window and a screen";
        return;
    }
    QWidget *window = widget->window();
    RootHolder *holder = RootHolder::find(window);
    if (!holder)
        holder = new RootHolder(window);
    QPointer<ViewController> previous = holder->root;
    if (previous == vc)
        return;

    if (auto *mainWindow = qobject_cast<QMainWindow *>(window)) {
        QWidget *central = mainWindow->takeCentralWidget();
        if (central && central != previous) {
            // The merchant's own content: kept alive, hidden, still owned by the window.
            central->setParent(mainWindow);
            central->hide();
        }
        mainWindow->setCentralWidget(vc);
    } else {
        const auto children = window->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
        for (QWidget *child : children)
            if (child != vc && child != previous && !child->isWindow())
                child->hide();
        vc->setParent(window);
        vc->setGeometry(window->rect());
    }
    holder->root = vc;
    vc->show();
    vc->raise();
    releaseRoot(previous);
    holder->loadRootSoon();
}

ViewController *rootViewController(QWidget *window)
{
    RootHolder *holder = window ? RootHolder::find(window->window()) : nullptr;
    return holder ? holder->root.data() : nullptr;
}

} // namespace kovena
