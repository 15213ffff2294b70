#include "flow/PaymentOptionVC.h"

#include "ui_PaymentOptionVC.h"

#include "api/Constants.h"
#include "flow/MainKovena.h"
#include "flow/Utils.h"
#include "payment/PaymentScreen.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"
#include "platform/UserDefaults.h"
#include "sdk/CheckoutStatusCode.h"
#include "sdk/MerchantReport.h"

#include <QCoreApplication>
#include <QPalette>

#include <cmath>
#include <cstdint>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

// UPI is offered up to this many whole rupees.
constexpr std::int64_t kUpiLimit = 100000;

QString sceneForPaymentMode(const QString &mode)
{
    if (mode == u"1")
        return u"UPIViewController"_s;
    if (mode == u"2")
        return u"CardViewController"_s;
    if (mode == u"3")
        return u"NetBankingViewController"_s;
    return {};
}

std::int64_t wholeRupees(const QString &amountText)
{
    const std::optional<float> value = Utils::floatValue(amountText);
    if (!value)
        fatalError("PaymentOptionVC: amount is not a number");
    constexpr float twoTo63 = 9223372036854775808.0f;
    if (!std::isfinite(*value) || *value >= twoTo63 || *value < -twoTo63)
        fatalError("PaymentOptionVC: amount out of integer range");
    return static_cast<std::int64_t>(*value);
}

} // namespace

PaymentOptionVC::PaymentOptionVC(QWidget *parent)
    : BaseViewController(parent)
    , locale(QLocale::system())
    , symbol(locale.currencySymbol())
    , ui(new Ui::PaymentOptionVC)
{
    ui->setupUi(this);
    connect(ui->cancelButton, &QPushButton::clicked, this, &PaymentOptionVC::cancelButton);
}

PaymentOptionVC::~PaymentOptionVC()
{
    delete ui;
}

QLabel *PaymentOptionVC::lbAmount() const
{
    return ui->lbAmount;
}
QLabel *PaymentOptionVC::lbOrderId() const
{
    return ui->lbOrderId;
}
QLabel *PaymentOptionVC::lbTitleAppName() const
{
    return ui->lbTitleAppName;
}
QPushButton *PaymentOptionVC::UPILabel() const
{
    return ui->UPILabel;
}

void PaymentOptionVC::viewDidLoad()
{
    BaseViewController::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    // Failures are reported to the merchant but the screen still goes on to route.
    checkParams(
        amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);

    UserDefaults &defaults = UserDefaults::standard();
    defaults.setBool(Constants::PG::RETRY(), false);
    defaults.synchronize();

    // checkParams has ended the process if amount or order number were absent.
    QString displayAmount = Utils::amountFormat(*amount);
    qCDebug(lcFlow).noquote() << displayAmount;
    if (!displayAmount.contains(u'.'))
        displayAmount += u".00"_s;

    navigationItem().hidesBackButton = true;
    navigationItem().hasBackItem = false;
    updateNavigationBar();

    ui->lbAmount->setText(u"\u20B9 "_s + displayAmount);
    ui->lbOrderId->setText(*merchantTransactionRefNumber);

    QString name = merchantAppName.value_or(QString());
    if (name.isEmpty())
        name = QCoreApplication::applicationName();
    ui->lbTitleAppName->setText(name);

    if (wholeRupees(Utils::amountFormat(*amount)) > kUpiLimit) {
        QPalette palette = ui->UPILabel->palette();
        palette.setColor(QPalette::All, QPalette::ButtonText, QColor(Qt::lightGray));
        ui->UPILabel->setPalette(palette);
        ui->UPILabel->setEnabled(false);
    } else {
        ui->UPILabel->setEnabled(true);
    }

    const std::optional<QString> mode = defaults.string(Constants::PG::PAYMENT_MODE());
    if (!mode)
        fatalError("PaymentOptionVC: no payment mode in the user defaults");
    qCDebug(lcFlow).noquote() << "Payment Mode:" << *mode;
    routeByPaymentMode(*mode);
}

void PaymentOptionVC::routeByPaymentMode(const QString &mode)
{
    const QString scene = sceneForPaymentMode(mode);
    if (scene.isEmpty())
        return;

    Storyboard &board = storyboard() ? *storyboard() : mainKovenaStoryboard();
    auto *next = qobject_cast<PaymentScreen *>(board.instantiateViewController(scene));
    if (!next)
        fatalError("PaymentOptionVC: payment scene is not a payment screen");
    next->amount = amount.value_or(QString());
    next->merchantTransactionRefNumber = merchantTransactionRefNumber;
    next->collectorId = collectorId;
    next->merchantVC = merchantVC;
    next->isPaymentModeAvail = true;

    NavigationController *navigation = navigationController();
    if (!navigation) {
        delete next;
        return;
    }
    navigation->addTransition(Transition { 0.3, u"moveIn"_s, u"fromTop"_s });
    navigation->pushViewController(next, false);
}

void PaymentOptionVC::prepare(const StoryboardSegue &segue, QObject *sender)
{
    BaseViewController::prepare(segue, sender);
    const QString &id = segue.identifier;
    if (id != u"CardViewController" && id != u"NetBankingViewController" && id != u"UPIViewController")
        return;
    auto *next = qobject_cast<PaymentScreen *>(segue.destination);
    if (!next)
        fatalError("PaymentOptionVC: segue destination is not a payment screen");
    next->amount = amount.value_or(QString());
    next->merchantTransactionRefNumber = merchantTransactionRefNumber;
    next->merchantVC = merchantVC;
    next->collectorId = collectorId;
}

void PaymentOptionVC::checkParams(const std::optional<QString> &amount,
    const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
    const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
    const std::optional<QString> &customerEmail)
{
    kovena::checkParams(
        *this, amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);
}

void PaymentOptionVC::back()
{
    btnBack(nullptr, CheckoutStatusCode::CANCELLED);
}

void PaymentOptionVC::cancelButton()
{
    btnBack(nullptr, CheckoutStatusCode::CANCELLED);
}

void PaymentOptionVC::btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status)
{
    Q_UNUSED(trnasactionStatus)
    MerchantReport::btnBack(this, merchantVC, status);
}

void PaymentOptionVC::btnBack(int status)
{
    btnBack(nullptr, status);
}

void PaymentOptionVC::showToast(const QString &message)
{
    BaseViewController::showToast(message);
}

} // namespace kovena
