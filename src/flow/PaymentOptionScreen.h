#pragma once

#include "flow/BaseViewController.h"
#include "flow/CheckParams.h"

#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

namespace kovena {

class PaymentScreen;
class TransactionStatus;

// What both payment option screens share: the checkout fields they receive, their validation,
// the way out with status -1, and handing the fields on to the chosen payment screen.
class PaymentOptionScreen : public BaseViewController, public CheckParamsTarget
{
    Q_OBJECT

public:
    explicit PaymentOptionScreen(QWidget *parent = nullptr);

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

    void checkParams(const std::optional<QString> &amount,
        const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
        const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
        const std::optional<QString> &customerEmail);

    // Leaves the checkout with status -1 ("Cancelled"), without asking.
    void back();

    // Reports an outcome the library decided itself; the record passed in is ignored.
    void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status);
    void btnBack(int status) override;
    void showToast(const QString &message) override;

protected:
    // Validates the screen's own copies of the checkout fields.
    void checkOwnParams();
    // The merchant's name, or the application's when the merchant gave none.
    QString merchantName() const;
    // True for the segues that lead to a payment screen.
    static bool isPaymentSegue(const QString &identifier);
    // Copies amount, order number, merchant (and, when asked, collector id) into `next`, which
    // must be a payment screen.
    void handOver(QWidget *next, bool withCollectorId) const;
};

} // namespace kovena
