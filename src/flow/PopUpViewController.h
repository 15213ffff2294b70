#pragma once

#include "platform/ViewController.h"

#include <memory>

namespace Ui {
class PopUpViewController;
}

namespace kovena {

// Tells the customer to approve the UPI collect request in the bank's app.
class PopUpViewController : public ViewController
{
    Q_OBJECT

public:
    explicit PopUpViewController(QWidget *parent = nullptr);
    ~PopUpViewController() override;

    void viewDidLoad() override;

private:
    std::unique_ptr<Ui::PopUpViewController> ui;
};

} // namespace kovena
