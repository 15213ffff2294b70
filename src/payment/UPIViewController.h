#pragma once

#include "api/Callbacks.h"
#include "payment/PaymentScreen.h"
#include "payment/UpiPolling.h"
#include "platform/TextField.h"

#include <QColor>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class QPushButton;

namespace Ui {
class UPIViewController;
}

namespace kovena {

template<class Screen> class CallbackRelay;
class UPIResponse;

// The UPI payment screen: takes the customer's VPA, registers the payment, sends the collect
// request to that VPA, then polls the transaction's status until it is final and reports it.
class UPIViewController : public PaymentScreen,
                          public UpiPolling,
                          public UPICalback1,
                          public TextFieldDelegate
{
    Q_OBJECT

public:
    explicit UPIViewController(QWidget *parent = nullptr);
    ~UPIViewController() override;

    QPointer<TextField> tfUpiId;
    QPointer<QPushButton> btnProceed;

    std::optional<QString> virtualAddress = QString();
    // Sent by the first status enquiry; this screen never changes it.
    std::optional<QString> kovenaTransactionId = QString();
    std::optional<QString> kovenaRefNumber;
    QString postData;
    QString url;
    bool isBackPressed = true;
    std::optional<QColor> currentButtonBg;

    void viewDidLoad() override;
    void viewWillDisappear(bool animated) override;
    void viewDidDisappear(bool animated) override;

    // The proceed button's action.
    void btnProceedAction();
    // Accepts an edit of tfUpiId only when it inserts nothing but letters, digits, "@", "_", ".".
    bool textFieldShouldChangeCharacters(
        TextField *field, int start, int length, const QString &replacement) override;
    // Keeps the VPA lower case after every accepted edit.
    void textViewChanged();

    // Answers of the API client, on the session thread.
    void upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum) override;
    void upiCallback2(std::shared_ptr<UPIResponse> upiResponse) override;

    // Cancelling ends the payment here: the collect request or polling in flight is abandoned,
    // so the merchant hears only the cancellation.
    void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status) override;

    // True when `text` holds nothing but ASCII letters, digits, "@", "_" and ".".
    static bool isAllowedUpiIdText(const QString &text);

protected:
    QString firstEnquiryTransactionId() const override;
    QString enquiryReference() const override;
    DataTaskPtr sendStatusEnquiry(
        const QString &kovenaTransactionId, const QString &transactionRefNumber) override;
    void reportFinalStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override;
    void reportNoNetwork() override;

private:
    void collectRegistered(const QString &kovenaTransactionId, const QString &transactionRefNum);
    void collectSent(const std::shared_ptr<UPIResponse> &upiResponse);
    void returnToForm(const QString &message);
    // Presents the approval notice, or keeps it for when the presentation open now ends.
    void showApprovalNotice();
    void presentationEnded();

    std::unique_ptr<Ui::UPIViewController> ui;
    std::shared_ptr<CallbackRelay<UPIViewController>> m_relay;
    // From proceed until the collect request fails (back to the form) or polling starts: a second
    // proceed meanwhile would register a second payment.
    bool m_collectInProgress = false;
    bool m_approvalNoticeWaiting = false;
};

} // namespace kovena
