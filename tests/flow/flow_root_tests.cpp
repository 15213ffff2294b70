// The flow's root: a checkout opens the payment option screen without touching the backend; a
// status enquiry asks the in-process backend and reports its record once, on the main thread.
// Every ending of every flow, counted, is in the endings table; this is the root's own detail.
#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "flow/InitialViewController.h"
#include "flow/PaymentOptionVC.h"
#include "flow/flow_root_support.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"
#include "support/InProcessBackend.h"

#include <QTest>

#include <atomic>
#include <cstdio>
#include <tuple>

using namespace Qt::StringLiterals;

using namespace kovena;
using namespace kovena::testing;

namespace {

class FlowRootTest : public FlowTest
{
protected:
    void SetUp() override
    {
        FlowTest::SetUp();
        inProcessBackend().clearRequests();
        inProcessBackend().clearScriptedReplies();
    }
    static InitialViewController *first(MerchantWindow &w)
    {
        return rootOf(w) ? qobject_cast<InitialViewController *>(rootOf(w)->viewControllers().value(0))
                         : nullptr;
    }
    // The reply was handled on the session thread once it queued its two blocks on the main queue.
    bool waitForQueuedReply()
    {
        return QTest::qWaitFor([&] { return clock.pendingCount() >= 2; }, kWaitMs);
    }
};

TEST_F(FlowRootTest, CheckoutReplacesAnUnloadedEnquiryAndOpensThePaymentOptionScreen)
{
    enquire(); // replaced before it loads: it never reaches the backend
    checkout(u"ORD-7"_s, QString());
    clock.runDue();

    EXPECT_EQ(stored("requestId"), u"ORD-7"_s);
    EXPECT_EQ(stored("paymentMode"), u"0"_s);
    ASSERT_NE(navigator(), nullptr);
    const auto stack = navigator()->viewControllers();
    ASSERT_EQ(stack.size(), 2);
    InitialViewController *initial = first(host);
    auto *options = qobject_cast<PaymentOptionVC *>(stack[1]);
    ASSERT_TRUE(initial && options);
    EXPECT_FALSE(initial->isStatusClicked);
    EXPECT_EQ(options->merchantVC, host.merchant.data());
    // The request id and the mode travel through the user defaults, not the screens.
    const auto v = [](const std::optional<QString> &s) { return s.value_or(u"?"_s); };
    EXPECT_EQ(QStringList(
                  { v(options->amount), v(options->merchantTransactionRefNumber), v(options->merchantAppName),
                      v(options->collectorId), v(options->accessToken), v(options->customerMobNum),
                      v(options->customerEmail), v(options->requestId), v(options->paymentMode) }),
        QStringList({ "100.50", "ORD-7", "Shop", "COL-1", "token-1", "9876543210", "a@b.in", "", "" }));

    const auto transition = navigator()->lastTransition();
    ASSERT_TRUE(transition.has_value());
    EXPECT_EQ(std::tuple(transition->duration, transition->type, transition->subtype),
        std::tuple(0.3, u"moveIn"_s, u"fromTop"_s));
    EXPECT_FALSE(initial->loader().container()->parentWidget()); // no overlay on a checkout
    EXPECT_TRUE(inProcessBackend().requests().empty());
    EXPECT_EQ(host.merchant->callCount(), 0u);
}

TEST_F(FlowRootTest, StatusEnquiryAsksOnceAndReportsAfterHidingTheOverlay)
{
    enquire(host, "44", "ORD-3");
    ASSERT_NE(navigator(), nullptr);
    // Only the enquiry's own fields reach the first screen.
    navigator()->checkoutParams.amount = u"should not travel"_s;
    navigator()->checkoutParams.requestId = u"should not be stored"_s;
    clock.runDue();
    InitialViewController *initial = first(host);
    ASSERT_NE(initial, nullptr);
    EXPECT_TRUE(initial->isStatusClicked);
    EXPECT_EQ(QStringList({ initial->kovenaTxnId, initial->orderId, initial->amount }),
        QStringList({ "44", "ORD-3", "" }));
    EXPECT_EQ(initial->merchantVC, host.merchant.data());
    EXPECT_FALSE(UserDefaults::standard().contains(u"requestId"_s));
    EXPECT_EQ(navigator()->viewControllers().size(), 1);
    EXPECT_EQ(initial->loader().container()->parentWidget(), initial);
    EXPECT_TRUE(initial->loader().isAnimating());

    bool overlayGoneAtReport = false;
    host.merchant->onCall = [&](const std::shared_ptr<TransactionStatus> &) {
        overlayGoneAtReport = !initial->loader().container()->parentWidget();
    };
    ASSERT_TRUE(waitForQueuedReply());
    EXPECT_EQ(host.merchant->callCount(), 0u); // nothing reaches the merchant off the main queue
    clock.runDue();

    const auto requests = inProcessBackend().requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].path, "/KoVena/v1/sdk/txn/1/false/2");
    EXPECT_EQ(requests[0].header("Authorization"), "Bearer token-2");
    EXPECT_EQ(JsonValue::parse(requests[0].body),
        JsonValue({ { "kovenaRefNumber", "44" }, { "transactionRefNumber", "ORD-3" }, { "txnOtp", "" } }));

    const auto calls = host.merchant->calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_TRUE(overlayGoneAtReport);
    const auto &record = calls[0].record;
    ASSERT_TRUE(record && record->data);
    EXPECT_EQ(record->responseCode, u"200TRANSRESPSUCC"_s);
    EXPECT_EQ(record->data->transactionRefNumber, u"ORD-3"_s);
    EXPECT_EQ(initial->navigationController()->topViewController(), initial); // the screens stay
}

TEST_F(FlowRootTest, AReplyQueuedForAFlowThatWasReplacedReachesNoOne)
{
    enquire();
    clock.runDue();
    QPointer<InitialViewController> enquiring = first(host);
    ASSERT_FALSE(enquiring.isNull());
    // The reply has been handled on the session thread and waits on the main queue when the
    // merchant starts a checkout in the same window; the event loop then releases the replaced
    // flow before it runs anything else.
    ASSERT_TRUE(waitForQueuedReply());
    checkout();
    clock.advance(std::chrono::hours(1));
    EXPECT_TRUE(enquiring.isNull());
    EXPECT_EQ(host.merchant->callCount(), 0u);
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_EQ(inProcessBackend().requests().size(), 1u);
}

// Screens hand the client a callback object and may go away before the reply; the client keeps
// the object alive until the reply has been delivered to it, and no longer.
TEST(StatusRequest, TheClientHoldsItsCallbackUntilTheReplyArrives)
{
    class Recorder final : public TransactionStatusCallback
    {
    public:
        explicit Recorder(std::shared_ptr<std::atomic<int>> calls)
            : m_calls(std::move(calls))
        { }
        void getTransactionStatus(std::shared_ptr<TransactionStatus>) override { ++*m_calls; }

    private:
        std::shared_ptr<std::atomic<int>> m_calls;
    };
    sandbox::Sandbox &backend = inProcessBackend();
    backend.clearScriptedReplies();
    sandbox::ScriptedReply slow;
    slow.delay = std::chrono::milliseconds(300);
    slow.handleNormally = true;
    backend.enqueueReply(kStatusEndpoint, slow);

    auto calls = std::make_shared<std::atomic<int>>(0);
    auto callback = std::make_shared<Recorder>(calls);
    const std::weak_ptr<Recorder> held = callback;
    const DataTaskPtr task = ApiManager::getTransactionStatus(std::move(callback), u"42"_s, u"ORD-1"_s);
    EXPECT_FALSE(held.expired()) << "the caller dropped its reference: only the client holds it now";
    ASSERT_TRUE(QTest::qWaitFor([&] { return calls->load() == 1; }, kWaitMs));
    EXPECT_TRUE(QTest::qWaitFor([&] { return held.expired(); }, kWaitMs)) << "kept after its reply";
    EXPECT_EQ(calls->load(), 1);
    EXPECT_TRUE(task->isFinished());
}

using FlowRootDeathTest = FlowRootTest;

TEST_F(FlowRootDeathTest, AFailedEnquiryStopsTheProcessWithoutAReport)
{
    // An unknown transaction is a failed request: there is no record to hand over.
    host.merchant->onCall = [](const auto &) { std::fprintf(stderr, "[merchant called]\n"); };
    EXPECT_DEATH(
        {
            enquire(host, "999", "NOPE");
            clock.runDue();
            if (waitForQueuedReply())
                clock.runDue();
        },
        "^[^[]*" + fatalLine("finish: no transaction status to report"));
}

TEST(FlowRootDeath, FirstScreensOfAnotherKindStopTheProcess)
{
    NavigatorController navigator;
    navigator.setViewControllers({ new BaseViewController });
    EXPECT_DEATH(navigator.loadViewIfNeeded(),
        fatalLine("NavigatorController: the first screen of the checkout is not an InitialViewController"));

    // A storyboard whose payment option scene is another screen.
    Storyboard board(u"Other"_s);
    board.registerScene(u"Initial"_s, [] { return new InitialViewController; });
    board.registerScene(u"PaymentOptionVC"_s, [] { return new BaseViewController; });
    std::unique_ptr<ViewController> initial(board.instantiateViewController(u"Initial"_s));
    EXPECT_DEATH(initial->loadViewIfNeeded(),
        fatalLine("InitialViewController: the scene PaymentOptionVC is not a PaymentOptionVC"));
}

} // namespace
