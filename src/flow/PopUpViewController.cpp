#include "flow/PopUpViewController.h"

#include "ui_PopUpViewController.h"

#include <QMouseEvent>

using namespace Qt::StringLiterals;

namespace kovena {

PopUpViewController::PopUpViewController(QWidget *parent)
    : ViewController(parent)
    , ui(std::make_unique<Ui::PopUpViewController>())
{
    ui->setupUi(this);
}

PopUpViewController::~PopUpViewController() = default;

void PopUpViewController::viewDidLoad()
{
    ViewController::viewDidLoad();
    ui->popUpText->setText(
        u"Click on the notification received on your UPI based Bank App & enter your bank MPIN"_s);
}

void PopUpViewController::mouseReleaseEvent(QMouseEvent *event)
{
    ViewController::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton)
        dismiss(true);
}

} // namespace kovena
