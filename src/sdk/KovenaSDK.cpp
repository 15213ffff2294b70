#include "sdk/KovenaSDK.h"

#include "api/Constants.h"
#include "flow/MainKovena.h"
#include "flow/NavigatorController.h"
#include "payment/BankPageScene.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/Storyboard.h"
#include "platform/UserDefaults.h"

#include <QWidget>

#include <string>

namespace kovena {

namespace {

// Names the entry point that stopped, and why.
[[noreturn]] void stop(const char *entry, const char *what)
{
    fatalError((std::string(entry) + ": " + what).c_str());
}

const QString &required(const std::optional<QString> &value, const char *entry, const char *whatIsMissing)
{
    if (!value)
        stop(entry, whatIsMissing);
    return *value;
}

// Opens the storyboard, logs the token line and instantiates the flow's root controller: the
// first three steps of both entry points.
NavigatorController *instantiateNavigator(const char *entry, const QString &accessToken)
{
    Storyboard &storyboard = mainKovenaStoryboard();
    addBankPage(storyboard);
    qCDebug(lcKovena).noquote().nospace() << "---Merchant Access Token" << accessToken;
    auto *navigator = qobject_cast<NavigatorController *>(storyboard.instantiateInitialViewController());
    if (!navigator)
        stop(entry, "the storyboard MainKovena has no NavigatorController as its initial scene");
    return navigator;
}

// Replaces the merchant window's content with the flow; the merchant's own screen is kept,
// hidden, and still receives the outcome.
void install(const char *entry, QWidget *merchantVC, NavigatorController *navigator)
{
    if (!merchantVC)
        stop(entry, "merchantVC is required");
    setRootViewController(merchantVC->window(), navigator);
}

} // namespace

KovenaSDK &KovenaSDK::instance()
{
    static KovenaSDK shared;
    return shared;
}

void KovenaSDK::kovenaInit(QWidget *merchantVC, const QString &appName, const std::optional<QString> &orderNo,
    const QString &accessToken, const QString &collectorId, const std::optional<QString> &amount,
    const std::optional<QString> &customerMobNum, const std::optional<QString> &customerEmail,
    const QString &requestId, const QString &paymentMode)
{
    const char *entry = "kovenaInit";
    NavigatorController *navigator = instantiateNavigator(entry, accessToken);

    CheckoutParams &params = navigator->checkoutParams;
    params.accessToken = accessToken;
    params.collectorId = collectorId;
    params.amount = required(amount, entry, "amount is required");
    params.merchantTransactionRefNumber = required(orderNo, entry, "orderNo is required");
    params.merchantAppName = appName;
    params.merchantVC = merchantVC;
    params.customerMobNum = required(customerMobNum, entry, "customerMobNum is required");
    params.customerEmail = required(customerEmail, entry, "customerEmail is required");
    params.paymentMode = paymentMode;
    params.isStatusClicked = false;
    params.requestId = requestId.isEmpty() ? *orderNo : requestId;

    install(entry, merchantVC, navigator);

    UserDefaults::resetStandardUserDefaults();
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setString(Constants::PG::CUSTOMER_MOBILE_NUM(), params.customerMobNum);
    defaults.setString(Constants::PG::CUSTOMER_EMAIL(), params.customerEmail);
    defaults.setString(Constants::PG::MERCHANT_ACCESS_TOKEN(), accessToken);
    defaults.synchronize();
}

void KovenaSDK::kovenaStatusInit(QWidget *merchantVC, const QString &kovenaTransactionId,
    const std::optional<QString> &orderId, const QString &accessToken)
{
    const char *entry = "kovenaStatusInit";
    NavigatorController *navigator = instantiateNavigator(entry, accessToken);

    CheckoutParams &params = navigator->checkoutParams;
    params.isStatusClicked = true;
    params.kovenaTxnId = kovenaTransactionId;
    params.orderId = required(orderId, entry, "orderId is required");
    params.merchantVC = merchantVC;

    install(entry, merchantVC, navigator);

    // Only the token: the customer fields of an earlier checkout stay.
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setString(Constants::PG::MERCHANT_ACCESS_TOKEN(), accessToken);
    defaults.synchronize();
}

} // namespace kovena
