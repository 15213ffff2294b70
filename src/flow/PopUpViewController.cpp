#include "flow/PopUpViewController.h"

#include "ui_PopUpViewController.h"

#include "flow/MainKovena.h"
#include "flow/Theme.h"

#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

// A phone in a soft brand-coloured disc: "look at your phone's UPI app".
QPixmap approvalIcon()
{
    constexpr qreal scale = 2.0;
    constexpr int side = 48;
    QPixmap pixmap(QSize(side, side) * scale);
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xE0, 0xED, 0xF4));
    painter.drawEllipse(QRectF(0, 0, side, side));
    painter.drawPixmap(QPointF(14, 14), theme::fieldIcon(u"ic_phone"_s));
    return pixmap;
}

} // namespace

PopUpViewController::PopUpViewController(QWidget *parent)
    : ViewController(parent)
    , ui(std::make_unique<Ui::PopUpViewController>())
{
    setFont(kovenaFont(14));
    ui->setupUi(this);
    ui->popUpIcon->setPixmap(approvalIcon());
    auto *shadow = new QGraphicsDropShadowEffect(ui->popUpPanel);
    shadow->setBlurRadius(32);
    shadow->setOffset(0, 6);
    shadow->setColor(QColor(0, 0, 0, 110));
    ui->popUpPanel->setGraphicsEffect(shadow);
    connect(ui->btnPopUpOk, &QPushButton::clicked, this, [this] { dismiss(true); });
}

PopUpViewController::~PopUpViewController() = default;

void PopUpViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    ui->popUpText->setText(
        u"Click on the notification received on your UPI based Bank App & enter your bank MPIN"_s);
    ui->popUpText->setAccessibleName(ui->popUpText->text());
    setAccessibleDescription(ui->popUpText->text());
}

void PopUpViewController::mouseReleaseEvent(QMouseEvent *event)
{
    ViewController::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton)
        dismiss(true);
}

void PopUpViewController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        dismiss(true);
        return;
    }
    ViewController::keyPressEvent(event);
}

void PopUpViewController::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    QColor dim(Qt::black);
    dim.setAlphaF(kDimOpacity);
    painter.fillRect(rect(), dim);
}

} // namespace kovena
