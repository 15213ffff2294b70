// Resident memory: a UPI payment that stays pending through thousands of status answers (the
// sandbox answering "pending", polling on the manual clock), and checkouts started and
// cancelled one after another. Growth is measured after a warm-up, from /proc/self/statm.
#include "Figures.h"
#include "MerchantScreen.h"

#include "api/ApiManager.h"
#include "flow/MainKovena.h"
#include "flow/NavigatorController.h"
#include "flow/PaymentOptionVC.h"
#include "payment/UPIViewController.h"
#include "platform/Dispatch.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/Reachability.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"
#include "sdk/KovenaSDK.h"

#include <QCoreApplication>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace kovena::bench {

namespace {

// Forwards to the manual clock, counts the blocks other threads post (one per backend answer)
// and wakes the main thread for each, so the wait for an answer ends as it arrives.
class CountingScheduler : public Scheduler
{
public:
    explicit CountingScheduler(ManualScheduler &clock)
        : m_clock(clock)
    { }
    void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) override
    {
        m_clock.post(queue, delay, std::move(block));
        if (!dispatch::isMainThread()) {
            ++fromOtherThreads;
            QMetaObject::invokeMethod(
                qApp, [] {}, Qt::QueuedConnection);
        }
    }
    std::atomic<int> fromOtherThreads { 0 };

private:
    ManualScheduler &m_clock;
};

void collectGarbage()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

int pendingUpiFigure(const Options &options)
{
    sandbox::Sandbox sandbox;
    if (sandbox.start() == 0 || !ApiManager::setServerUrl(QString::fromStdString(sandbox.baseUrl())))
        return 1;
    reachability::setProbe([] { return std::optional<std::uint32_t>(reachability::Reachable); });
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setString(u"accessToken"_s, u"bench-token"_s);
    defaults.setString(u"customerMobNum"_s, u"9876543210"_s);
    defaults.setString(u"customerEmail"_s, u"customer@example.com"_s);
    defaults.setString(u"requestId"_s, u"REQ-BENCH"_s);
    defaults.setBool(u"retry"_s, false);

    ManualScheduler clock;
    CountingScheduler counting(clock);
    ScopedScheduler scoped(counting);
    MerchantWindow host;
    auto *nav = new NavigationController;
    auto *screen = new UPIViewController;
    screen->amount = u"249.50"_s;
    screen->merchantTransactionRefNumber = u"ORD-UPI-1"_s;
    screen->collectorId = u"COL-1"_s;
    screen->merchantVC = host.merchant;
    screen->isPaymentModeAvail = true;
    nav->setViewControllers({ new ViewController, screen });
    setRootViewController(&host.window, nav);
    clock.runDue();

    int answers = 0;
    const auto answer = [&] {
        ++answers;
        if (!waitUntil([&] { return counting.fromOtherThreads >= answers; }))
            qFatal("the sandbox did not answer");
        clock.runDue();
    };
    QTest::keyClicks(screen->tfUpiId, u"pending@kovena"_s);
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    clock.runDue();
    answer(); // the payment is registered
    answer(); // the collect request is sent
    if (screen->pollingState() != UpiPolling::State::Polling)
        qFatal("the UPI payment is not being followed");

    int polls = 0;
    const auto poll = [&] {
        clock.advance(polls++ == 0 ? 11000ms : 4000ms);
        answer();
        if (polls % 100 == 0) {
            sandbox.clearRequests(); // the sandbox's own record is not the library's memory
            collectGarbage();
        }
    };
    for (int i = 0; i < 300; ++i)
        poll();
    const double before = residentBytes();
    const int counted = options.quick ? 300 : 5000;
    for (int i = 0; i < counted; ++i)
        poll();
    collectGarbage();
    const double growth = residentBytes() - before;
    if (screen->pollingState() != UpiPolling::State::Polling || host.merchant->reports != 0)
        qFatal("the pending payment stopped being followed");
    printRow({ u"memory: UPI pending, %1 status answers"_s.arg(counted), megabytes(growth), u"-"_s, u"-"_s,
                 u"< 1 MB growth"_s, growth < 1024.0 * 1024.0 },
        options);
    reachability::setProbe({});
    return 0;
}

int checkoutsFigure(const Options &options)
{
    MerchantWindow host;
    int order = 0;
    const auto checkoutAndCancel = [&] {
        const int before = host.merchant->reports;
        KovenaSDK::instance().kovenaInit(host.merchant, u"Bench Store"_s, u"ORD-%1"_s.arg(++order),
            u"bench-token"_s, u"COL-1"_s, u"499.00"_s, u"9876543210"_s, u"customer@example.com"_s, QString(),
            u"0"_s);
        PaymentOptionVC *screen = nullptr;
        const bool loaded = waitUntil([&] {
            auto *navigator = qobject_cast<NavigatorController *>(rootViewController(&host.window));
            screen = navigator ? qobject_cast<PaymentOptionVC *>(navigator->topViewController()) : nullptr;
            return screen && screen->isViewLoaded();
        });
        if (!loaded)
            qFatal("the payment option screen never loaded");
        screen->cancelButton();
        if (!waitUntil([&] { return host.merchant->reports > before; }) || host.merchant->lastStatus != -1)
            qFatal("the cancel was not reported");
        collectGarbage();
    };
    for (int i = 0; i < 100; ++i)
        checkoutAndCancel();
    waitUntil([] { return false; }, 500);
    collectGarbage();
    const double before = residentBytes();
    const int counted = options.quick ? 100 : 1000;
    for (int i = 0; i < counted; ++i)
        checkoutAndCancel();
    waitUntil([] { return false; }, 500);
    collectGarbage();
    const double growth = residentBytes() - before;
    printRow({ u"memory: %1 checkouts started and cancelled"_s.arg(counted), megabytes(growth), u"-"_s,
                 u"-"_s, u"< 2 MB growth"_s, growth < 2.0 * 1024 * 1024 },
        options);
    return 0;
}

[[maybe_unused]] const bool pending = registerFigure("memory-upi", pendingUpiFigure);
[[maybe_unused]] const bool checkouts = registerFigure("memory-checkouts", checkoutsFigure);

} // namespace

} // namespace kovena::bench
