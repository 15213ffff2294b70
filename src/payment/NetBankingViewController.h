#pragma once

#include "payment/PaymentScreen.h"

#include <memory>

namespace Ui {
class NetBankingViewController;
}

namespace kovena {

// The net banking screen: shows the checkout it was given and lets the customer cancel it.
class NetBankingViewController : public PaymentScreen
{
    Q_OBJECT

public:
    explicit NetBankingViewController(QWidget *parent = nullptr);
    ~NetBankingViewController() override;

    void viewDidLoad() override;

private:
    std::unique_ptr<Ui::NetBankingViewController> ui;
};

} // namespace kovena
