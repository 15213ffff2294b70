#include "flow/PaymentOptionScreen.h"

#include "payment/PaymentScreen.h"
#include "platform/FatalError.h"
#include "sdk/CheckoutStatusCode.h"
#include "sdk/MerchantReport.h"

#include <QCoreApplication>

namespace kovena {

PaymentOptionScreen::PaymentOptionScreen(QWidget *parent)
    : BaseViewController(parent)
{ }

void PaymentOptionScreen::checkParams(const std::optional<QString> &amount,
    const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
    const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
    const std::optional<QString> &customerEmail)
{
    kovena::checkParams(
        *this, amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);
}

void PaymentOptionScreen::checkOwnParams()
{
    checkParams(
        amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);
}

void PaymentOptionScreen::back()
{
    btnBack(nullptr, CheckoutStatusCode::CANCELLED);
}

void PaymentOptionScreen::btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status)
{
    Q_UNUSED(trnasactionStatus)
    MerchantReport::btnBack(this, merchantVC, status);
}

void PaymentOptionScreen::btnBack(int status)
{
    btnBack(nullptr, status);
}

void PaymentOptionScreen::showToast(const QString &message)
{
    BaseViewController::showToast(message);
}

QString PaymentOptionScreen::merchantName() const
{
    const QString name = merchantAppName.value_or(QString());
    return name.isEmpty() ? QCoreApplication::applicationName() : name;
}

bool PaymentOptionScreen::isPaymentSegue(const QString &identifier)
{
    return identifier == u"CardViewController" || identifier == u"NetBankingViewController"
        || identifier == u"UPIViewController";
}

void PaymentOptionScreen::handOver(QWidget *next, bool withCollectorId) const
{
    auto *screen = qobject_cast<PaymentScreen *>(next);
    if (!screen)
        fatalError("PaymentOptionScreen: the next screen is not a payment screen");
    screen->amount = amount.value_or(QString());
    screen->merchantTransactionRefNumber = merchantTransactionRefNumber;
    screen->merchantVC = merchantVC;
    if (withCollectorId)
        screen->collectorId = collectorId;
}

} // namespace kovena
