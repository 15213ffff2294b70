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

protected:
    // A tap anywhere closes the instruction; the payment screen under it (and its Cancel)
    // stays usable while the status is polled.
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    std::unique_ptr<Ui::PopUpViewController> ui;
};

} // namespace kovena
