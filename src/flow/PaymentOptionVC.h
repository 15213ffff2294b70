#pragma once

#include "flow/PaymentOptionScreen.h"

#include <QLocale>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class QLabel;
class QPushButton;

namespace Ui {
class PaymentOptionVC;
}

namespace kovena {

// The payment option screen the flow root opens: shows the amount, order number and merchant
// name, validates the checkout and routes at once to the screen of the merchant's payment mode.
class PaymentOptionVC : public PaymentOptionScreen
{
    Q_OBJECT

public:
    explicit PaymentOptionVC(QWidget *parent = nullptr);
    ~PaymentOptionVC() override;

    QLocale locale; // the device's locale when the screen was created
    QString symbol;

    void viewDidLoad() override;
    void prepare(const StoryboardSegue &segue, QObject *sender) override;

    // Leaves the checkout with status -1 ("Cancelled"), without asking.
    void cancelButton();

    QLabel *lbAmount() const;
    QLabel *lbOrderId() const;
    QLabel *lbTitleAppName() const;
    QPushButton *UPILabel() const;

private:
    void routeByPaymentMode(const QString &mode);

    Ui::PaymentOptionVC *ui;
};

} // namespace kovena
