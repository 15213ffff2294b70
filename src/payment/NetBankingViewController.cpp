#include "payment/NetBankingViewController.h"

#include "ui_NetBankingViewController.h"

#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace kovena {

NetBankingViewController::NetBankingViewController(QWidget *parent)
    : PaymentScreen(parent)
    , ui(std::make_unique<Ui::NetBankingViewController>())
{
    ui->setupUi(this);
    connect(ui->btnCancel, &QPushButton::clicked, this, &PaymentScreen::cancelTxn);
}

NetBankingViewController::~NetBankingViewController() = default;

void NetBankingViewController::viewDidLoad()
{
    PaymentScreen::viewDidLoad();
    ui->lbAmount->setText(u"\u20B9 "_s + amount);
    ui->lbOrderId->setText(merchantTransactionRefNumber.value_or(QString()));
    ui->lbCollectorId->setText(collectorId.value_or(QString()));
    // A mode chosen by the merchant has its Cancel in the navigation bar.
    ui->btnCancel->setVisible(!isPaymentModeAvail);
    setNavButton();
}

} // namespace kovena
