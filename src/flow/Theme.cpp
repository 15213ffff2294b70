#include "flow/Theme.h"

#include "flow/MainKovena.h"
#include "platform/Logging.h"

#include <QAction>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace kovena::theme {

namespace {

constexpr qreal kIconScale = 2.0;
constexpr int kIconSize = 20;

} // namespace

QString styleSheet()
{
    registerKovenaResources();
    static const QString sheet = [] {
        QFile file(u":/kovena/theme/kovena.qss"_s);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            qCWarning(lcFlow) << "the screens' style sheet could not be read; the default look is used";
            return QString();
        }
        return QString::fromUtf8(file.readAll());
    }();
    return sheet;
}

void applyTo(QWidget *root)
{
    if (!root)
        return;
    root->setFont(kovenaFont(14));
    root->setStyleSheet(styleSheet());
}

void paintButtonBackground(QPushButton *button, const QColor &colour)
{
    if (!button || !colour.isValid())
        return;
    // A new style sheet re-polishes the button: screens repaint their proceed button on every
    // key, and its colour changes a few times per form at most.
    static constexpr char kPainted[] = "kovenaBackground";
    if (button->property(kPainted).value<QColor>() == colour)
        return;
    button->setProperty(kPainted, colour);
    QPalette palette = button->palette();
    palette.setColor(QPalette::All, QPalette::Button, colour);
    button->setPalette(palette);
    // A widget's own style sheet makes it stop taking the family from its parent: keep it.
    QFont font = button->font();
    font.setFamily(font.family());
    button->setFont(font);
    button->setStyleSheet(
        u"QPushButton { background-color: %1; } QPushButton:pressed { background-color: %2; }"_s.arg(
            colour.name(QColor::HexArgb), colour.darker(120).name(QColor::HexArgb)));
}

QPixmap fieldIcon(const QString &name, const QColor &colour)
{
    QPixmap pixmap(QSize(kIconSize, kIconSize) * kIconScale);
    pixmap.setDevicePixelRatio(kIconScale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(colour, 1.5);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter.setPen(pen);
    if (name == u"ic_card") {
        painter.drawRoundedRect(QRectF(2, 5, 16, 11), 2, 2);
        painter.drawLine(QPointF(2, 8.5), QPointF(18, 8.5));
        painter.drawLine(QPointF(5, 13), QPointF(9, 13));
    } else if (name == u"ic_person") {
        painter.drawEllipse(QPointF(10, 7), 3.5, 3.5);
        painter.drawArc(QRectF(4, 12, 12, 10), 0, 180 * 16);
    } else if (name == u"ic_lock") {
        painter.drawRoundedRect(QRectF(4, 9, 12, 9), 1.5, 1.5);
        painter.drawArc(QRectF(6.5, 3, 7, 11), 0, 180 * 16);
        painter.drawPoint(QPointF(10, 13.5));
    } else if (name == u"ic_calendar") {
        painter.drawRoundedRect(QRectF(3, 4, 14, 13), 1.5, 1.5);
        painter.drawLine(QPointF(3, 8), QPointF(17, 8));
        painter.drawLine(QPointF(7, 2), QPointF(7, 5));
        painter.drawLine(QPointF(13, 2), QPointF(13, 5));
    } else if (name == u"ic_phone") {
        painter.drawRoundedRect(QRectF(6, 2, 8, 16), 1.5, 1.5);
        painter.drawLine(QPointF(9, 15), QPointF(11, 15));
    } else if (name == u"ic_bank") {
        QPainterPath roof;
        roof.moveTo(3, 7.5);
        roof.lineTo(10, 3);
        roof.lineTo(17, 7.5);
        roof.closeSubpath();
        painter.drawPath(roof);
        for (const qreal x : { 6.0, 10.0, 14.0 })
            painter.drawLine(QPointF(x, 10), QPointF(x, 15));
        painter.drawLine(QPointF(3, 17.5), QPointF(17, 17.5));
    } else if (name == u"ic_chevron") {
        pen.setWidthF(2.0);
        painter.setPen(pen);
        const QPointF points[] = { { 6, 8 }, { 10, 12 }, { 14, 8 } };
        painter.drawPolyline(points, 3);
    } else {
        qCWarning(lcFlow) << "no field icon is named" << name;
        return {};
    }
    return pixmap;
}

void setLeadingIcon(QLineEdit *field, const QString &name)
{
    const QPixmap icon = fieldIcon(name);
    if (!field || icon.isNull())
        return;
    QAction *action = field->addAction(QIcon(icon), QLineEdit::LeadingPosition);
    action->setObjectName(u"leadingIcon"_s);
}

void describeAmount(QLabel *label, const QString &caption)
{
    if (label)
        label->setAccessibleName(caption + u' ' + label->text());
}

} // namespace kovena::theme
