#include "flow/NavigatorController.h"

#include "api/Constants.h"
#include "flow/InitialViewController.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/UserDefaults.h"

namespace kovena {

NavigatorController::NavigatorController(QWidget *parent)
    : NavigationController(parent)
{ }

void NavigatorController::viewDidLoad()
{
    NavigationController::viewDidLoad();
    qCDebug(lcFlow, " NavigatorController -------");

    auto *initial = qobject_cast<InitialViewController *>(topViewController());
    if (!initial)
        fatalError("NavigatorController: the first screen of the checkout is not an InitialViewController");

    const CheckoutParams &params = checkoutParams;
    if (params.isStatusClicked) {
        initial->kovenaTxnId = params.kovenaTxnId;
        initial->orderId = params.orderId;
        initial->isStatusClicked = params.isStatusClicked;
        initial->merchantVC = params.merchantVC;
        return;
    }
    initial->amount = params.amount;
    initial->merchantTransactionRefNumber = params.merchantTransactionRefNumber;
    initial->merchantAppName = params.merchantAppName;
    initial->collectorId = params.collectorId;
    initial->accessToken = params.accessToken;
    initial->merchantVC = params.merchantVC;
    initial->customerMobNum = params.customerMobNum;
    initial->customerEmail = params.customerEmail;
    initial->isStatusClicked = params.isStatusClicked;

    // The API client reads the request id, and the payment option screen the mode, from here.
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setString(Constants::PG::REQUEST_ID(), params.requestId);
    defaults.setString(Constants::PG::PAYMENT_MODE(), params.paymentMode);
}

} // namespace kovena
