#pragma once

#include "api/Callbacks.h"
#include "api/DataTask.h"
#include "payment/PaymentScreen.h"

#include <QPointer>
#include <QPushButton>
#include <QString>

namespace kovena {

// What the card and net banking screens share: they register a payment, and when the backend
// answers with a bank page they open it through the hidden button's segue, handing it the
// address, the form body, the transaction id and the merchant.
class BankPageOpener : public PaymentScreen, public PaymentCallback
{
    Q_OBJECT

public:
    // The storyboard segue (and scene) of the bank page.
    static QString bankPageSegue();

    explicit BankPageOpener(QWidget *parent = nullptr);

    QString url;
    QString postData;
    QString kovenaTransactionId;
    // The payment request in flight; cancelled when the screen disappears.
    DataTaskPtr task;

    void viewWillDisappear(bool animated) override;
    // Session thread. On the main queue: hides the loader; when all three values are non-empty,
    // keeps them and touches btnProceedInvisible up, whose segue opens the bank page. Otherwise
    // the customer stays on the form.
    void getPaymentParams(
        const QString &url, const QString &postParams, const QString &kovenaTransactionId) override;
    // Hands postData, url, kovenaTransactionId and merchantVC to the bank page.
    void prepare(const StoryboardSegue &segue, QObject *sender) override;
    // Cancelling ends the checkout here: a payment still being registered is abandoned, and an
    // answer already on its way no longer opens the bank page.
    void btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status) override;

protected:
    // Departs from the written flow on purpose: there every proceed registers a payment, so a
    // second tap before the backend answers would register (and open) a second one. True, and
    // the subclass sends nothing, while a registration is under way; the form is free again
    // once the backend refused, or the screen was left.
    bool refusesSecondPayment() const;
    // The subclass sent a payment registration.
    void paymentSent() { m_paymentInProgress = true; }

    // The hidden, disabled button whose touch-up runs the bank page segue. Set once, by the
    // subclass, after its widgets exist.
    void setProceedInvisible(QPushButton *button);
    QPushButton *proceedInvisible() const { return m_proceedInvisible; }

private:
    void openBankPage(const QString &url, const QString &postParams, const QString &kovenaTransactionId);

    QPointer<QPushButton> m_proceedInvisible;
    bool m_paymentInProgress = false;
    bool m_ended = false;
};

} // namespace kovena
