#pragma once

#include "flow/BaseViewController.h"
#include "flow/CheckParams.h"

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

class TransactionStatus;

// The payment option screen the flow root opens: shows the amount, order number and merchant
// name, validates the checkout and routes at once to the screen of the merchant's payment mode.
class PaymentOptionVC : public BaseViewController, public CheckParamsTarget
{
    Q_OBJECT

public:
    explicit PaymentOptionVC(QWidget *parent = nullptr);
    ~PaymentOptionVC() override;

    std::optional<QString> amount = QString();
    std::optional<QString> merchantTransactionRefNumber = QString();
    std::optional<QString> accessToken = QString();
    std::optional<QString> collectorId = QString();
    std::optional<QString> customerMobNum = QString();
    std::optional<QString> customerEmail = QString();
    std::optional<QString> requestId = QString();
    std::optional<QString> paymentMode = QString();
    std::optional<QString> merchantAppName = QString();
    QPointer<QWidget> merchantVC;
    QLocale locale; // the device's locale when the screen was created
    QString symbol;

    void viewDidLoad() override;
    void prepare(const StoryboardSegue &segue, QObject *sender) override;

    void checkParams(const std::optional<QString> &amount,
        const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
        const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
        const std::optional<QString> &customerEmail);

    // Both leave the checkout with status -1 ("Cancelled"), without asking.
    void back();
    void cancelButton();

    // Reports an outcome the library decided itself; the record passed in is ignored.
    void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status);
    void btnBack(int status) override;
    void showToast(const QString &message) override;

    QLabel *lbAmount() const;
    QLabel *lbOrderId() const;
    QLabel *lbTitleAppName() const;
    QPushButton *UPILabel() const;

private:
    void routeByPaymentMode(const QString &mode);

    Ui::PaymentOptionVC *ui;
};

} // namespace kovena
