#include "MerchantScreen.h"

#include "CallbackRows.h"

#include "model/TransactionStatus.h"
#include "sdk/KovenaSDK.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPushButton>
#include <QRadioButton>
#include <QUrl>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace kovena::demo {

MerchantScreen::MerchantScreen(const DemoOptions &initial, QWidget *parent)
    : QWidget(parent)
    , m_initial(initial)
{
    setObjectName(u"merchantScreen"_s);
    auto *layout = new QVBoxLayout(this);

    auto *title = new QLabel(initial.appName.isEmpty() ? u"Demo Store"_s : initial.appName, this);
    title->setObjectName(u"merchantTitle"_s);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.4);
    titleFont.setBold(true);
    title->setFont(titleFont);
    layout->addWidget(title);

    auto *checkoutBox = new QGroupBox(u"New payment"_s, this);
    auto *checkoutForm = new QFormLayout(checkoutBox);
    m_amount = addField(checkoutForm, u"Amount (₹)"_s, u"amountField"_s, initial.amount);
    m_order = addField(checkoutForm, u"Order number"_s, u"orderField"_s, initial.orderNo);
    m_token = addField(checkoutForm, u"Access token"_s, u"tokenField"_s, initial.accessToken);
    m_collector = addField(checkoutForm, u"Collector id"_s, u"collectorField"_s, initial.collectorId);
    m_mobile = addField(checkoutForm, u"Customer mobile"_s, u"mobileField"_s, initial.customerMobNum);
    m_email = addField(checkoutForm, u"Customer e-mail"_s, u"emailField"_s, initial.customerEmail);
    m_requestId = addField(checkoutForm, u"Request id"_s, u"requestIdField"_s, initial.requestId);
    m_appName = addField(checkoutForm, u"Merchant name"_s, u"appNameField"_s, initial.appName);
    // The three ways to pay, and a free value for everything else: any other mode keeps the
    // customer on the payment option screen, and a bad one shows what the library does with it.
    auto *modes = new QWidget(checkoutBox);
    auto *modeGrid = new QGridLayout(modes);
    modeGrid->setContentsMargins(0, 0, 0, 0);
    m_modes = new QButtonGroup(this);
    const struct
    {
        int id;
        QString label, objectName;
    } choices[] = { { 1, u"UPI"_s, u"modeUpi"_s }, { 2, u"Card"_s, u"modeCard"_s },
        { 3, u"Net banking"_s, u"modeNetBanking"_s }, { 0, u"Other:"_s, u"modeOther"_s } };
    int column = 0;
    for (const auto &choice : choices) {
        auto *button = new QRadioButton(choice.label, modes);
        button->setObjectName(choice.objectName);
        m_modes->addButton(button, choice.id);
        modeGrid->addWidget(button, column / 3, column % 3, Qt::AlignLeft);
        ++column;
    }
    m_otherMode = new QLineEdit(modes);
    m_otherMode->setObjectName(u"modeOtherField"_s);
    m_otherMode->setPlaceholderText(u"e.g. 4: the option screen"_s);
    m_otherMode->setAccessibleName(u"Other payment mode"_s);
    modeGrid->addWidget(m_otherMode, 1, 1, 1, 2);
    const int initialMode = QStringList { u"1"_s, u"2"_s, u"3"_s }.indexOf(initial.paymentMode) + 1;
    m_modes->button(initialMode)->setChecked(true);
    if (initialMode == 0)
        m_otherMode->setText(initial.paymentMode);
    // Typing a value means choosing it.
    connect(m_otherMode, &QLineEdit::textEdited, this, [this] { m_modes->button(0)->setChecked(true); });
    checkoutForm->addRow(u"Payment mode"_s, modes);
    auto *pay = new QPushButton(u"Pay"_s, checkoutBox);
    pay->setObjectName(u"payButton"_s);
    checkoutForm->addRow(pay);
    layout->addWidget(checkoutBox);

    auto *statusBox = new QGroupBox(u"Status of an earlier payment"_s, this);
    auto *statusForm = new QFormLayout(statusBox);
    m_statusTxn = addField(statusForm, u"Transaction id"_s, u"statusTxnField"_s, initial.kovenaTransactionId);
    m_statusOrder = addField(statusForm, u"Order id"_s, u"statusOrderField"_s,
        initial.flow == DemoOptions::Flow::Status ? initial.orderNo : QString());
    m_statusToken = addField(statusForm, u"Access token"_s, u"statusTokenField"_s, initial.accessToken);
    m_statusTxn->setPlaceholderText(u"sandbox: 42 to 46"_s);
    m_statusOrder->setPlaceholderText(u"sandbox: ORD-1 to ORD-5"_s);
    auto *status = new QPushButton(u"Check status"_s, statusBox);
    status->setObjectName(u"statusButton"_s);
    statusForm->addRow(status);
    layout->addWidget(statusBox);
    auto *banksBox = new QGroupBox(u"The backend's banks"_s, this);
    auto *banksForm = new QFormLayout(banksBox);
    m_bank = new QComboBox(banksBox);
    m_bank->setObjectName(u"bankPicker"_s);
    m_bank->setAccessibleName(u"Bank list"_s);
    m_bank->setToolTip(u"The bank list the backend gives the net banking screen"_s);
    m_bank->setEnabled(false);
    banksForm->addRow(u"Bank"_s, m_bank);
    m_bankState = new QLabel(u"Not loaded"_s, banksBox);
    m_bankState->setObjectName(u"bankPickerState"_s);
    m_bankState->setWordWrap(true);
    auto *reload = new QPushButton(u"Load again with the access token above"_s, banksBox);
    reload->setObjectName(u"bankReloadButton"_s);
    connect(reload, &QPushButton::clicked, this, [this] {
        if (!m_bankBaseUrl.isEmpty())
            loadBankList(m_bankBaseUrl);
    });
    banksForm->addRow(m_bankState);
    banksForm->addRow(reload);
    layout->addWidget(banksBox);

    // No card number or CVV here: the window's text reaches logs and accessibility dumps.
    auto *hint = new QLabel(
        u"Sandbox VPAs: success@kovena, failure@kovena, pending@kovena. Test cards: see the README."_s, this);
    hint->setObjectName(u"sandboxHint"_s);
    hint->setWordWrap(true);
    layout->addWidget(hint);
    layout->addStretch(1);

    connect(pay, &QPushButton::clicked, this, [this] { startCheckout(checkoutFormValues(m_initial)); });
    connect(status, &QPushButton::clicked, this, [this] { startStatusEnquiry(statusFormValues(m_initial)); });
}

QLineEdit *MerchantScreen::addField(
    QFormLayout *form, const QString &label, const QString &objectName, const QString &value)
{
    auto *field = new QLineEdit(value, form->parentWidget());
    field->setObjectName(objectName);
    form->addRow(label, field);
    return field;
}

DemoOptions MerchantScreen::checkoutFormValues(const DemoOptions &base) const
{
    DemoOptions o = base;
    o.amount = m_amount->text();
    o.orderNo = m_order->text();
    o.accessToken = m_token->text();
    o.collectorId = m_collector->text();
    o.customerMobNum = m_mobile->text();
    o.customerEmail = m_email->text();
    o.requestId = m_requestId->text();
    o.appName = m_appName->text();
    const int mode = m_modes->checkedId();
    o.paymentMode = mode > 0 ? QString::number(mode) : m_otherMode->text().trimmed();
    o.flow = DemoOptions::Flow::Checkout;
    return o;
}

DemoOptions MerchantScreen::statusFormValues(const DemoOptions &base) const
{
    DemoOptions o = base;
    o.flow = DemoOptions::Flow::Status;
    o.kovenaTransactionId = m_statusTxn->text();
    o.orderNo = m_statusOrder->text();
    o.accessToken = m_statusToken->text();
    return o;
}

void MerchantScreen::startCheckout(const DemoOptions &o)
{
    KovenaSDK::instance().kovenaInit(this, o.appName, o.orderNo, o.accessToken, o.collectorId, o.amount,
        o.customerMobNum, o.customerEmail, o.requestId, o.paymentMode);
    Q_EMIT flowStarted();
}

void MerchantScreen::startStatusEnquiry(const DemoOptions &o)
{
    KovenaSDK::instance().kovenaStatusInit(this, o.kovenaTransactionId, o.orderNo, o.accessToken);
    Q_EMIT flowStarted();
}

void MerchantScreen::onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus)
{
    if (m_hook)
        m_hook(completionEvent(transactionStatus));
}

void MerchantScreen::loadBankList(const QString &baseUrl)
{
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    m_bank->clear();
    m_bank->setEnabled(false);
    m_bankState->setText(u"Loading…"_s);
    QNetworkRequest request(QUrl(baseUrl + u"v1/netbanking/listofbanks"_s));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setTransferTimeout(15000);
    // The backend answers only an authorised merchant: the checkout's access token, as the
    // library sends it (the sandbox's test tokens give other lists).
    request.setRawHeader(
        QByteArrayLiteral("Authorization"), QByteArrayLiteral("Bearer ") + m_token->text().toUtf8());
    m_bankBaseUrl = baseUrl;
    QNetworkReply *reply = m_network->post(request, QByteArrayLiteral(R"({"":""})"));
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        const std::optional<QList<BankEntry>> banks
            = reply->error() == QNetworkReply::NoError ? parseBankList(reply->readAll()) : std::nullopt;
        if (!banks) {
            m_bankState->setText(u"Could not load the bank list: "_s
                + (reply->error() == QNetworkReply::NoError ? u"not a bank list"_s : reply->errorString()));
        } else {
            for (const BankEntry &bank : *banks)
                m_bank->addItem(u"%1 (%2)"_s.arg(bank.name, bank.code), bank.code);
            m_bank->setEnabled(!banks->isEmpty());
            m_bankState->setText(
                u"%1 banks; the popular ones are also buttons on the net banking screen"_s.arg(
                    banks->size()));
        }
        Q_EMIT bankListLoaded();
    });
}

nlohmann::ordered_json MerchantScreen::completionEvent(const std::shared_ptr<TransactionStatus> &status)
{
    nlohmann::ordered_json event;
    event["event"] = "onTransactionComplete";
    event["transactionStatus"] = status ? status->dictionaryRepresentation() : nlohmann::ordered_json();
    return event;
}

} // namespace kovena::demo
