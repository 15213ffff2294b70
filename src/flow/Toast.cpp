#include "flow/Toast.h"

#include "flow/MainKovena.h"

#include <QEasingCurve>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPropertyAnimation>
#include <QSequentialAnimationGroup>
#include <QWidget>

#include <cmath>

using namespace Qt::StringLiterals;

namespace kovena {

QLabel *Toast::show(QWidget *view, const QString &message)
{
    // Everything is set before the label joins the view, so whoever watches the view for new
    // children sees the finished toast.
    auto *label = new QLabel;
    label->setObjectName(u"kovenaToast"_s);
    const int width = view->width();
    const int height = view->height();
    label->setGeometry(static_cast<int>(std::lround(width * 0.5 - 95.0)), height - 100, 180, 35);
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(u"QLabel#kovenaToast { background-color: rgba(0, 0, 0, 153); color: white;"
                         " border-radius: 10px; }"_s);
    label->setFont(kovenaFont(12));
    label->setText(message);
    auto *opacity = new QGraphicsOpacityEffect(label);
    opacity->setOpacity(1.0);
    label->setGraphicsEffect(opacity);

    label->setParent(view);
    label->show();
    label->raise();

    auto *fade = new QSequentialAnimationGroup(label);
    fade->setObjectName(u"kovenaToastFade"_s);
    fade->addPause(kFadeDelayMs);
    auto *toTransparent = new QPropertyAnimation(opacity, "opacity", fade);
    toTransparent->setEndValue(0.0);
    toTransparent->setDuration(kFadeDurationMs);
    toTransparent->setEasingCurve(QEasingCurve::OutQuad);
    fade->addAnimation(toTransparent);
    QObject::connect(fade, &QAbstractAnimation::finished, label, [label] {
        label->hide();
        label->deleteLater();
    });
    fade->start();
    return label;
}

} // namespace kovena
