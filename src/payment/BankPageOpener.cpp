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
    if (task)
        task->cancel();
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
    loadering(false);
    if (url.isEmpty() || postParams.isEmpty() || kovenaTransactionId.isEmpty()) {
        qCDebug(lcPayment, "payment not registered: the customer stays on the form");
        return;
    }
    this->url = url;
    postData = postParams;
    this->kovenaTransactionId = kovenaTransactionId;
    // The button stays disabled: only this hand-over, never a tap, may run its segue.
    dispatch::main().async([button = m_proceedInvisible] {
        if (button)
            Q_EMIT button->clicked(false);
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
