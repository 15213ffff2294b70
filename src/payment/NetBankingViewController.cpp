#include "payment/NetBankingViewController.h"

#include "ui_NetBankingViewController.h"

#include "api/ApiManager.h"
#include "flow/CallbackRelay.h"
#include "flow/Theme.h"
#include "flow/Utils.h"
#include "model/BankNBData.h"
#include "model/TransactionStatus.h"
#include "payment/PopularBanks.h"
#include "platform/Dispatch.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"

#include <QIcon>
#include <QPalette>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace kovena {

NetBankingViewController::NetBankingViewController(QWidget *parent)
    : BankPageOpener(parent)
    , ui(std::make_unique<Ui::NetBankingViewController>())
    , m_relay(std::make_shared<CallbackRelay<NetBankingViewController>>(this))
{
    ui->setupUi(this);
    btnSelectBank = ui->btnSelectBank;
    btnDropDownList = ui->btnDropDownList;
    btnProceed1 = ui->btnProceed1;
    btnProceedInvisible = ui->btnProceedInvisible;
    setProceedInvisible(btnProceedInvisible);
}

NetBankingViewController::~NetBankingViewController()
{
    // After detach() no answer reaches this screen; a call already running has finished.
    m_relay->detach();
    if (task)
        task->cancel();
}

void NetBankingViewController::viewDidLoad()
{
    BankPageOpener::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    const QString shownAmount = Utils::isValidAmount(amount) ? Utils::amountFormat(amount) : amount;
    ui->lbAmount->setText(u"\u20B9 "_s + shownAmount);
    theme::describeAmount(ui->lbAmount, ui->lbAmountCaption->text());
    btnSelectBank->setIcon(QIcon(theme::fieldIcon(u"ic_bank"_s)));
    btnSelectBank->setIconSize(QSize(20, 20));
    btnDropDownList->setIcon(QIcon(theme::fieldIcon(u"ic_chevron"_s, theme::kMuted)));
    btnDropDownList->setIconSize(QSize(16, 16));

    connect(btnSelectBank, &QPushButton::clicked, this, &NetBankingViewController::btnSelectBankAction);
    connect(btnDropDownList, &QPushButton::clicked, this, &NetBankingViewController::btnDropDownBank);
    connect(btnProceed1, &QPushButton::clicked, this, &NetBankingViewController::btnProceed1Action);
    connect(ui->btnSbiBank, &QPushButton::clicked, this, &NetBankingViewController::btnSbiBank);
    connect(ui->btnAxixBank, &QPushButton::clicked, this, &NetBankingViewController::btnAxixBank);
    connect(ui->btnHdfcBank, &QPushButton::clicked, this, &NetBankingViewController::btnHdfcBank);
    connect(ui->btnYesBank, &QPushButton::clicked, this, &NetBankingViewController::btnYesBank);
    connect(ui->btnPnbBank, &QPushButton::clicked, this, &NetBankingViewController::btnPnbBank);
    connect(ui->btnIciciBank, &QPushButton::clicked, this, &NetBankingViewController::btnIciciBank);

    loadering(true);
    task = ApiManager::callApiNBList(m_relay);

    btnProceed1->setEnabled(false);
    btnProceedInvisible->setEnabled(false);
    currentButtonBg = btnProceed1->palette().color(QPalette::Active, QPalette::Button);
    paintProceed(QColor(Qt::lightGray));

    if (isPaymentModeAvail) {
        navigationItem().hidesBackButton = true;
        setNavButton();
    }
}

void NetBankingViewController::getNBList(QList<std::shared_ptr<BankNBData>> bankList)
{
    dispatch::main().async([self = QPointer<NetBankingViewController>(this), bankList = std::move(bankList)] {
        if (self)
            self->bankListArrived(bankList);
    });
}

void NetBankingViewController::bankListArrived(const QList<std::shared_ptr<BankNBData>> &banks)
{
    loadering(false);
    bankList = banks;

    QStringList names;
    names.reserve(bankList.size());
    for (const std::shared_ptr<BankNBData> &each : std::as_const(bankList))
        names << listName(each);
    const PopularBanks popular = findPopularBanks(bankList);
    yesBank = popular.yesBank;
    iciciBank = popular.iciciBank;
    pnbBank = popular.pnbBank;
    hdfc = popular.hdfc;
    axisBank = popular.axisBank;
    sbi = popular.sbi;

    setupAmountDropDown(names);
}

QString NetBankingViewController::listName(const std::shared_ptr<BankNBData> &bank)
{
    // A bank without a name still takes its row, so that row i stays bankList[i].
    return bank && bank->netBankingName ? *bank->netBankingName : QString();
}

void NetBankingViewController::setupAmountDropDown(const QStringList &list)
{
    amountDropDown.setAnchorView(btnSelectBank);
    amountDropDown.setBottomOffset(QPoint(0, btnSelectBank->height()));
    amountDropDown.setDataSource(list);
    amountDropDown.setAccessibleName(u"Bank"_s);
    amountDropDown.setSelectionAction([this](int index, const QString &item) { chooseBank(index, item); });
}

void NetBankingViewController::chooseBank(int index, const QString &name)
{
    btnSelectBank->setText(name);
    bank = index >= 0 && index < bankList.size() ? bankList.at(index) : nullptr;
    btnProceed1->setEnabled(true);
    paintProceed(currentButtonBg.value_or(btnProceed1->palette().color(QPalette::Active, QPalette::Button)));
}

void NetBankingViewController::btnSelectBankAction()
{
    amountDropDown.show();
}

void NetBankingViewController::btnDropDownBank()
{
    amountDropDown.show();
}

void NetBankingViewController::btnProceed1Action()
{
    payWith(bank);
}

void NetBankingViewController::btnSbiBank()
{
    payWith(sbi);
}

void NetBankingViewController::btnAxixBank()
{
    payWith(axisBank);
}

void NetBankingViewController::btnHdfcBank()
{
    payWith(hdfc);
}

void NetBankingViewController::btnYesBank()
{
    payWith(yesBank);
}

void NetBankingViewController::btnPnbBank()
{
    payWith(pnbBank);
}

void NetBankingViewController::btnIciciBank()
{
    payWith(iciciBank);
}

void NetBankingViewController::payWith(const std::shared_ptr<BankNBData> &chosen)
{
    if (refusesSecondPayment())
        return;
    if (!Utils::isConnectedToNetwork()) {
        showToast(u"No Network"_s);
        return;
    }
    if (!chosen) {
        showToast(u"Error occured"_s);
        return;
    }
    if (!chosen->netBankingId)
        fatalError("NetBankingViewController: the chosen bank has no netBankingId");
    if (!collectorId)
        fatalError("NetBankingViewController: no collectorId for the net-banking payment");
    paymentSent();
    loadering(true);
    task = ApiManager::payNB(m_relay, merchantTransactionRefNumber.value_or(QString()),
        QString::number(*chosen->netBankingId), amount, *collectorId);
}

void NetBankingViewController::paintProceed(const QColor &colour)
{
    theme::paintButtonBackground(btnProceed1, colour);
}

} // namespace kovena
