#include "payment/UPIViewController.h"

#include "ui_UPIViewController.h"

#include "api/ApiManager.h"
#include "api/Constants.h"
#include "flow/CallbackRelay.h"
#include "flow/MainKovena.h"
#include "flow/Theme.h"
#include "flow/Utils.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/Storyboard.h"

#include <QPalette>
#include <QPushButton>

namespace kovena {

using namespace Qt::StringLiterals;

UPIViewController::UPIViewController(QWidget *parent)
    : PaymentScreen(parent)
    , ui(std::make_unique<Ui::UPIViewController>())
    , m_relay(std::make_shared<CallbackRelay<UPIViewController>>(this))
{
    ui->setupUi(this);
    tfUpiId = ui->tfUpiId;
    btnProceed = ui->btnProceed;
    connect(
        this, &ViewController::presentedViewControllerDismissed, this, &UPIViewController::presentationEnded);
}

UPIViewController::~UPIViewController()
{
    // After detach() no answer reaches this screen; a call already running has finished.
    m_relay->detach();
    cancelTask();
    stopPolling();
}

void UPIViewController::viewDidLoad()
{
    PaymentScreen::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    currentButtonBg = btnProceed->palette().color(QPalette::Button);
    connect(tfUpiId, &TextField::editingChanged, this, &UPIViewController::textViewChanged);
    tfUpiId->setDelegate(this);
    connect(btnProceed, &QPushButton::clicked, this, &UPIViewController::btnProceedAction);

    const QString shownAmount = Utils::isValidAmount(amount) ? Utils::amountFormat(amount) : amount;
    ui->lbAmount->setText(u"\u20B9 "_s + shownAmount);
    theme::describeAmount(ui->lbAmount, ui->lbAmountCaption->text());
    theme::setLeadingIcon(tfUpiId, u"ic_phone"_s);

    if (isPaymentModeAvail) {
        navigationItem().hidesBackButton = true;
        setNavButton();
    }
}

void UPIViewController::viewWillDisappear(bool animated)
{
    PaymentScreen::viewWillDisappear(animated);
    cancelTask();
}

void UPIViewController::viewDidDisappear(bool animated)
{
    PaymentScreen::viewDidDisappear(animated);
    if (isMovingFromParent())
        stopPolling();
}

bool UPIViewController::isAllowedUpiIdText(const QString &text)
{
    static const QString allowed = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz1234567890@_."_s;
    QString kept;
    for (const QChar c : text) {
        if (allowed.contains(c))
            kept.append(c);
    }
    return kept == text;
}

bool UPIViewController::textFieldShouldChangeCharacters(
    TextField *field, int start, int length, const QString &replacement)
{
    Q_UNUSED(field)
    Q_UNUSED(start)
    Q_UNUSED(length)
    return isAllowedUpiIdText(replacement);
}

void UPIViewController::textViewChanged()
{
    const QString text = tfUpiId->text();
    const QString lower = text.toLower();
    if (lower == text)
        return;
    const int cursor = tfUpiId->cursorPosition();
    tfUpiId->setText(lower);
    tfUpiId->setCursorPosition(cursor);
}

void UPIViewController::btnProceedAction()
{
    if (m_collectInProgress || pollingState() != State::Idle) {
        qCDebug(lcPayment) << "UPI proceed ignored: a collect request is already under way";
        return;
    }
    virtualAddress = tfUpiId->text();
    if (!Utils::isValidVPA(*virtualAddress)) {
        showToast(u"UPI id is not valid !!"_s);
        return;
    }
    if (!Utils::isConnectedToNetwork()) {
        showToast(u"No Network"_s);
        return;
    }
    m_collectInProgress = true;
    loadering(true);
    task = ApiManager::payUPICollect(m_relay, merchantTransactionRefNumber, amount, collectorId);
}

void UPIViewController::upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum)
{
    // Session thread: the screen is only looked at on the main queue.
    dispatch::main().async(
        [self = QPointer<UPIViewController>(this), kovenaTransactionId, transactionRefNum] {
            if (self)
                self->collectRegistered(kovenaTransactionId, transactionRefNum);
        });
}

void UPIViewController::upiCallback2(std::shared_ptr<UPIResponse> upiResponse)
{
    dispatch::main().async([self = QPointer<UPIViewController>(this), upiResponse = std::move(upiResponse)] {
        if (self)
            self->collectSent(upiResponse);
    });
}

void UPIViewController::btnBack(std::shared_ptr<TransactionStatus> trnasactionStatus, int status)
{
    m_collectInProgress = false;
    abandonPolling();
    loadering(false);
    PaymentScreen::btnBack(std::move(trnasactionStatus), status);
}

void UPIViewController::collectRegistered(
    const QString &kovenaTransactionId, const QString &transactionRefNum)
{
    if (pollingState() == State::Abandoned)
        return;
    loadering(false);
    if (kovenaTransactionId.isEmpty() || transactionRefNum.isEmpty()) {
        returnToForm(u"Error in payUPICollect"_s);
        return;
    }
    if (!Utils::isConnectedToNetwork()) {
        returnToForm(u"No Network"_s);
        return;
    }
    if (!collectorId)
        fatalError("UPIViewController: no collectorId for the collect request");
    loadering(true);
    task = ApiManager::payUPICollectByVPA(
        m_relay, kovenaTransactionId, transactionRefNum, amount, virtualAddress, *collectorId);
}

void UPIViewController::collectSent(const std::shared_ptr<UPIResponse> &upiResponse)
{
    if (pollingState() == State::Abandoned)
        return;
    loadering(false);
    if (!upiResponse || upiResponse->responseCode != Constants::PG::PG_SUCCESS()) {
        returnToForm(u"Error in payUPICollectByVPA"_s);
        return;
    }
    if (!Utils::isConnectedToNetwork()) {
        returnToForm(u"No Network"_s);
        return;
    }
    showApprovalNotice();
    loadering(true);
    m_collectInProgress = false;
    startPolling();
}

void UPIViewController::showApprovalNotice()
{
    // The cancel question may be open as the collect request goes out. Only one screen is
    // presented at a time, so the notice waits for the answer: "Cancel" (keep paying) shows it,
    // "Proceed" ends the payment and it is never made.
    if (presentedViewController()) {
        m_approvalNoticeWaiting = true;
        return;
    }
    m_approvalNoticeWaiting = false;
    present(mainKovenaStoryboard().instantiateViewController(u"PopUpViewController"_s), true);
}

void UPIViewController::presentationEnded()
{
    if (m_approvalNoticeWaiting && pollingState() == State::Polling)
        showApprovalNotice();
    else
        m_approvalNoticeWaiting = false;
}

void UPIViewController::returnToForm(const QString &message)
{
    m_collectInProgress = false;
    showToast(message);
}

QString UPIViewController::firstEnquiryTransactionId() const
{
    if (!kovenaTransactionId)
        fatalError("UPIViewController: kovenaTransactionId is missing");
    return *kovenaTransactionId;
}

QString UPIViewController::enquiryReference() const
{
    if (!merchantTransactionRefNumber)
        fatalError("UPIViewController: merchantTransactionRefNumber is missing");
    return *merchantTransactionRefNumber;
}

DataTaskPtr UPIViewController::sendStatusEnquiry(
    const QString &kovenaTransactionId, const QString &transactionRefNumber)
{
    return ApiManager::getTransactionStatus(m_relay, kovenaTransactionId, transactionRefNumber);
}

void UPIViewController::reportFinalStatus(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    finish(std::move(trnasactionStatus));
}

void UPIViewController::reportNoNetwork()
{
    showToast(u"No Network"_s);
}

} // namespace kovena
