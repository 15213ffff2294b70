#include "MerchantScreen.h"

#include "model/TransactionStatus.h"
#include "sdk/KovenaSDK.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
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
    m_mode = new QComboBox(checkoutBox);
    m_mode->setObjectName(u"modeField"_s);
    m_mode->setEditable(true);
    m_mode->addItem(u"1"_s, u"UPI"_s);
    m_mode->addItem(u"2"_s, u"Card"_s);
    m_mode->addItem(u"3"_s, u"Net banking"_s);
    m_mode->setEditText(initial.paymentMode);
    m_mode->lineEdit()->setPlaceholderText(u"1 UPI, 2 card, 3 net banking"_s);
    m_mode->setToolTip(
        u"1 UPI, 2 card, 3 net banking; anything else lets the customer stay on the options"_s);
    checkoutForm->addRow(u"Payment mode"_s, m_mode);
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
    auto *hint = new QLabel(u"Sandbox VPAs: success@kovena, failure@kovena, pending@kovena"_s, this);
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
    o.paymentMode = m_mode->currentText().trimmed();
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

nlohmann::ordered_json MerchantScreen::completionEvent(const std::shared_ptr<TransactionStatus> &status)
{
    nlohmann::ordered_json event;
    event["event"] = "onTransactionComplete";
    event["transactionStatus"] = status ? status->dictionaryRepresentation() : nlohmann::ordered_json();
    return event;
}

} // namespace kovena::demo
