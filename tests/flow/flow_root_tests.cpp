// The flow's root: a checkout opens the payment option screen without touching the backend; a
// status enquiry asks the in-process backend and reports its record once, on the main thread.
#include "api/ApiManager.h"
#include "flow/InitialViewController.h"
#include "flow/PaymentOptionVC.h"
#include "flow/flow_root_support.h"
#include "sandbox/Sandbox.h"

#include <QEvent>
#include <QTest>

using namespace kovena;
using namespace kovena::testing;

namespace {

// The in-process backend, started once; the library is pointed at it before its first request.
sandbox::Sandbox &statusBackend()
{
    static sandbox::Sandbox backend;
    [[maybe_unused]] static const bool started = [] {
        EXPECT_NE(backend.start(0), 0) << "the sandbox did not start";
        EXPECT_TRUE(ApiManager::setServerUrl(QString::fromStdString(backend.baseUrl())));
        return true;
    }();
    return backend;
}

class FlowRootTest : public FlowTest
{
protected:
    void SetUp() override
    {
        FlowTest::SetUp();
        statusBackend().clearRequests();
        statusBackend().clearScriptedReplies();
    }
    static InitialViewController *first(MerchantWindow &w)
    {
        return rootOf(w) ? qobject_cast<InitialViewController *>(rootOf(w)->viewControllers().value(0))
                         : nullptr;
    }
    // The reply was handled on the session thread once it queued its two blocks on the main queue.
    bool waitForQueuedReply()
    {
        return QTest::qWaitFor([&] { return clock.pendingCount() >= 2; }, 10000);
    }
};

TEST_F(FlowRootTest, CheckoutReplacesAnUnloadedEnquiryAndOpensThePaymentOptionScreen)
{
    enquire(); // replaced before it loads: it never reaches the backend
    checkout(QStringLiteral("ORD-7"), QString());
    clock.runDue();

    EXPECT_EQ(stored("requestId"), QStringLiteral("ORD-7"));
    EXPECT_EQ(stored("paymentMode"), QStringLiteral("0"));
    ASSERT_NE(navigator(), nullptr);
    const auto stack = navigator()->viewControllers();
    ASSERT_EQ(stack.size(), 2);
    InitialViewController *initial = first(host);
    auto *options = qobject_cast<PaymentOptionVC *>(stack[1]);
    ASSERT_TRUE(initial && options);
    EXPECT_EQ(options->storyboardIdentifier(), QStringLiteral("PaymentOptionVC"));
    EXPECT_FALSE(initial->isStatusClicked);
    EXPECT_EQ(initial->tapRecognizerCount(), 2);
    EXPECT_EQ(initial->merchantVC, host.merchant.data());
    EXPECT_EQ(options->merchantVC, host.merchant.data());
    // The request id and the mode travel through the user defaults, not the screens.
    const QStringList expected
        = { "100.50", "ORD-7", "Shop", "COL-1", "token-1", "9876543210", "a@b.in", "", "" };
    const auto v = [](const std::optional<QString> &s) { return s.value_or(QStringLiteral("?")); };
    EXPECT_EQ(QStringList(
                  { v(options->amount), v(options->merchantTransactionRefNumber), v(options->merchantAppName),
                      v(options->collectorId), v(options->accessToken), v(options->customerMobNum),
                      v(options->customerEmail), v(options->requestId), v(options->paymentMode) }),
        expected);
    EXPECT_EQ(QStringList({ initial->amount, initial->merchantTransactionRefNumber, initial->merchantAppName,
                  initial->collectorId, initial->accessToken, initial->customerMobNum, initial->customerEmail,
                  initial->requestId, initial->paymentMode }),
        expected);

    const auto transition = navigator()->lastTransition();
    ASSERT_TRUE(transition.has_value());
    EXPECT_DOUBLE_EQ(transition->duration, 0.3);
    EXPECT_EQ(transition->type, QStringLiteral("moveIn"));
    EXPECT_EQ(transition->subtype, QStringLiteral("fromTop"));
    EXPECT_FALSE(initial->loader().container()->parentWidget()); // no overlay on a checkout
    EXPECT_TRUE(statusBackend().requests().empty());
    EXPECT_EQ(host.merchant->callCount(), 0u);
}

TEST_F(FlowRootTest, StatusEnquiryReportsTheBackendsRecordOnceOnTheMainThread)
{
    const struct
    {
        const char *id, *order;
        qint64 paymentStatus;
        const char *description;
    } rows[] = { { "42", "ORD-1", 1, "Success" }, { "43", "ORD-2", 2, "Fail" },
        { "44", "ORD-3", 14, "Pending" }, { "45", "ORD-4", 11, "Success" }, { "46", "ORD-5", 5, "Error" } };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.id);
        statusBackend().clearRequests();
        UserDefaults::resetStandardUserDefaults();
        MerchantWindow window;
        enquire(window, row.id, row.order);
        ASSERT_NE(rootOf(window), nullptr);
        // Only the enquiry's own fields reach the first screen.
        rootOf(window)->checkoutParams.amount = QStringLiteral("should not travel");
        rootOf(window)->checkoutParams.requestId = QStringLiteral("should not be stored");
        clock.runDue();
        InitialViewController *initial = first(window);
        ASSERT_NE(initial, nullptr);
        EXPECT_TRUE(initial->isStatusClicked);
        EXPECT_EQ(QStringList({ initial->kovenaTxnId, initial->orderId, initial->amount }),
            QStringList({ row.id, row.order, "" }));
        EXPECT_EQ(initial->merchantVC, window.merchant.data());
        EXPECT_FALSE(UserDefaults::standard().contains(QStringLiteral("requestId")));
        EXPECT_EQ(rootOf(window)->viewControllers().size(), 1);
        EXPECT_EQ(initial->loader().container()->parentWidget(), initial);
        EXPECT_TRUE(initial->loader().isAnimating());

        bool overlayGoneAtReport = false;
        window.merchant->onCall = [&](const std::shared_ptr<TransactionStatus> &) {
            overlayGoneAtReport = !initial->loader().container()->parentWidget();
        };
        ASSERT_TRUE(waitForQueuedReply());
        EXPECT_EQ(window.merchant->callCount(), 0u); // nothing reaches the merchant off the main queue
        clock.runDue();

        const auto requests = statusBackend().requests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].path, "/KoVena/v1/sdk/txn/1/false/2");
        EXPECT_EQ(requests[0].header("Authorization"), "Bearer token-2");
        EXPECT_EQ(JsonValue::parse(requests[0].body),
            JsonValue(
                { { "kovenaRefNumber", row.id }, { "transactionRefNumber", row.order }, { "txnOtp", "" } }));

        const auto calls = window.merchant->calls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_TRUE(calls[0].onMainThread);
        EXPECT_TRUE(overlayGoneAtReport);
        const auto &record = calls[0].record;
        ASSERT_TRUE(record && record->data);
        EXPECT_EQ(record->responseCode, QStringLiteral("200TRANSRESPSUCC"));
        EXPECT_EQ(record->data->paymentStatus, row.paymentStatus);
        EXPECT_EQ(record->data->description, QString::fromLatin1(row.description));
        EXPECT_EQ(record->data->transactionRefNumber, QString::fromLatin1(row.order));
        EXPECT_EQ(initial->navigationController()->topViewController(), initial); // the screens stay
    }
}

TEST_F(FlowRootTest, AReplyForAFlowThatWasReplacedReachesNoOne)
{
    // The backend answers slowly; meanwhile the merchant starts a checkout in the same window.
    statusBackend().enqueueReply("v1/sdk/txn/1/false/2",
        sandbox::ScriptedReply { 200, {}, false, std::chrono::milliseconds(300), true });
    enquire();
    clock.runDue();
    QPointer<InitialViewController> enquiring = first(host);
    ASSERT_FALSE(enquiring.isNull());
    ASSERT_TRUE(statusBackend().waitForRequests(1, std::chrono::seconds(10)));

    checkout();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(enquiring.isNull());
    QTest::qWait(600); // longer than the backend's delay: a late reply would be queued by now
    clock.runDue();
    EXPECT_EQ(host.merchant->callCount(), 0u);
}

using FlowRootDeathTest = FlowRootTest;

TEST_F(FlowRootDeathTest, AFailedEnquiryStopsTheProcessWithoutAReport)
{
    // An unknown transaction is a failed request: there is no record to hand over.
    EXPECT_DEATH(
        {
            enquire(host, "999", "NOPE");
            clock.runDue();
            if (waitForQueuedReply())
                clock.runDue();
        },
        "no transaction status");
}

TEST(FlowRootDeath, AFirstScreenOfAnotherKindStopsTheProcess)
{
    NavigatorController navigator;
    navigator.setViewControllers({ new BaseViewController });
    EXPECT_DEATH(navigator.loadViewIfNeeded(), "not an InitialViewController");
}

} // namespace
