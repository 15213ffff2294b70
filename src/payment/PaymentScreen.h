#pragma once

#include "flow/BaseViewController.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <optional>


namespace kovena {

class TransactionStatus;

// What the card, UPI and net banking screens share: the fields the payment option screen
// hands over, the "Cancel" button with its confirmation, and the two ways to report.
class PaymentScreen : public BaseViewController
{
    Q_OBJECT

public:
    explicit PaymentScreen(QWidget *parent = nullptr);

    QString amount;
    std::optional<QString> merchantTransactionRefNumber = QString();
    std::optional<QString> collectorId = QString();
    QPointer<QWidget> merchantVC;
    bool isPaymentModeAvail = false;

    // Hides the back button and adds the right-hand "Cancel" button (when isPaymentModeAvail).
    void setNavButton();
    // Asks "Are you sure want to cancel transaction?"; "Proceed" reports -1.
    void cancelTxn();
    // Reports an outcome the library decided itself (status -1, ...), then dismisses.
    virtual void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status);
    // Reports the backend's record to the merchant; does not dismiss.
    void finish(std::shared_ptr<TransactionStatus> trnasactionStatus);
};

} // namespace kovena
