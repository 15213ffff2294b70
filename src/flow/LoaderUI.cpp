#include "flow/LoaderUI.h"

#include <QColor>
#include <QPainter>
#include <QTimer>
#include <QWidget>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

// A plain view with a background colour and rounded corners. The look is also published as the
// dynamic properties "backgroundColor" and "cornerRadius".
class RoundedView : public QWidget
{
public:
    RoundedView(const QColor &background, qreal radius)
    {
        setProperty("backgroundColor", background);
        setProperty("cornerRadius", radius);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(property("backgroundColor").value<QColor>());
        const qreal radius = property("cornerRadius").toReal();
        painter.drawRoundedRect(QRectF(rect()), radius, radius);
    }
};

// A white spinner: twelve spokes whose brightness turns while it animates. Hidden when stopped.
class ActivityIndicatorView : public QWidget
{
public:
    ActivityIndicatorView()
    {
        m_timer.setInterval(80);
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
            m_step = (m_step + 1) % kSpokes;
            update();
        });
        hide();
    }

    void startAnimating()
    {
        m_timer.start();
        show();
    }
    void stopAnimating()
    {
        m_timer.stop();
        hide();
    }
    bool isAnimating() const { return m_timer.isActive(); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(width() / 2.0, height() / 2.0);
        const qreal outer = std::min(width(), height()) / 2.0;
        QPen pen(Qt::white);
        pen.setWidthF(outer / 5.0);
        pen.setCapStyle(Qt::RoundCap);
        for (int i = 0; i < kSpokes; ++i) {
            QColor colour(Qt::white);
            colour.setAlphaF(0.25 + 0.75 * ((i + kSpokes - m_step) % kSpokes) / (kSpokes - 1.0));
            pen.setColor(colour);
            painter.setPen(pen);
            painter.drawLine(QPointF(0, -outer * 0.45), QPointF(0, -outer * 0.9));
            painter.rotate(360.0 / kSpokes);
        }
    }

private:
    static constexpr int kSpokes = 12;
    QTimer m_timer;
    int m_step = 0;
};

ActivityIndicatorView *indicatorOf(const QPointer<QWidget> &widget)
{
    return static_cast<ActivityIndicatorView *>(widget.data());
}

} // namespace

LoaderUI::LoaderUI()
{
    // Colour components are byte values over 256, which is how the overlay has always looked.
    auto *container = new RoundedView(QColor::fromRgbF(0.99609375f, 0.99609375f, 0.99609375f, 0.3f), 0);
    container->setObjectName(u"loaderContainer"_s);
    auto *loadingView = new RoundedView(QColor::fromRgbF(0.265625f, 0.265625f, 0.265625f, 0.7f), 10);
    loadingView->setObjectName(u"loaderLoadingView"_s);
    loadingView->setParent(container);
    auto *indicator = new ActivityIndicatorView;
    indicator->setObjectName(u"loaderActivityIndicator"_s);
    indicator->setParent(loadingView);
    indicator->hide();

    m_container = container;
    m_loadingView = loadingView;
    m_activityIndicator = indicator;
}

LoaderUI::~LoaderUI()
{
    // The container may sit in a view that outlives this loader; take it out with us.
    delete m_container.data();
}

void LoaderUI::showActivityIndicator(QWidget *uiView)
{
    if (!uiView || !m_container)
        return;
    const QRect bounds = uiView->rect();
    m_container->setParent(uiView);
    m_container->setGeometry(bounds);

    const QSize loading(80, 80);
    m_loadingView->setGeometry(QRect(
        QPoint((bounds.width() - loading.width()) / 2, (bounds.height() - loading.height()) / 2), loading));
    const QSize indicator(40, 40);
    m_activityIndicator->setGeometry(
        QRect(QPoint((loading.width() - indicator.width()) / 2, (loading.height() - indicator.height()) / 2),
            indicator));

    m_loadingView->show();
    m_container->show();
    m_container->raise();
    indicatorOf(m_activityIndicator)->startAnimating();
}

void LoaderUI::hideActivityIndicator()
{
    if (!m_container)
        return;
    indicatorOf(m_activityIndicator)->stopAnimating();
    if (m_container->parentWidget()) {
        m_container->hide();
        // Leaving a screen that carries the theme's style sheet, each view is unpolished by the
        // sheet's style, which would restore palettes, fonts and sizes the sheet gave it. No rule
        // of the sheet applies to these views (they paint themselves), so that is skipped: it is
        // most of the cost of taking the overlay out, and the overlay leaves on the way to
        // telling the merchant the outcome. The next show polishes them afresh.
        for (QWidget *view : { m_container.data(), m_loadingView.data(), m_activityIndicator.data() })
            view->setAttribute(Qt::WA_StyleSheet, false);
        m_container->setParent(nullptr);
    }
}

bool LoaderUI::isAnimating() const
{
    return m_activityIndicator && indicatorOf(m_activityIndicator)->isAnimating();
}

} // namespace kovena
