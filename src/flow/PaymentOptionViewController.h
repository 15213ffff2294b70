#pragma once

#include "flow/PaymentOptionScreen.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class QLabel;
class QPushButton;

namespace Ui {
class PaymentOptionViewController;
}

namespace kovena {

// The payment option screen on which the customer picks the payment mode: shows the amount,
// order number and merchant name with its initial in a circle, validates the checkout, and
// runs the segue of the chosen mode.
class PaymentOptionViewController : public PaymentOptionScreen
{
    Q_OBJECT

public:
    explicit PaymentOptionViewController(QWidget *parent = nullptr);
    ~PaymentOptionViewController() override;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void prepare(const StoryboardSegue &segue, QObject *sender) override;

    // Rounds vCircle into a circle behind the merchant's initial.
    void drawCircle();

    QLabel *lbAmount() const;
    QLabel *lbOrderId() const;
    QLabel *lbTitleAppName() const;
    QWidget *vCircle() const;
    QLabel *firstLetterInCircle() const;

private:
    void runSegue(const QString &identifier, QObject *sender);

    Ui::PaymentOptionViewController *ui;
};

} // namespace kovena
