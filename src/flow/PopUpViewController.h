#pragma once

#include "platform/ViewController.h"

#include <memory>

namespace Ui {
class PopUpViewController;
}

namespace kovena {

// Tells the customer to approve the UPI collect request in the bank's app: a panel in the
// middle of a dimmed layer that covers the whole checkout, the loader under it included.
class PopUpViewController : public ViewController
{
    Q_OBJECT

public:
    explicit PopUpViewController(QWidget *parent = nullptr);
    ~PopUpViewController() override;

    void viewDidLoad() override;

    // The dimming over what lies underneath: black at this opacity.
    static constexpr qreal kDimOpacity = 0.55;

protected:
    // A tap anywhere closes the instruction; the payment screen under it (and its Cancel)
    // stays usable while the status is polled. Escape and the panel's OK button do the same.
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    std::unique_ptr<Ui::PopUpViewController> ui;
};

} // namespace kovena
