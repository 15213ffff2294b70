// The UPI screen driven through its widgets, against the in-process sandbox backend, on the
// manual clock. Replies arrive in real time on the session thread and are queued into the
// manual clock; the tests wait for them with bounded loops, then move the clock.
#include "payment/UPIViewController.h"
#include "api/ApiManager.h"
#include "model/TransactionStatus.h"
#include "platform/AlertController.h"
#include "platform/Dispatch.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/Reachability.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"
#include "sdk/KovenaCallback.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>

using namespace std::chrono_literals;

namespace kovena {
namespace {

const std::string kStatusPath = "/KoVena/v1/sdk/txn/1/false/2";
const std::string kRegisterPath = "/KoVena/v1/sdk/payForService";
const std::string kCollectPath = "/KoVena/v1/sdk/sendCollectOrSMS";

sandbox::Sandbox *g_sandbox = nullptr;

class SandboxEnvironment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        g_sandbox = new sandbox::Sandbox;
        ASSERT_NE(g_sandbox->start(), 0);
        ASSERT_TRUE(ApiManager::setServerUrl(QString::fromStdString(g_sandbox->baseUrl())));
    }
    void TearDown() override
    {
        delete g_sandbox;
        g_sandbox = nullptr;
    }
};
[[maybe_unused]] const auto *g_environment = ::testing::AddGlobalTestEnvironment(new SandboxEnvironment);

// Forwards to the manual clock and counts what other threads queue: each backend answer is one
// such block, so the tests know when an answer has arrived.
class CountingScheduler : public Scheduler
{
public:
    explicit CountingScheduler(ManualScheduler &clock)
        : m_clock(clock)
    { }
    void post(QueueKind queue, std::chrono::milliseconds delay, std::function<void()> block) override
    {
        if (!dispatch::isMainThread())
            ++m_fromOtherThreads;
        m_clock.post(queue, delay, std::move(block));
    }
    int fromOtherThreads() const { return m_fromOtherThreads; }

private:
    ManualScheduler &m_clock;
    std::atomic<int> m_fromOtherThreads { 0 };
};

class Merchant : public QWidget, public KovenaCallback
{
public:
    using QWidget::QWidget;
    void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) override
    {
        reports.push_back(std::move(transactionStatus));
        onMainThread = onMainThread && dispatch::isMainThread();
    }
    std::vector<std::shared_ptr<TransactionStatus>> reports;
    bool onMainThread = true;
};

std::atomic<bool> g_online { true };

bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds timeout = 5000ms)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeout.count())
            return false;
        QTest::qWait(2);
    }
    return true;
}

nlohmann::json bodyOf(const sandbox::RecordedRequest &request)
{
    return nlohmann::json::parse(request.body);
}

class UpiScreenTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(g_sandbox, nullptr);
        g_sandbox->clearScriptedReplies();
        g_sandbox->clearRequests();
        g_online = true;
        reachability::setProbe(
            [] { return std::optional<std::uint32_t>(g_online ? reachability::Reachable : 0u); });

        UserDefaults &defaults = UserDefaults::standard();
        defaults.setString(QStringLiteral("accessToken"), QStringLiteral("upi-test-token"));
        defaults.setString(QStringLiteral("customerMobNum"), QStringLiteral("9876543210"));
        defaults.setString(QStringLiteral("customerEmail"), QStringLiteral("buyer@example.in"));
        defaults.setString(QStringLiteral("requestId"), QStringLiteral("REQ-UPI"));
        defaults.setBool(QStringLiteral("retry"), false);

        static int serial = 0;
        reference = QStringLiteral("ORD-UPI-%1").arg(++serial);

        window.resize(375, 667);
        merchant = new Merchant(&window);
        nav = new NavigationController;
        screen = new UPIViewController;
        screen->amount = QStringLiteral("249.50");
        screen->merchantTransactionRefNumber = reference;
        screen->collectorId = QStringLiteral("COL-77");
        screen->merchantVC = merchant;
        screen->isPaymentModeAvail = true;
        nav->setViewControllers({ new ViewController, screen.data() });
        setRootViewController(&window, nav);
        window.show();
        clock.runDue();
        ASSERT_TRUE(screen->isViewLoaded());
    }

    void TearDown() override { reachability::setProbe({}); }

    std::vector<sandbox::RecordedRequest> requestsTo(const std::string &path) const
    {
        std::vector<sandbox::RecordedRequest> out;
        for (auto &request : g_sandbox->requests())
            if (request.path == path)
                out.push_back(request);
        return out;
    }

    QStringList toasts() const
    {
        QStringList texts;
        for (const QLabel *label : screen->findChildren<QLabel *>(QStringLiteral("kovenaToast")))
            texts << label->text();
        return texts;
    }

    void type(const QString &text) { QTest::keyClicks(screen->tfUpiId, text); }

    void proceed(const QString &vpa)
    {
        type(vpa);
        QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
        clock.runDue();
    }

    // Waits until `count` backend answers have been queued in all, then runs them.
    bool answer(int count)
    {
        const bool arrived = waitUntil([&] { return counting.fromOtherThreads() >= count; });
        clock.runDue();
        return arrived;
    }

    // From proceed to the accepted collect request; the clock then stands where polling starts.
    void acceptCollect(const QString &vpa)
    {
        proceed(vpa);
        ASSERT_TRUE(answer(1));
        ASSERT_TRUE(answer(2));
        ASSERT_EQ(screen->pollingState(), UpiPolling::State::Polling);
    }

    ManualScheduler clock;
    CountingScheduler counting { clock };
    ScopedScheduler scoped { counting };
    QWidget window;
    QPointer<Merchant> merchant;
    QPointer<NavigationController> nav;
    QPointer<UPIViewController> screen;
    QString reference;
};

struct TypingRow
{
    const char *name;
    const char *typed;
    const char *pasted;
    const char *shown;
};

class UpiTypingTest : public UpiScreenTest, public ::testing::WithParamInterface<TypingRow>
{
};

TEST_P(UpiTypingTest, TheFieldTakesOnlyVpaCharactersInLowerCase)
{
    const TypingRow &row = GetParam();
    type(QString::fromUtf8(row.typed));
    if (row.pasted) {
        QApplication::clipboard()->setText(QString::fromUtf8(row.pasted));
        QTest::keySequence(screen->tfUpiId, QKeySequence::Paste);
    }
    EXPECT_EQ(screen->tfUpiId->text().toStdString(), row.shown);
}

INSTANTIATE_TEST_SUITE_P(Edits, UpiTypingTest,
    ::testing::Values(TypingRow { "capitals", "Ravi.Kumar@OkBank", nullptr, "ravi.kumar@okbank" },
        TypingRow { "space_refused", "ravi kumar@bank", nullptr, "ravikumar@bank" },
        TypingRow { "hash_refused", "ravi#1@bank", nullptr, "ravi1@bank" },
        TypingRow { "other_symbols_refused", "a-b+c!$@bank", nullptr, "abc@bank" },
        TypingRow { "paste_mixed_case", "", "MiXeD_Name.01@UPI", "mixed_name.01@upi" },
        TypingRow { "paste_with_space_refused_whole", "ravi", " @bank", "ravi" },
        TypingRow { "paste_non_ascii_refused", "ravi", "\u00e4@bank", "ravi" }),
    [](const auto &info) { return std::string(info.param.name); });

struct RejectRow
{
    const char *name;
    const char *vpa;
    bool online;
    const char *toast;
};

class UpiProceedRejectTest : public UpiScreenTest, public ::testing::WithParamInterface<RejectRow>
{
};

TEST_P(UpiProceedRejectTest, NothingIsSentAndTheCustomerIsTold)
{
    g_online = GetParam().online;
    proceed(QString::fromUtf8(GetParam().vpa));

    EXPECT_EQ(toasts(), QStringList { QString::fromUtf8(GetParam().toast) });
    EXPECT_FALSE(screen->task) << "a request was started";
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_EQ(screen->virtualAddress, QString::fromUtf8(GetParam().vpa));
    EXPECT_TRUE(merchant->reports.empty());
}

INSTANTIATE_TEST_SUITE_P(Rejected, UpiProceedRejectTest,
    ::testing::Values(RejectRow { "empty", "", true, "UPI id is not valid !!" },
        RejectRow { "no_handle", "ravi", true, "UPI id is not valid !!" },
        RejectRow { "mail_handle", "ravi@gmail", true, "UPI id is not valid !!" },
        RejectRow { "dotted_handle", "ravi@ok.bank", true, "UPI id is not valid !!" },
        RejectRow { "offline", "ravi@okbank", false, "No Network" },
        RejectRow { "invalid_and_offline", "ravi@", false, "UPI id is not valid !!" }),
    [](const auto &info) { return std::string(info.param.name); });

struct FlowRow
{
    const char *name;
    const char *vpa;
    // Status replies forced in place of the sandbox's own (each: paymentStatus or absent, ref).
    std::vector<std::pair<std::optional<int>, qint64>> scripted;
    std::size_t enquiries;
    qint64 paymentStatus;
    const char *description;
};

class UpiFlowTest : public UpiScreenTest, public ::testing::WithParamInterface<FlowRow>
{
};

TEST_P(UpiFlowTest, PollsOnTheClockUntilAFinalStatusAndReportsItOnce)
{
    const FlowRow &row = GetParam();
    for (const auto &[status, ref] : row.scripted) {
        nlohmann::json data { { "kovenaRefNumber", ref } };
        if (status)
            data["paymentStatus"] = *status;
        const nlohmann::json body { { "responseCode", "200TRANSRESPSUCC" }, { "data", data } };
        g_sandbox->enqueueReply("v1/sdk/txn/1/false/2", { 200, body.dump() });
    }

    acceptCollect(QString::fromUtf8(row.vpa));
    const auto collect = requestsTo(kCollectPath);
    ASSERT_EQ(collect.size(), 1u);
    const auto transactionId = bodyOf(collect[0])["kovenaRefNumber"].get<std::string>();
    EXPECT_EQ(bodyOf(collect[0])["virtualAddress"], row.vpa);

    ASSERT_TRUE(screen->presentedViewController());
    EXPECT_EQ(
        screen->presentedViewController()->storyboardIdentifier(), QStringLiteral("PopUpViewController"));
    EXPECT_TRUE(screen->loader().isAnimating());

    // The first enquiry: 11 s after the collect request was accepted, not a millisecond sooner.
    DataTaskPtr previousTask = screen->task;
    clock.advance(10999ms);
    EXPECT_EQ(screen->task, previousTask);
    EXPECT_EQ(clock.nextDueIn(), 1ms);
    clock.advance(1ms);
    EXPECT_NE(screen->task, previousTask);

    std::string expectedId;
    for (std::size_t k = 0; k < row.enquiries; ++k) {
        ASSERT_TRUE(g_sandbox->waitForRequests(2 + k + 1, 5000ms));
        const auto enquiries = requestsTo(kStatusPath);
        ASSERT_EQ(enquiries.size(), k + 1);
        const nlohmann::json body = bodyOf(enquiries[k]);
        EXPECT_EQ(body["kovenaRefNumber"], expectedId) << "enquiry " << k;
        EXPECT_EQ(body["transactionRefNumber"], reference.toStdString());
        EXPECT_EQ(body["txnOtp"], "");

        ASSERT_TRUE(answer(static_cast<int>(3 + k)));
        if (k + 1 == row.enquiries)
            break;
        expectedId = row.scripted.empty() ? transactionId : std::to_string(row.scripted[k].second);
        previousTask = screen->task;
        clock.advance(3999ms);
        EXPECT_EQ(screen->task, previousTask) << "enquiry " << k + 1 << " before 4 s";
        clock.advance(1ms);
        EXPECT_NE(screen->task, previousTask) << "enquiry " << k + 1 << " not at 4 s";
    }

    ASSERT_EQ(merchant->reports.size(), 1u);
    const auto &reported = merchant->reports[0];
    ASSERT_TRUE(reported && reported->data);
    EXPECT_EQ(reported->data->paymentStatus, row.paymentStatus);
    EXPECT_EQ(reported->data->description, QString::fromUtf8(row.description));
    EXPECT_TRUE(merchant->onMainThread);

    previousTask = screen->task;
    clock.advance(120000ms);
    EXPECT_EQ(screen->task, previousTask) << "polling went on after the final status";
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_EQ(merchant->reports.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, UpiFlowTest,
    ::testing::Values(FlowRow { "success_after_two_pending", "success@kovena", {}, 3, 1, "Success" },
        FlowRow { "failure_after_two_pending", "failure@kovena", {}, 3, 2, "Fail" },
        FlowRow { "success_at_once", "success0@kovena", {}, 1, 1, "Success" },
        FlowRow { "absent_then_pending_then_three", "pending@kovena",
            { { std::nullopt, 5550001 }, { 0, 5550002 }, { 3, 5550003 } }, 3, 3, "Success" }),
    [](const auto &info) { return std::string(info.param.name); });

struct FailureRow
{
    const char *name;
    std::vector<std::pair<std::string, sandbox::ScriptedReply>> script;
    int offlineAtAnswer; // 0: stays online
    int answers;
    const char *toast;
};

class UpiFailureTest : public UpiScreenTest, public ::testing::WithParamInterface<FailureRow>
{
};

TEST_P(UpiFailureTest, AFailedStepReturnsToTheFormIntact)
{
    const FailureRow &row = GetParam();
    for (const auto &[endpoint, reply] : row.script)
        g_sandbox->enqueueReply(endpoint, reply);

    proceed(QStringLiteral("ravi@okbank"));
    for (int n = 1; n <= row.answers; ++n) {
        ASSERT_TRUE(waitUntil([&] { return counting.fromOtherThreads() >= n; }));
        if (n == row.offlineAtAnswer)
            g_online = false;
        clock.runDue();
    }

    EXPECT_EQ(toasts(), QStringList { QString::fromUtf8(row.toast) });
    EXPECT_FALSE(screen->presentedViewController());
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_EQ(screen->pollingState(), UpiPolling::State::Idle);
    EXPECT_EQ(screen->tfUpiId->text(), QStringLiteral("ravi@okbank"));
    EXPECT_TRUE(merchant->reports.empty());
    EXPECT_EQ(requestsTo(kCollectPath).size(), row.answers == 2 ? 1u : 0u);

    // Back at the form: proceeding again registers the payment again.
    g_online = true;
    g_sandbox->clearScriptedReplies();
    const std::size_t registered = requestsTo(kRegisterPath).size();
    const DataTaskPtr failed = screen->task;
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    EXPECT_NE(screen->task, failed);
    EXPECT_TRUE(waitUntil([&] { return requestsTo(kRegisterPath).size() == registered + 1; }));
}

const std::string kRegister = "v1/sdk/payForService";
const std::string kCollect = "v1/sdk/sendCollectOrSMS";

INSTANTIATE_TEST_SUITE_P(Failures, UpiFailureTest,
    ::testing::Values(FailureRow { "registration_refused",
                          { { kRegister, { 200, R"({"success":"false","responseCode":"400BADREQ"})" } } }, 0,
                          1, "Error in payUPICollect" },
        // Two drops: the network stack may resend a request once when a kept-alive connection
        // closes before answering.
        FailureRow { "registration_connection_dropped",
            { { kRegister, { 200, "", true } }, { kRegister, { 200, "", true } } }, 0, 1,
            "Error in payUPICollect" },
        FailureRow { "collect_not_found",
            { { kCollect, { 200, R"({"success":"false","responseCode":"404TXNNOTFOUND"})" } } }, 0, 2,
            "Error in payUPICollectByVPA" },
        FailureRow { "collect_answered_with_status_code",
            { { kCollect, { 200, R"({"responseCode":"200TRANSRESPSUCC"})" } } }, 0, 2,
            "Error in payUPICollectByVPA" },
        FailureRow { "network_lost_before_collect", {}, 1, 1, "No Network" },
        FailureRow { "network_lost_before_polling", {}, 2, 2, "No Network" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(UpiScreenTest, ASecondProceedWhileTheFirstIsUnderWayIsIgnored)
{
    proceed(QStringLiteral("ravi@okbank"));
    const DataTaskPtr first = screen->task;
    ASSERT_TRUE(first);
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    EXPECT_EQ(screen->task, first);

    ASSERT_TRUE(answer(1));
    ASSERT_TRUE(answer(2));
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton); // while waiting for approval
    clock.runDue();
    EXPECT_EQ(requestsTo(kRegisterPath).size(), 1u);
    EXPECT_TRUE(toasts().isEmpty());
}

TEST_F(UpiScreenTest, LosingTheNetworkWhilePollingStopsItWithOneNotice)
{
    acceptCollect(QStringLiteral("pending@kovena"));
    clock.advance(11000ms);
    ASSERT_TRUE(g_sandbox->waitForRequests(3, 5000ms));

    ASSERT_TRUE(waitUntil([&] { return counting.fromOtherThreads() >= 3; }));
    g_online = false;
    clock.runDue();
    EXPECT_EQ(toasts(), QStringList { QStringLiteral("No Network") });

    const DataTaskPtr last = screen->task;
    g_online = true;
    clock.advance(120000ms);
    EXPECT_EQ(screen->task, last);
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_EQ(toasts(), QStringList { QStringLiteral("No Network") });
    EXPECT_EQ(requestsTo(kStatusPath).size(), 1u);
    EXPECT_TRUE(merchant->reports.empty());
}

struct LeaveRow
{
    const char *name;
    std::chrono::milliseconds popAfterAnswer;
    bool oneMoreEnquiry;
};

class UpiLeaveTest : public UpiScreenTest, public ::testing::WithParamInterface<LeaveRow>
{
};

TEST_P(UpiLeaveTest, LeavingTheScreenStopsThePollingAfterAtMostOneMoreAnswer)
{
    acceptCollect(QStringLiteral("pending@kovena"));
    clock.advance(11000ms);
    ASSERT_TRUE(answer(3));
    ASSERT_EQ(requestsTo(kStatusPath).size(), 1u);

    clock.advance(GetParam().popAfterAnswer);
    const DataTaskPtr before = screen->task;
    nav->popViewController(false);
    ASSERT_TRUE(screen) << "the popped screen is released later, by the event loop";
    clock.advance(120000ms);
    EXPECT_EQ(screen->task != before, GetParam().oneMoreEnquiry);

    if (GetParam().oneMoreEnquiry) {
        // Its answer, if the screen still exists to get it, ends the polling.
        ASSERT_TRUE(g_sandbox->waitForRequests(4, 5000ms));
        EXPECT_TRUE(waitUntil([&] { return counting.fromOtherThreads() >= 4 || !screen; }));
        clock.runDue();
        clock.advance(120000ms);
    }
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_TRUE(merchant->reports.empty());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(screen);
}

INSTANTIATE_TEST_SUITE_P(Moments, UpiLeaveTest,
    ::testing::Values(LeaveRow { "before_the_background_step", 500ms, false },
        LeaveRow { "after_the_hand_over_to_the_main_queue", 2000ms, true }),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(UpiScreenTest, CancelAsksFirstAndReportsCancelledOnProceed)
{
    EXPECT_TRUE(nav->backButton()->isHidden());
    ASSERT_TRUE(nav->rightButton()->isVisible());
    EXPECT_EQ(nav->rightButton()->text(), QStringLiteral("Cancel"));

    QTest::mouseClick(nav->rightButton(), Qt::LeftButton);
    auto *alert = qobject_cast<AlertController *>(screen->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->message(), QStringLiteral("Are you sure want to cancel transaction?"));
    QTest::mouseClick(alert->findChild<QPushButton *>(QStringLiteral("alertAction0")), Qt::LeftButton);
    clock.runDue();
    EXPECT_TRUE(merchant->reports.empty());
    EXPECT_EQ(nav->topViewController(), screen.data());

    QTest::mouseClick(nav->rightButton(), Qt::LeftButton);
    alert = qobject_cast<AlertController *>(screen->presentedViewController());
    ASSERT_TRUE(alert);
    QTest::mouseClick(alert->findChild<QPushButton *>(QStringLiteral("alertAction1")), Qt::LeftButton);
    clock.runDue();
    ASSERT_EQ(merchant->reports.size(), 1u);
    EXPECT_EQ(merchant->reports[0]->data->paymentStatus, -1);
    EXPECT_EQ(merchant->reports[0]->data->description, QStringLiteral("Cancelled"));
    EXPECT_TRUE(g_sandbox->requests().empty());
}

struct CancelRow
{
    const char *name;
    bool whilePolling; // else while the registration is in flight
};

class UpiCancelInFlightTest : public UpiScreenTest, public ::testing::WithParamInterface<CancelRow>
{
};

TEST_P(UpiCancelInFlightTest, CancellingEndsThePaymentWithOneReport)
{
    if (GetParam().whilePolling) {
        acceptCollect(QStringLiteral("success@kovena"));
        // The approval notice covers the screen until the customer taps it away.
        QWidget *popup = screen->presentedViewController();
        ASSERT_TRUE(popup);
        QTest::mouseClick(popup, Qt::LeftButton);
        clock.runDue();
        ASSERT_FALSE(screen->presentedViewController());
    } else {
        proceed(QStringLiteral("success@kovena"));
        ASSERT_TRUE(screen->task);
    }

    QTest::mouseClick(nav->rightButton(), Qt::LeftButton);
    auto *alert = qobject_cast<AlertController *>(screen->presentedViewController());
    ASSERT_TRUE(alert);
    ASSERT_TRUE(alert->trigger(QStringLiteral("Proceed")));
    clock.runDue();
    // A registration in flight answers with its cancellation, and nothing follows it.
    if (!GetParam().whilePolling) {
        ASSERT_TRUE(waitUntil([&] { return counting.fromOtherThreads() >= 1; }));
    }
    clock.runDue();
    clock.advance(120000ms);

    ASSERT_EQ(merchant->reports.size(), 1u);
    EXPECT_EQ(merchant->reports[0]->data->paymentStatus, -1);
    EXPECT_TRUE(requestsTo(kStatusPath).empty());
    EXPECT_TRUE(toasts().isEmpty());
    EXPECT_EQ(clock.pendingCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Moments, UpiCancelInFlightTest,
    ::testing::Values(CancelRow { "during_registration", false }, CancelRow { "while_polling", true }),
    [](const auto &info) { return std::string(info.param.name); });

using UpiScreenDeathTest = UpiScreenTest;

TEST_F(UpiScreenDeathTest, ACollectRequestWithoutCollectorIdIsFatal)
{
    screen->collectorId.reset();
    screen->virtualAddress = QStringLiteral("ravi@okbank");
    screen->upiCallback1(QStringLiteral("1700000000001"), reference);
    EXPECT_DEATH(clock.runDue(), "collectorId");
}

} // namespace
} // namespace kovena
