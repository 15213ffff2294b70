#pragma once

#include <QColor>
#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <optional>
#include <utility>

namespace kovena {

class NavigationController;
class Storyboard;
class ViewController;

// A button of the navigation bar.
struct BarButtonItem
{
    BarButtonItem(
        QString title, QColor background, std::function<void()> action, QString accessibleDescription = {})
        : title(std::move(title))
        , background(std::move(background))
        , action(std::move(action))
        , accessibleDescription(std::move(accessibleDescription))
    { }

    QString title;
    QColor background; // invalid: the bar's default look
    std::function<void()> action; // runs on touch-up
    QString accessibleDescription; // what pressing it does, for screen readers
};

// What a screen shows in the navigation bar while it is on top.
struct NavigationItem
{
    QString title;
    bool hidesBackButton = false;
    bool hasBackItem = true; // false once the screen removed or replaced its back item
    std::optional<BarButtonItem> rightBarButtonItem;
};

struct StoryboardSegue
{
    QString identifier;
    ViewController *source = nullptr;
    ViewController *destination = nullptr;
};

// A screen: a widget with the phone platform's view-controller lifecycle. Its content is built
// in viewDidLoad(), which runs once, the first time the screen is about to be shown (or when
// loadViewIfNeeded() is called). The navigation controller calls the appearance methods.
class ViewController : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString storyboardIdentifier READ storyboardIdentifier CONSTANT)

public:
    explicit ViewController(QWidget *parent = nullptr);
    ~ViewController() override;

    virtual void viewDidLoad() { }
    virtual void viewWillAppear(bool animated) { Q_UNUSED(animated) }
    virtual void viewDidAppear(bool animated) { Q_UNUSED(animated) }
    virtual void viewWillDisappear(bool animated) { Q_UNUSED(animated) }
    virtual void viewDidDisappear(bool animated) { Q_UNUSED(animated) }
    // Hands fields to the destination of a segue before it is shown.
    virtual void prepare(const StoryboardSegue &segue, QObject *sender);

    void loadViewIfNeeded();
    bool isViewLoaded() const { return m_viewLoaded; }
    QWidget *view() { return this; }

    NavigationController *navigationController() const;
    NavigationItem &navigationItem() { return m_navigationItem; }
    // Tells the navigation controller that navigationItem() changed.
    void updateNavigationBar();

    // True during the disappearance calls of a screen that is being popped.
    bool isMovingFromParent() const { return m_movingFromParent; }

    // Presents `vc` over this screen's window content, modally: the keyboard moves into it and
    // Tab stays inside it until it is dismissed. Only one presentation at a time: while one is
    // shown, another is refused, and a refused screen that nobody owns is released.
    void present(ViewController *vc, bool animated);
    // Dismisses the screen this one presented; if none, the presentation this one belongs to;
    // if this screen was not presented at all, nothing happens (it stays where it is).
    void dismiss(bool animated);
    ViewController *presentedViewController() const { return m_presented; }
    ViewController *presentingViewController() const { return m_presenting; }

    Storyboard *storyboard() const { return m_storyboard; }

    QString storyboardIdentifier() const { return m_storyboardIdentifier; }
    // Runs the storyboard segue `identifier` from this screen (prepare, then push).
    void performSegue(const QString &identifier, QObject *sender);

Q_SIGNALS:
    // Emitted on the presenting screen once the screen it presented has been dismissed.
    void presentedViewControllerDismissed();

protected:
    // A presented screen keeps Tab and Shift+Tab among its own controls.
    bool focusNextPrevChild(bool next) override;

private:
    friend class NavigationController;
    friend class Storyboard;

    bool m_viewLoaded = false;
    bool m_movingFromParent = false;
    NavigationItem m_navigationItem;
    QPointer<NavigationController> m_navigationController;
    QPointer<ViewController> m_presented;
    QPointer<ViewController> m_presenting;
    QPointer<QWidget> m_focusBeforePresenting; // gets the keyboard back after a dismissal
    Storyboard *m_storyboard = nullptr;
    QString m_storyboardIdentifier;
};

// The controls inside `screen` that Tab reaches, in the window's focus order.
QList<QWidget *> tabStopsOf(QWidget *screen);

} // namespace kovena
