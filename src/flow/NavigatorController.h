#pragma once

#include "platform/NavigationController.h"
#include "sdk/CheckoutParams.h"

namespace kovena {

// The library's navigation stack, installed as the merchant window's root. Holds the checkout
// and hands it to the first screen when it loads.
class NavigatorController : public NavigationController
{
    Q_OBJECT

public:
    explicit NavigatorController(QWidget *parent = nullptr);

    CheckoutParams checkoutParams;

    void viewDidLoad() override;
};

} // namespace kovena
