#include "platform/ViewController.h"

#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>

namespace kovena {
namespace {

// Keeps a presented screen covering its host as the host is resized.
class FillParentFilter : public QObject
{
public:
    FillParentFilter(QWidget *host, QWidget *overlay)
        : QObject(overlay)
        , m_overlay(overlay)
    {
        host->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Resize && watched == m_overlay->parentWidget())
            m_overlay->setGeometry(m_overlay->parentWidget()->rect());
        return false;
    }

private:
    QWidget *m_overlay;
};

// The widget a presentation covers: the window root when this screen lives under it (so the
// presentation goes away with the root), else the top-level window itself.
QWidget *presentationHost(ViewController *presenter)
{
    QWidget *window = presenter->window();
    ViewController *root = rootViewController(window);
    if (root && (root == presenter || root->isAncestorOf(presenter)))
        return root;
    return window;
}

void callAppear(ViewController *vc, bool animated)
{
    if (auto *nav = qobject_cast<NavigationController *>(vc)) {
        nav->appear();
        return;
    }
    vc->viewWillAppear(animated);
    vc->viewDidAppear(animated);
}

void callDisappear(ViewController *vc, bool animated)
{
    if (auto *nav = qobject_cast<NavigationController *>(vc)) {
        nav->disappear();
        return;
    }
    vc->viewWillDisappear(animated);
    vc->viewDidDisappear(animated);
}

} // namespace

QList<QWidget *> tabStopsOf(QWidget *screen)
{
    QList<QWidget *> stops;
    for (QWidget *w = screen->nextInFocusChain(); w && w != screen; w = w->nextInFocusChain()) {
        if (screen->isAncestorOf(w) && w->isVisibleTo(screen) && w->isEnabled()
            && (w->focusPolicy() & Qt::TabFocus) && !stops.contains(w))
            stops.append(w);
    }
    return stops;
}

ViewController::ViewController(QWidget *parent)
    : QWidget(parent)
{ }

ViewController::~ViewController() = default;

void ViewController::prepare(const StoryboardSegue &segue, QObject *sender)
{
    Q_UNUSED(segue)
    Q_UNUSED(sender)
}

void ViewController::loadViewIfNeeded()
{
    if (m_viewLoaded)
        return;
    // Marked first so that a viewDidLoad which touches the view again does not recurse.
    m_viewLoaded = true;
    viewDidLoad();
}

NavigationController *ViewController::navigationController() const
{
    return m_navigationController;
}

void ViewController::updateNavigationBar()
{
    NavigationController *nav = navigationController();
    if (nav && nav->topViewController() == this)
        nav->refreshNavigationBar();
}

void ViewController::present(ViewController *vc, bool animated)
{
    if (!vc)
        return;
    if (m_presented) {
        qCWarning(lcFlow) << "a screen is already presented here; the new presentation is ignored";
        // Nobody else would ever show or release it.
        if (!vc->parent())
            vc->deleteLater();
        return;
    }
    QWidget *focused = QApplication::focusWidget();
    m_focusBeforePresenting = focused && focused->window() == window() ? focused : nullptr;
    QWidget *host = presentationHost(this);
    vc->setParent(host);
    // A screen made without a parent takes the look of the checkout it covers.
    if (!vc->testAttribute(Qt::WA_SetFont))
        vc->setFont(host->font());
    vc->setGeometry(host->rect());
    new FillParentFilter(host, vc);
    m_presented = vc;
    vc->m_presenting = this;
    vc->show();
    vc->raise();
    vc->loadViewIfNeeded();
    callAppear(vc, animated);
    // The keyboard goes to the presentation: its first control, else the screen itself.
    if (vc->m_presenting == this) {
        const QList<QWidget *> stops = tabStopsOf(vc);
        if (!stops.isEmpty()) {
            stops.first()->setFocus(Qt::OtherFocusReason);
        } else {
            // Controls a screen adds to its layout while loading show on the next turn of the
            // event loop: the keyboard moves to the first of them then.
            vc->setFocus(Qt::OtherFocusReason);
            QTimer::singleShot(0, vc, [vc] {
                const QList<QWidget *> later = tabStopsOf(vc);
                if (vc->m_presenting && QApplication::focusWidget() == vc && !later.isEmpty())
                    later.first()->setFocus(Qt::OtherFocusReason);
            });
        }
    }
}

void ViewController::dismiss(bool animated)
{
    ViewController *target = m_presented;
    if (!target && m_presenting)
        target = this;
    if (!target) {
        NavigationController *nav = navigationController();
        if (nav && nav->presentingViewController())
            target = nav;
    }
    if (!target)
        return;

    // Whatever the dismissed screen presented goes with it.
    if (target->m_presented)
        target->dismiss(animated);
    callDisappear(target, animated);
    QPointer<ViewController> presenter = target->m_presenting.data();
    if (presenter)
        presenter->m_presented = nullptr;
    target->m_presenting = nullptr;
    target->hide();
    target->deleteLater();
    if (!presenter)
        return;
    if (QWidget *previous = presenter->m_focusBeforePresenting; previous && previous->isVisible())
        previous->setFocus(Qt::OtherFocusReason);
    presenter->m_focusBeforePresenting = nullptr;
    Q_EMIT presenter->presentedViewControllerDismissed();
}

bool ViewController::focusNextPrevChild(bool next)
{
    if (!m_presenting)
        return QWidget::focusNextPrevChild(next);
    const QList<QWidget *> stops = tabStopsOf(this);
    if (stops.isEmpty())
        return true; // nothing to move to; the keyboard stays on the presentation
    const qsizetype at = stops.indexOf(QApplication::focusWidget());
    qsizetype to = 0;
    if (at < 0)
        to = next ? 0 : stops.size() - 1;
    else
        to = (at + (next ? 1 : stops.size() - 1)) % stops.size();
    stops.at(to)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void ViewController::performSegue(const QString &identifier, QObject *sender)
{
    if (!m_storyboard)
        fatalError(QStringLiteral("performSegue \"%1\": the screen does not come from a storyboard")
                       .arg(identifier)
                       .toUtf8()
                       .constData());
    m_storyboard->performSegue(this, identifier, sender);
}

} // namespace kovena
