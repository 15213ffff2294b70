#include "flow/InitialViewController.h"

#include "api/ApiManager.h"
#include "flow/MainKovena.h"
#include "flow/PaymentOptionVC.h"
#include "platform/Dispatch.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"
#include "sdk/MerchantReport.h"

#include "ui_InitialViewController.h"

using namespace Qt::StringLiterals;

namespace kovena {

InitialViewController::InitialViewController(QWidget *parent)
    : BaseViewController(parent)
    , ui(std::make_unique<Ui::InitialViewController>())
{
    ui->setupUi(this);
}

InitialViewController::~InitialViewController()
{
    // A reply that arrives after the screen is gone has no one to go to.
    if (m_relay)
        m_relay->detach();
    if (m_task)
        m_task->cancel();
}

void InitialViewController::viewDidLoad()
{
    BaseViewController::viewDidLoad();
    addDismissKeyboardTap();
    if (isStatusClicked)
        startStatusEnquiry();
    else
        openPaymentOptions();
}

void InitialViewController::startStatusEnquiry()
{
    loadering(true);
    m_relay = std::make_shared<CallbackRelay<InitialViewController>>(this);
    m_task = ApiManager::getTransactionStatus(m_relay, kovenaTxnId, orderId);
}

void InitialViewController::openPaymentOptions()
{
    Storyboard &board = storyboard() ? *storyboard() : mainKovenaStoryboard();
    ViewController *scene = board.instantiateViewController(u"PaymentOptionVC"_s);
    auto *options = qobject_cast<PaymentOptionVC *>(scene);
    if (!options)
        fatalError("InitialViewController: the scene PaymentOptionVC is not a PaymentOptionVC");

    options->amount = amount;
    options->merchantTransactionRefNumber = merchantTransactionRefNumber;
    options->merchantAppName = merchantAppName;
    options->collectorId = collectorId;
    options->accessToken = accessToken;
    options->merchantVC = merchantVC;
    options->customerMobNum = customerMobNum;
    options->customerEmail = customerEmail;

    NavigationController *navigator = navigationController();
    if (!navigator) {
        delete options;
        return;
    }
    navigator->addTransition(Transition { 0.3, u"moveIn"_s, u"fromTop"_s });
    navigator->pushViewController(options, false);
}

void InitialViewController::getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    // The caller holds the relay's lock, so this screen is alive here; the queued blocks must
    // not assume it still is when they run.
    QPointer<InitialViewController> self(this);
    dispatch::main().async([self] {
        if (self)
            self->loader().hideActivityIndicator();
    });
    dispatch::main().async([self, record = std::move(trnasactionStatus)]() mutable {
        if (self)
            self->finish(std::move(record));
    });
}

void InitialViewController::finish(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    MerchantReport::finish(merchantVC, std::move(trnasactionStatus));
}

} // namespace kovena
