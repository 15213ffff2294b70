#pragma once

#include "api/Callbacks.h"
#include "api/DataTask.h"
#include "flow/BaseViewController.h"
#include "flow/CallbackRelay.h"

#include <QPointer>
#include <QString>

#include <memory>

namespace Ui {
class InitialViewController;
}

namespace kovena {

// The first screen of the stack: opens the payment option screen for a checkout, or runs the
// status enquiry and reports its answer to the merchant.
class InitialViewController : public BaseViewController, public TransactionStatusCallback
{
    Q_OBJECT

public:
    explicit InitialViewController(QWidget *parent = nullptr);
    ~InitialViewController() override;

    QString amount;
    QString merchantTransactionRefNumber;
    QString accessToken;
    QString collectorId;
    QString customerMobNum;
    QString customerEmail;
    QString requestId;
    QString paymentMode;
    QString merchantAppName;
    QPointer<QWidget> merchantVC;
    bool isStatusClicked = false;
    QString kovenaTxnId;
    QString orderId;

    void viewDidLoad() override;
    // Called by the API client on the session thread; the rest happens on the main queue.
    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override;
    // Hands the backend's record to the merchant; the screen stays.
    void finish(std::shared_ptr<TransactionStatus> trnasactionStatus);

private:
    void openPaymentOptions();
    void startStatusEnquiry();

    std::unique_ptr<Ui::InitialViewController> ui;
    std::shared_ptr<CallbackRelay<InitialViewController>> m_relay;
    DataTaskPtr m_task;
};

} // namespace kovena
