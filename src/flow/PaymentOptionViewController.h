#pragma once

#include "flow/BaseViewController.h"
#include "flow/CheckParams.h"

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

class TransactionStatus;

// The payment option screen on which the customer picks the payment mode: shows the amount,
// order number and merchant name with its initial in a circle, validates the checkout, and
// runs the segue of the chosen mode.
class PaymentOptionViewController : public BaseViewController, public CheckParamsTarget
{
    Q_OBJECT

public:
    explicit PaymentOptionViewController(QWidget *parent = nullptr);
    ~PaymentOptionViewController() override;

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

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void prepare(const StoryboardSegue &segue, QObject *sender) override;

    void checkParams(const std::optional<QString> &amount,
        const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
        const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
        const std::optional<QString> &customerEmail);

    // Leaves the checkout with status -1 ("Cancelled"), without asking.
    void back();
    // Rounds vCircle into a circle behind the merchant's initial.
    void drawCircle();

    // Reports an outcome the library decided itself; the record passed in is ignored.
    void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status);
    void btnBack(int status) override;
    void showToast(const QString &message) override;

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
