#include "payment/NetBankingViewController.h"

#include "ui_NetBankingViewController.h"

namespace kovena {

NetBankingViewController::NetBankingViewController(QWidget *parent)
    : PaymentScreen(parent)
    , ui(std::make_unique<Ui::NetBankingViewController>())
{
    ui->setupUi(this);
}

NetBankingViewController::~NetBankingViewController() = default;

void NetBankingViewController::viewDidLoad()
{
    PaymentScreen::viewDidLoad();
    showCheckout(ui->lbAmount, ui->lbOrderId, ui->lbCollectorId, ui->btnCancel);
}

} // namespace kovena
