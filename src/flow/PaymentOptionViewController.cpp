#include "flow/PaymentOptionViewController.h"

#include "ui_PaymentOptionViewController.h"

#include "flow/MainKovena.h"
#include "flow/Utils.h"
#include "payment/PaymentScreen.h"
#include "platform/FatalError.h"
#include "platform/Storyboard.h"
#include "sdk/CheckoutStatusCode.h"
#include "sdk/MerchantReport.h"

#include <QCoreApplication>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kovena {

namespace {

QString firstCharacter(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    const qsizetype end = finder.toNextBoundary();
    return end > 0 ? text.left(end) : QString();
}

} // namespace

PaymentOptionViewController::PaymentOptionViewController(QWidget *parent)
    : BaseViewController(parent)
    , ui(new Ui::PaymentOptionViewController)
{
    ui->setupUi(this);
    connect(ui->cancelButton, &QPushButton::clicked, this, &PaymentOptionViewController::back);
    const std::pair<QPushButton *, QString> choices[] = {
        { ui->btnUPI, u"UPIViewController"_s },
        { ui->btnCard, u"CardViewController"_s },
        { ui->btnNetBanking, u"NetBankingViewController"_s },
    };
    for (const auto &[button, segue] : choices)
        connect(button, &QPushButton::clicked, this, [this, button, segue] { runSegue(segue, button); });
}

PaymentOptionViewController::~PaymentOptionViewController()
{
    delete ui;
}

QLabel *PaymentOptionViewController::lbAmount() const
{
    return ui->lbAmount;
}
QLabel *PaymentOptionViewController::lbOrderId() const
{
    return ui->lbOrderId;
}
QLabel *PaymentOptionViewController::lbTitleAppName() const
{
    return ui->lbTitleAppName;
}
QWidget *PaymentOptionViewController::vCircle() const
{
    return ui->vCircle;
}
QLabel *PaymentOptionViewController::firstLetterInCircle() const
{
    return ui->firstLetterInCircle;
}

void PaymentOptionViewController::viewDidLoad()
{
    BaseViewController::viewDidLoad();
    addDismissKeyboardTap();

    // Failures are reported to the merchant; the screen stays for the customer's choice.
    checkParams(
        amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);

    // checkParams has ended the process if amount or order number were absent.
    ui->lbAmount->setText(Utils::amountFormat(*amount));
    ui->lbAmount->adjustSize();
    ui->lbOrderId->setText(*merchantTransactionRefNumber);

    QString name = merchantAppName.value_or(QString());
    if (name.isEmpty())
        name = QCoreApplication::applicationName();
    ui->lbTitleAppName->setText(name);
    ui->firstLetterInCircle->setText(firstCharacter(name));
}

void PaymentOptionViewController::viewWillAppear(bool animated)
{
    BaseViewController::viewWillAppear(animated);
    drawCircle();
}

void PaymentOptionViewController::drawCircle()
{
    QWidget *circle = ui->vCircle;
    const int radius = std::min(circle->width(), circle->height()) / 2;
    circle->setStyleSheet(u"#vCircle { background-color: #3f51b5; border-radius: %1px; }"_s.arg(radius));
}

void PaymentOptionViewController::runSegue(const QString &identifier, QObject *sender)
{
    Storyboard &board = storyboard() ? *storyboard() : mainKovenaStoryboard();
    board.performSegue(this, identifier, sender);
}

void PaymentOptionViewController::prepare(const StoryboardSegue &segue, QObject *sender)
{
    BaseViewController::prepare(segue, sender);
    const QString &id = segue.identifier;
    const bool toCard = id == u"CardViewController";
    if (!toCard && id != u"NetBankingViewController" && id != u"UPIViewController")
        return;
    auto *next = qobject_cast<PaymentScreen *>(segue.destination);
    if (!next)
        fatalError("PaymentOptionViewController: segue destination is not a payment screen");
    next->amount = amount.value_or(QString());
    next->merchantTransactionRefNumber = merchantTransactionRefNumber;
    next->merchantVC = merchantVC;
    // The card screen is left with its own (empty) collector id.
    if (!toCard)
        next->collectorId = collectorId;
}

void PaymentOptionViewController::checkParams(const std::optional<QString> &amount,
    const std::optional<QString> &merchantTransactionRefNumber, const std::optional<QString> &accessToken,
    const std::optional<QString> &collectorId, const std::optional<QString> &customerMobNum,
    const std::optional<QString> &customerEmail)
{
    kovena::checkParams(
        *this, amount, merchantTransactionRefNumber, accessToken, collectorId, customerMobNum, customerEmail);
}

void PaymentOptionViewController::back()
{
    btnBack(nullptr, CheckoutStatusCode::CANCELLED);
}

void PaymentOptionViewController::btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status)
{
    Q_UNUSED(trnasactionStatus)
    MerchantReport::btnBack(this, merchantVC, status);
}

void PaymentOptionViewController::btnBack(int status)
{
    btnBack(nullptr, status);
}

void PaymentOptionViewController::showToast(const QString &message)
{
    BaseViewController::showToast(message);
}

} // namespace kovena
