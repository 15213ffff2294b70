// The facade: what kovenaInit and kovenaStatusInit leave behind when they return, when the flow
// they install starts, and the arguments they refuse.
#include "api/ApiManager.h"
#include "api/Callbacks.h"
#include "flow/MainKovena.h"
#include "flow/flow_root_support.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"
#include "support/InProcessBackend.h"

#include <QEvent>
#include <QTest>

using namespace kovena;
using namespace kovena::testing;

namespace {

QStringList fieldsOf(const CheckoutParams &p)
{
    return { p.amount, p.merchantTransactionRefNumber, p.collectorId, p.accessToken, p.customerMobNum,
        p.customerEmail, p.merchantAppName, p.requestId, p.paymentMode, p.kovenaTxnId, p.orderId };
}

class FacadeTest : public FlowTest
{
protected:
    // Runs the main queue until `merchant` has had `calls` reports.
    bool reportsReach(TestMerchant *merchant, std::size_t calls)
    {
        return QTest::qWaitFor(
            [&] {
                clock.runDue();
                return merchant->callCount() >= calls;
            },
            kWaitMs);
    }
};

// A checkout, then a status enquiry over it: what each leaves stored and hands to its flow.
TEST_F(FacadeTest, CheckoutAndEnquiryInstallTheFlowAndStoreOnlyTheCustomerFields)
{
    UserDefaults::standard().setBool(QStringLiteral("retry"), true);
    UserDefaults::standard().setString(QStringLiteral("requestId"), QStringLiteral("stale"));
    checkout();

    EXPECT_EQ(stored("customerMobNum"), QStringLiteral("9876543210"));
    EXPECT_EQ(stored("customerEmail"), QStringLiteral("a@b.in"));
    EXPECT_EQ(stored("accessToken"), QStringLiteral("token-1"));
    // Reset first, and the flow itself has not loaded yet: nothing else is there.
    for (const char *key : { "retry", "requestId", "paymentMode" })
        EXPECT_FALSE(UserDefaults::standard().contains(QLatin1String(key))) << key;

    ASSERT_NE(navigator(), nullptr);
    EXPECT_EQ(host.window.centralWidget(), navigator());
    EXPECT_FALSE(navigator()->isViewLoaded());
    ASSERT_FALSE(host.merchant.isNull());
    EXPECT_TRUE(host.merchant->isHidden());
    const CheckoutParams &p = navigator()->checkoutParams;
    EXPECT_EQ(fieldsOf(p),
        QStringList(
            { "100.50", "ORD-1", "COL-1", "token-1", "9876543210", "a@b.in", "Shop", "REQ-1", "0", "", "" }));
    EXPECT_FALSE(p.isStatusClicked);
    EXPECT_EQ(p.merchantVC, host.merchant.data());

    // The enquiry keeps the earlier customer fields and replaces only the token.
    enquire();
    EXPECT_EQ(stored("customerMobNum"), QStringLiteral("9876543210"));
    EXPECT_EQ(stored("customerEmail"), QStringLiteral("a@b.in"));
    EXPECT_EQ(stored("accessToken"), QStringLiteral("token-2"));
    ASSERT_NE(navigator(), nullptr);
    const CheckoutParams &q = navigator()->checkoutParams;
    EXPECT_EQ(fieldsOf(q), QStringList({ "", "", "", "", "", "", "", "", "", "42", "ORD-1" }));
    EXPECT_TRUE(q.isStatusClicked);
    EXPECT_EQ(q.merchantVC, host.merchant.data());
}

// Each checkout releases the controller of the one before, whose flow had loaded; an empty
// request id falls back to the order number.
TEST_F(FacadeTest, EachCheckoutReleasesThePreviousControllerAndFillsInTheRequestId)
{
    const std::tuple<const char *, const char *, const char *> rows[]
        = { { "ORD-7", "", "ORD-7" }, { "ORD-8", " ", " " }, { "ORD-9", "REQ-9", "REQ-9" } };
    QPointer<NavigatorController> previous;
    for (const auto &[order, requestId, expected] : rows) {
        checkout(QString::fromLatin1(order), QString::fromLatin1(requestId));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(previous.isNull()) << '"' << requestId << '"';
        ASSERT_NE(navigator(), nullptr);
        EXPECT_EQ(navigator()->checkoutParams.requestId, QString::fromLatin1(expected))
            << '"' << requestId << '"';
        previous = navigator();
        clock.runDue(); // the flow loads and shows its screens
        ASSERT_FALSE(previous.isNull());
    }
}

// A merchant screen in a window that is not on screen: the call shows nothing, so the flow
// neither asks the backend nor reports until the window is shown; then it runs as usual.
TEST_F(FacadeTest, AFlowInAWindowNotShownWaitsForTheWindow)
{
    sandbox::Sandbox &backend = inProcessBackend();
    // A status enquiry (it asks the backend at once) and a checkout that fails validation (it
    // reports at once).
    const std::function<void(QWidget *)> starts[] = {
        [](QWidget *merchant) {
            KovenaSDK::instance().kovenaStatusInit(
                merchant, QStringLiteral("42"), QStringLiteral("ORD-1"), QStringLiteral("token-3"));
        },
        [](QWidget *merchant) {
            KovenaSDK::instance().kovenaInit(merchant, QStringLiteral("Shop"), QStringLiteral("ORD-9"),
                QStringLiteral(""), QStringLiteral("COL-1"), QStringLiteral("100"),
                QStringLiteral("9876543210"), QStringLiteral("a@b.in"), QString(), QStringLiteral("4"));
        },
    };
    const QStringList reports[]
        = { { QStringLiteral("1 Success") }, { QStringLiteral("-105 Missing SDK params,orderId nil") } };
    for (std::size_t i = 0; i < std::size(starts); ++i) {
        SCOPED_TRACE(i);
        backend.clearRequests();
        QMainWindow window;
        QPointer<TestMerchant> merchant = new TestMerchant;
        window.setCentralWidget(merchant);
        starts[i](merchant);
        clock.advance(std::chrono::hours(1));
        auto *root = qobject_cast<NavigatorController *>(rootViewController(&window));
        ASSERT_NE(root, nullptr);
        EXPECT_FALSE(root->isViewLoaded());
        EXPECT_FALSE(UserDefaults::standard().contains(QStringLiteral("requestId")));
        // Anything the flow sent would have been answered and queued by the time a second
        // request is recorded and answered.
        KovenaSDK::instance().kovenaStatusInit(
            host.merchant, QStringLiteral("43"), QStringLiteral("ORD-2"), QStringLiteral("token-3"));
        ASSERT_TRUE(reportsReach(host.merchant, i + 1));
        EXPECT_EQ(host.merchant->callCount(), i + 1);
        EXPECT_EQ(backend.requests().size(), 1u);
        EXPECT_EQ(merchant->callCount(), 0u);

        window.show();
        ASSERT_TRUE(reportsReach(merchant, 1));
        EXPECT_TRUE(root->isViewLoaded());
        EXPECT_EQ(merchant->statuses(), reports[i]);
    }
}

// The token reaches the client through the user defaults once; a request made after the entry is
// gone still carries it.
TEST_F(FacadeTest, TheTokenOutlivesItsStoredEntry)
{
    sandbox::Sandbox &backend = inProcessBackend();
    backend.clearRequests();
    enquire();
    ASSERT_TRUE(reportsReach(host.merchant, 1));
    UserDefaults::standard().remove(QStringLiteral("accessToken"));
    ASSERT_FALSE(UserDefaults::standard().contains(QStringLiteral("accessToken")));

    class Ignore final : public TransactionStatusCallback
    {
        void getTransactionStatus(std::shared_ptr<TransactionStatus>) override { }
    };
    ApiManager::getTransactionStatus(
        std::make_shared<Ignore>(), QStringLiteral("43"), QStringLiteral("ORD-2"));
    ASSERT_TRUE(backend.waitForRequests(2, std::chrono::milliseconds(kWaitMs)));
    for (const auto &request : backend.requests())
        EXPECT_EQ(request.header("Authorization"), "Bearer token-2");
}

using FacadeDeathTest = FacadeTest;

TEST_F(FacadeDeathTest, MissingRequiredArgumentsStopTheProcess)
{
    const QString s = QStringLiteral("x");
    const std::optional<QString> ok = QStringLiteral("1"), nil;
    KovenaSDK &sdk = KovenaSDK::instance();
    QWidget *merchant = host.merchant;

    EXPECT_DEATH(sdk.kovenaInit(nullptr, s, ok, s, s, ok, ok, ok, s, s),
        fatalLine("kovenaInit: merchantVC is required"));
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, nil, s, s, ok, ok, ok, s, s),
        fatalLine("kovenaInit: orderNo is required"));
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, nil, ok, ok, s, s),
        fatalLine("kovenaInit: amount is required"));
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, ok, nil, ok, s, s),
        fatalLine("kovenaInit: customerMobNum is required"));
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, ok, ok, nil, s, s),
        fatalLine("kovenaInit: customerEmail is required"));
    EXPECT_DEATH(
        sdk.kovenaStatusInit(nullptr, s, ok, s), fatalLine("kovenaStatusInit: merchantVC is required"));
    EXPECT_DEATH(
        sdk.kovenaStatusInit(merchant, s, nil, s), fatalLine("kovenaStatusInit: orderId is required"));
}

TEST_F(FacadeDeathTest, AStoryboardWithoutTheNavigatorFirstStopsTheProcess)
{
    EXPECT_DEATH(
        {
            mainKovenaStoryboard().setInitialScene(QStringLiteral("PaymentOptionVC"));
            enquire();
        },
        fatalLine(
            "kovenaStatusInit: the storyboard MainKovena has no NavigatorController as its initial scene"));
}

} // namespace
