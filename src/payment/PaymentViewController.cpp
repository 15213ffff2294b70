#include "payment/PaymentViewController.h"

#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "model/TransactionStatus.h"
#include "platform/Dispatch.h"
#include "platform/FatalError.h"
#include "platform/Logging.h"
#include "platform/Timer.h"
#include "sdk/MerchantReport.h"

#include <QVBoxLayout>
#include <QWebEngineHttpRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include <atomic>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace kovena {

namespace {

// Asks the screen before every navigation, main frame or not, typed, clicked or redirected.
class BankWebPage final : public QWebEnginePage
{
public:
    BankWebPage(QWebEngineProfile *profile, PaymentViewController *screen, QWidget *view)
        : QWebEnginePage(profile, view)
        , m_screen(screen)
    { }

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override
    {
        Q_UNUSED(type)
        Q_UNUSED(isMainFrame)
        return m_screen ? m_screen->shouldStartLoad(url) : false;
    }

private:
    QPointer<PaymentViewController> m_screen;
};

} // namespace

// Receives the status answer and reports to the merchant. It outlives the screen: an answer
// that arrives after the customer left still reaches the merchant, as the cancellation did.
class PaymentViewController::Reporter final : public TransactionStatusCallback
{
public:
    explicit Reporter(PaymentViewController *screen)
        : m_screen(screen)
    { }

    // Set on the main thread before the page loads.
    QPointer<QWidget> merchantVC;
    std::atomic<bool> isBackPressed { true };

    void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) override
    {
        postLoader(false);
        postLoader(true);
        if (!trnasactionStatus)
            fatalError("bank page: the status enquiry answered no status");
        finish(std::move(trnasactionStatus));
    }

    void finish(std::shared_ptr<TransactionStatus> trnasactionStatus)
    {
        if (trnasactionStatus && trnasactionStatus->data) {
            const std::optional<qint64> &status = trnasactionStatus->data->paymentStatus;
            if (!status)
                fatalError("bank page: the transaction status has no payment status");
            if (*status < std::numeric_limits<std::int32_t>::min()
                || *status > std::numeric_limits<std::int32_t>::max())
                fatalError("bank page: the payment status does not fit in 32 bits");
        }
        isBackPressed = false;
        qCDebug(lcPayment, "func finish");
        postLoader(false);
        MerchantReport::finish(merchantVC, std::move(trnasactionStatus));
    }

private:
    void postLoader(bool flag)
    {
        dispatch::main().async([screen = m_screen, flag] {
            if (screen)
                screen->loadering(flag);
        });
    }

    QPointer<PaymentViewController> m_screen;
};

QString PaymentViewController::returnAddressMarker()
{
    return u"KoVena//v3/return"_s;
}

QByteArray PaymentViewController::asciiLossy(const QString &text)
{
    QByteArray out;
    out.reserve(text.size());
    for (const char32_t c : text.toUcs4())
        out.append(c < 0x80 ? char(c) : '?');
    return out;
}

PaymentViewController::PaymentViewController(QWidget *parent)
    : BankPageScreen(parent)
    , m_profile(new QWebEngineProfile(this)) // off the record: nothing of the bank's is stored
    , m_reporter(std::make_shared<Reporter>(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *view = new QWebEngineView(this);
    view->setObjectName(u"webView"_s);
    view->setPage(new BankWebPage(m_profile, this, view));
    view->setContextMenuPolicy(Qt::NoContextMenu);
    layout->addWidget(view);
    webView = view;
}

PaymentViewController::~PaymentViewController()
{
    // The page (the view's child) must go before the profile it was made with.
    delete webView.data();
}

void PaymentViewController::viewDidLoad()
{
    BankPageScreen::viewDidLoad();
    addDismissKeyboardTap();
    addDoneButtonOnKeyboard();

    postData.replace(u"device_type=1"_s, u"device_type=0"_s);

    const QUrl address(url, QUrl::StrictMode);
    if (!address.isValid() || address.isRelative())
        fatalError("bank page: the page address cannot be parsed");
    if (!webView)
        fatalError("bank page: there is no web view");

    // The request carries the form body and no header of its own.
    QWebEngineHttpRequest request(address, QWebEngineHttpRequest::Post);
    request.setPostData(asciiLossy(postData));

    m_reporter->merchantVC = merchantVC;
    webView->setEnabled(true);
    webView->load(request);
}

bool PaymentViewController::shouldStartLoad(const QUrl &url)
{
    if (url.isEmpty())
        fatalError("bank page: a navigation request has no address");
    scheme = url.toString(QUrl::FullyEncoded);
    if (!scheme.contains(returnAddressMarker()))
        return true;

    // A one-shot timer fired at once: exactly one enquiry, now, and none when it would be due.
    QPointer<PaymentViewController> self(this);
    const auto timer = Timer::scheduledTimer(
        4s,
        [self](Timer &fired) {
            if (self)
                self->waitForStatus(fired);
        },
        false);
    timer->fire();
    webView->stop();
    return false;
}

void PaymentViewController::waitForStatus(Timer &timer)
{
    Q_UNUSED(timer)
    loadering(true);
    qCDebug(lcPayment) << "status enquiry for transaction" << kovenaTransactionId;
    ApiManager::getTransactionStatus(m_reporter, kovenaTransactionId, QString());
}

void PaymentViewController::finish(std::shared_ptr<TransactionStatus> trnasactionStatus)
{
    m_reporter->finish(std::move(trnasactionStatus));
}

bool PaymentViewController::isBackPressed() const
{
    return m_reporter->isBackPressed;
}

void PaymentViewController::viewWillDisappear(bool animated)
{
    BankPageScreen::viewWillDisappear(animated);
    if (!m_reporter->isBackPressed)
        return;
    dispatch::main().async([reporter = m_reporter] {
        auto record = std::make_shared<TransactionStatus>();
        record->data = std::make_shared<TransactionStatus::Data>();
        record->data->paymentStatus = -1;
        reporter->finish(std::move(record));
    });
}

void PaymentViewController::loading(bool flag)
{
    if (!flag) {
        delete overlay.data();
        return;
    }
    auto *cover = new QWidget(this);
    cover->setObjectName(u"bankPageOverlay"_s);
    cover->setAttribute(Qt::WA_StyledBackground);
    cover->setStyleSheet(u"background: rgba(0, 0, 0, 204);"_s); // black at 0.8
    cover->setGeometry(rect());
    cover->show();
    cover->raise();
    overlay = cover;
}

} // namespace kovena
