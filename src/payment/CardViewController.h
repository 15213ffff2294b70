#pragma once

#include "payment/PaymentScreen.h"

#include <memory>

namespace Ui {
class CardViewController;
}

namespace kovena {

// The card payment screen: shows the checkout it was given and lets the customer cancel it.
class CardViewController : public PaymentScreen
{
    Q_OBJECT

public:
    explicit CardViewController(QWidget *parent = nullptr);
    ~CardViewController() override;

    void viewDidLoad() override;

private:
    std::unique_ptr<Ui::CardViewController> ui;
};

} // namespace kovena
