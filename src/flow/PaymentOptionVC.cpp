#include "flow/PaymentOptionVC.h"

#include "ui_PaymentOptionVC.h"

#include "api/Constants.h"
#include "flow/MainKovena.h"
#include "flow/Theme.h"
#include "flow/Utils.h"
#include "payment/PaymentScreen.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"
#include "platform/UserDefaults.h"
#include "sdk/CheckoutStatusCode.h"

#include <QIcon>
#include <QPalette>

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
    const std::optional<std::int64_t> whole = Utils::truncatedInt64(*value);
    if (!whole)
        fatalError("PaymentOptionVC: amount out of integer range");
    return *whole;
}

} // namespace

PaymentOptionVC::PaymentOptionVC(QWidget *parent)
    : PaymentOptionScreen(parent)
    , locale(QLocale::system())
    , symbol(locale.currencySymbol())
    , ui(new Ui::PaymentOptionVC)
{
    ui->setupUi(this);
    connect(ui->cancelButton, &QPushButton::clicked, this, &PaymentOptionVC::cancelButton);
    ui->UPILabel->setIcon(QIcon(theme::fieldIcon(u"ic_phone"_s)));
    ui->UPILabel->setIconSize(QSize(20, 20));
    // The UPI choice runs the UPI segue, like a choice on the other option screen.
    connect(ui->UPILabel, &QPushButton::clicked, this, [this] {
        Storyboard &board = storyboard() ? *storyboard() : mainKovenaStoryboard();
        board.performSegue(this, u"UPIViewController"_s, ui->UPILabel);
    });
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
    PaymentOptionScreen::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    // Failures are reported to the merchant but the screen still goes on to route.
    checkOwnParams();

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
    theme::describeAmount(ui->lbAmount, ui->lbAmountCaption->text());
    ui->lbOrderId->setText(*merchantTransactionRefNumber);

    ui->lbTitleAppName->setText(merchantName());

    if (wholeRupees(Utils::amountFormat(*amount)) > kUpiLimit) {
        QPalette palette = ui->UPILabel->palette();
        palette.setColor(QPalette::All, QPalette::ButtonText, QColor(Qt::lightGray));
        ui->UPILabel->setPalette(palette);
        ui->UPILabel->setEnabled(false);
        ui->UPILabel->setAccessibleDescription(
            u"Not available: UPI takes amounts up to \u20B9 %1"_s.arg(kUpiLimit));
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
    ViewController *next = board.instantiateViewController(scene);
    handOver(next, true);
    qobject_cast<PaymentScreen *>(next)->isPaymentModeAvail = true;

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
    PaymentOptionScreen::prepare(segue, sender);
    if (isPaymentSegue(segue.identifier))
        handOver(segue.destination, true);
}

void PaymentOptionVC::cancelButton()
{
    btnBack(nullptr, CheckoutStatusCode::CANCELLED);
}

} // namespace kovena
