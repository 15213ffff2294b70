#include "payment/CardViewController.h"

#include "ui_CardViewController.h"

namespace kovena {

CardViewController::CardViewController(QWidget *parent)
    : PaymentScreen(parent)
    , ui(std::make_unique<Ui::CardViewController>())
{
    ui->setupUi(this);
}

CardViewController::~CardViewController() = default;

void CardViewController::viewDidLoad()
{
    PaymentScreen::viewDidLoad();
    showCheckout(ui->lbAmount, ui->lbOrderId, ui->lbCollectorId, ui->btnCancel);
}

} // namespace kovena
