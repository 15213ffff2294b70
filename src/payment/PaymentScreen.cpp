#include "payment/PaymentScreen.h"

#include "platform/AlertController.h"
#include "platform/Logging.h"
#include "sdk/MerchantReport.h"

#include <QColor>

using namespace Qt::StringLiterals;

namespace kovena {

PaymentScreen::PaymentScreen(QWidget *parent)
    : BaseViewController(parent)
{ }

void PaymentScreen::setNavButton()
{
    if (!isPaymentModeAvail)
        return;
    NavigationItem &item = navigationItem();
    item.hidesBackButton = true;
    item.hasBackItem = false;
    QPointer<PaymentScreen> self(this);
    item.rightBarButtonItem = BarButtonItem {
        u"Cancel"_s,
        QColor::fromRgbF(0.22265625f, 0.48046875f, 0.6171875f, 1.0f),
        [self] {
            if (self)
                self->cancelTxn();
        },
        u"Asks whether to cancel this payment"_s,
    };
    updateNavigationBar();
}

void PaymentScreen::cancelTxn()
{
    auto *alert = new AlertController(QString(), u"Are you sure want to cancel transaction?"_s);
    alert->addAction({ u"Cancel"_s, AlertController::ActionStyle::Default,
        [] { qCDebug(lcPayment, "you have pressed the No button"); } });
    QPointer<PaymentScreen> self(this);
    alert->addAction({ u"Proceed"_s, AlertController::ActionStyle::Default, [self] {
                          if (self)
                              self->btnBack(nullptr, -1);
                      } });
    present(alert, true);
}

void PaymentScreen::btnBack(std::shared_ptr<TransactionStatus>, int status)
{
    MerchantReport::btnBack(this, merchantVC, status);
}

void PaymentScreen::finish(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    MerchantReport::finish(merchantVC, std::move(trnasactionStatus));
}

} // namespace kovena
