#include "BankPagePlayer.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QVariantList>
#include <QWebEnginePage>
#include <QWebEngineView>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

void sendMouse(QWidget *target, QEvent::Type type, QPointF local, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, local, target->mapToGlobal(local), Qt::LeftButton, buttons, Qt::NoModifier,
        QPointingDevice::primaryPointingDevice());
    QCoreApplication::sendEvent(target, &event);
}

} // namespace

void BankPagePlayer::follow(QWebEngineView *view)
{
    if (!view || view == m_view)
        return;
    m_view = view;
    m_pageLoaded = false;
    m_asking = false;
    m_target.reset();
    // A page that finished loading before the view was followed counts as loaded.
    m_pageLoaded = view->page() && !view->page()->isLoading() && !view->url().isEmpty();
    connect(view, &QWebEngineView::loadStarted, this, [this] { m_pageLoaded = false; });
    connect(view, &QWebEngineView::loadFinished, this, [this, view](bool ok) {
        if (!ok || view != m_view)
            return;
        m_pageLoaded = true;
        Q_EMIT pageLoaded(view->url().toString(QUrl::FullyEncoded));
    });
}

BankPagePlayer::Press BankPagePlayer::pressElement(const QString &id)
{
    if (!hasPage())
        return Press::NotYet;
    if (m_target) {
        // The element's centre, in the page's coordinates, which are the view's at zoom 1.
        const QPointF point = *m_target;
        m_target.reset();
        QWidget *surface = m_view->focusProxy() ? m_view->focusProxy() : m_view.data();
        sendMouse(surface, QEvent::MouseButtonPress, point, Qt::LeftButton);
        sendMouse(surface, QEvent::MouseButtonRelease, point, Qt::NoButton);
        return Press::Pressed;
    }
    if (m_asking)
        return Press::NotYet;
    m_asking = true;
    const QString script = uR"((function () {
        var e = document.getElementById(%1);
        if (!e) return null;
        e.scrollIntoView({block: "center"});
        var r = e.getBoundingClientRect();
        return [r.left + r.width / 2, r.top + r.height / 2];
    })())"_s.arg(u"\""_s + id + u"\""_s);
    m_view->page()->runJavaScript(
        script, [this, guard = QPointer<BankPagePlayer>(this)](const QVariant &answer) {
            if (!guard)
                return;
            m_asking = false;
            const QVariantList point = answer.toList();
            if (point.size() == 2)
                m_target = QPointF(point.at(0).toDouble(), point.at(1).toDouble());
        });
    return Press::NotYet;
}

} // namespace kovena::demo
