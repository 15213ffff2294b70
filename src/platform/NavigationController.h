#pragma once

#include "platform/ViewController.h"

#include <QList>
#include <QString>

#include <optional>

class QPushButton;
class QLabel;
class QStackedLayout;

namespace kovena {

// A layer transition, as a screen asks for it before a push without the standard animation.
struct Transition
{
    double duration = 0.0; // seconds
    QString type; // "moveIn"
    QString subtype; // "fromTop"
};

// A stack of screens under a navigation bar, with push and pop. Calls the lifecycle methods
// at the moments the phone platform does: a pushed screen loads (viewDidLoad) when it is
// pushed onto a visible stack, or when the stack first appears; appearance calls go to the
// screen that leaves the top and the one that reaches it.
class NavigationController : public ViewController
{
    Q_OBJECT

public:
    explicit NavigationController(QWidget *parent = nullptr);

    void setViewControllers(const QList<ViewController *> &stack); // does not load them
    QList<ViewController *> viewControllers() const;
    ViewController *topViewController() const;

    void pushViewController(ViewController *vc, bool animated);
    ViewController *popViewController(bool animated);

    // Adds a transition to the view's layer: the next push or pop plays it.
    void addTransition(const Transition &transition);
    // The transition most recently played (tests check its parameters).
    std::optional<Transition> lastTransition() const { return m_lastTransition; }

    // Called by the window root when this controller becomes or stops being the root.
    void appear();
    void disappear();

    QPushButton *backButton() const { return m_backButton; } // object name "navBackButton"
    QPushButton *rightButton() const { return m_rightButton; } // object name "navRightButton"
    void refreshNavigationBar();

Q_SIGNALS:
    // Emitted after a screen reached the top and received viewDidAppear.
    void didShowViewController(kovena::ViewController *vc);

private:
    void settle(bool animated);
    void playTransition(QWidget *incoming);

    QList<QPointer<ViewController>> m_stack;
    QPointer<ViewController> m_shownTop;
    bool m_visible = false;
    bool m_settling = false;
    std::optional<Transition> m_pendingTransition;
    std::optional<Transition> m_lastTransition;
    QStackedLayout *m_stackLayout = nullptr;
    QWidget *m_bar = nullptr;
    QPushButton *m_backButton = nullptr;
    QPushButton *m_rightButton = nullptr;
    QLabel *m_titleLabel = nullptr;
};

// Makes `vc` the root of `window`'s content, replacing what was shown. The widgets that were
// shown are hidden but kept (never deleted); a previous root installed here is released. The root
// loads on the next turn of the main queue, or, while the window is not shown, once it is.
void setRootViewController(QWidget *window, ViewController *vc);
// The root installed by setRootViewController, or nullptr.
ViewController *rootViewController(QWidget *window);

} // namespace kovena
