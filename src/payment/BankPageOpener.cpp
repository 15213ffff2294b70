#include "payment/BankPageOpener.h"

#include "payment/BankPageScreen.h"
#include "platform/Dispatch.h"
#include "platform/Logging.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

namespace kovena {

QString BankPageOpener::bankPageSegue()
{
    return u"PaymentViewController"_s;
}

BankPageOpener::BankPageOpener(QWidget *parent)
    : PaymentScreen(parent)
{ }

void BankPageOpener::viewWillDisappear(bool animated)
{
    PaymentScreen::viewWillDisappear(animated);
    // A cancelled registration answers with the failure, and an accepted one has handed its page
    // over by now: either way none is pending once the screen comes back.
    if (task)
        task->cancel();
    m_paymentInProgress = false;
}

bool BankPageOpener::refusesSecondPayment() const
{
    if (m_paymentInProgress)
        qCDebug(lcPayment, "payment tap ignored: a payment request is already under way");
    return m_paymentInProgress;
}

void BankPageOpener::btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status)
{
    m_ended = true;
    if (task)
        task->cancel();
    loadering(false);
    PaymentScreen::btnBack(std::move(trnasactionStatus), status);
}

void BankPageOpener::setProceedInvisible(QPushButton *button)
{
    m_proceedInvisible = button;
    connect(button, &QPushButton::clicked, this, [this, button] { performSegue(bankPageSegue(), button); });
}

void BankPageOpener::getPaymentParams(
    const QString &url, const QString &postParams, const QString &kovenaTransactionId)
{
    dispatch::main().async([self = QPointer<BankPageOpener>(this), url, postParams, kovenaTransactionId] {
        if (self)
            self->openBankPage(url, postParams, kovenaTransactionId);
    });
}

void BankPageOpener::openBankPage(
    const QString &url, const QString &postParams, const QString &kovenaTransactionId)
{
    if (m_ended)
        return;
    loadering(false);
    if (url.isEmpty() || postParams.isEmpty() || kovenaTransactionId.isEmpty()) {
        qCDebug(lcPayment, "payment not registered: the customer stays on the form");
        m_paymentInProgress = false;
        return;
    }
    this->url = url;
    postData = postParams;
    this->kovenaTransactionId = kovenaTransactionId;
    // The button stays disabled: only this hand-over, never a tap, may run its segue.
    dispatch::main().async([self = QPointer<BankPageOpener>(this)] {
        if (self && !self->m_ended && self->m_proceedInvisible)
            Q_EMIT self->m_proceedInvisible->clicked(false);
    });
}

void BankPageOpener::prepare(const StoryboardSegue &segue, QObject *sender)
{
    PaymentScreen::prepare(segue, sender);
    auto *page = dynamic_cast<BankPageScreen *>(segue.destination);
    if (segue.identifier != bankPageSegue() || !page)
        return;
    page->postData = postData;
    page->url = url;
    page->kovenaTransactionId = kovenaTransactionId;
    page->merchantVC = merchantVC;
}

} // namespace kovena
