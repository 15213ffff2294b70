#include "flow/PaymentOptionViewController.h"

#include "ui_PaymentOptionViewController.h"

#include "flow/MainKovena.h"
#include "flow/Theme.h"
#include "flow/Utils.h"
#include "platform/Storyboard.h"

#include <QIcon>
#include <QPushButton>
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
    : PaymentOptionScreen(parent)
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
    const std::pair<QPushButton *, QString> icons[] = { { ui->btnUPI, u"ic_phone"_s },
        { ui->btnCard, u"ic_card"_s }, { ui->btnNetBanking, u"ic_bank"_s } };
    for (const auto &[button, icon] : icons) {
        button->setIcon(QIcon(theme::fieldIcon(icon)));
        button->setIconSize(QSize(20, 20));
    }
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
    PaymentOptionScreen::viewDidLoad();
    addDismissKeyboardTap();

    // Failures are reported to the merchant; the screen stays for the customer's choice.
    checkOwnParams();

    // checkParams has ended the process if amount or order number were absent.
    ui->lbAmount->setText(Utils::amountFormat(*amount));
    ui->lbAmount->adjustSize();
    theme::describeAmount(ui->lbAmount, ui->lbAmountCaption->text());
    ui->lbOrderId->setText(*merchantTransactionRefNumber);

    const QString name = merchantName();
    ui->lbTitleAppName->setText(name);
    ui->firstLetterInCircle->setText(firstCharacter(name));
}

void PaymentOptionViewController::viewWillAppear(bool animated)
{
    PaymentOptionScreen::viewWillAppear(animated);
    drawCircle();
}

void PaymentOptionViewController::drawCircle()
{
    QWidget *circle = ui->vCircle;
    const int radius = std::min(circle->width(), circle->height()) / 2;
    circle->setStyleSheet(
        u"#vCircle { background-color: %1; border-radius: %2px; }"_s.arg(theme::kBrand.name()).arg(radius));
}

void PaymentOptionViewController::runSegue(const QString &identifier, QObject *sender)
{
    Storyboard &board = storyboard() ? *storyboard() : mainKovenaStoryboard();
    board.performSegue(this, identifier, sender);
}

void PaymentOptionViewController::prepare(const StoryboardSegue &segue, QObject *sender)
{
    PaymentOptionScreen::prepare(segue, sender);
    // The card screen is left with its own (empty) collector id.
    if (isPaymentSegue(segue.identifier))
        handOver(segue.destination, segue.identifier != u"CardViewController");
}

} // namespace kovena
