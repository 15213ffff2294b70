// The facade: what kovenaInit and kovenaStatusInit leave behind when they return, and the
// arguments they refuse.
#include "flow/flow_root_support.h"

#include <QEvent>

using namespace kovena;
using namespace kovena::testing;

namespace {

QStringList fieldsOf(const CheckoutParams &p)
{
    return { p.amount, p.merchantTransactionRefNumber, p.collectorId, p.accessToken, p.customerMobNum,
        p.customerEmail, p.merchantAppName, p.requestId, p.paymentMode, p.kovenaTxnId, p.orderId };
}

using FacadeTest = FlowTest;

TEST_F(FacadeTest, CheckoutInstallsTheFlowAndStoresOnlyTheCustomerFields)
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
    EXPECT_EQ(host.merchant->callCount(), 0u);
}

TEST_F(FacadeTest, EmptyRequestIdFallsBackToTheOrderNumber)
{
    const std::pair<const char *, const char *> rows[]
        = { { "", "ORD-7" }, { " ", " " }, { "REQ-9", "REQ-9" } };
    for (const auto &[requestId, expected] : rows) {
        checkout(QStringLiteral("ORD-7"), QString::fromLatin1(requestId));
        ASSERT_NE(navigator(), nullptr);
        EXPECT_EQ(navigator()->checkoutParams.requestId, QString::fromLatin1(expected))
            << '"' << requestId << '"';
    }
}

TEST_F(FacadeTest, StatusEnquiryKeepsTheEarlierCustomerFields)
{
    checkout();
    enquire();
    EXPECT_EQ(stored("customerMobNum"), QStringLiteral("9876543210"));
    EXPECT_EQ(stored("customerEmail"), QStringLiteral("a@b.in"));
    EXPECT_EQ(stored("accessToken"), QStringLiteral("token-2"));
    ASSERT_NE(navigator(), nullptr);
    const CheckoutParams &p = navigator()->checkoutParams;
    EXPECT_EQ(fieldsOf(p), QStringList({ "", "", "", "", "", "", "", "", "", "42", "ORD-1" }));
    EXPECT_TRUE(p.isStatusClicked);
    EXPECT_EQ(p.merchantVC, host.merchant.data());
}

TEST_F(FacadeTest, ASecondCheckoutReleasesTheFirstController)
{
    checkout();
    QPointer<NavigatorController> first = navigator();
    clock.runDue(); // the first flow loads and shows its screens
    ASSERT_FALSE(first.isNull());

    checkout(QStringLiteral("ORD-2"), QStringLiteral("REQ-2"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull());
    ASSERT_NE(navigator(), nullptr);
    EXPECT_EQ(navigator()->checkoutParams.merchantTransactionRefNumber, QStringLiteral("ORD-2"));
    ASSERT_FALSE(host.merchant.isNull());
    EXPECT_TRUE(host.merchant->isHidden());
}

using FacadeDeathTest = FacadeTest;

TEST_F(FacadeDeathTest, MissingRequiredArgumentsStopTheProcess)
{
    const QString s = QStringLiteral("x");
    const std::optional<QString> ok = QStringLiteral("1"), nil;
    KovenaSDK &sdk = KovenaSDK::instance();
    QWidget *merchant = host.merchant;

    EXPECT_DEATH(sdk.kovenaInit(nullptr, s, ok, s, s, ok, ok, ok, s, s), "merchantVC");
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, nil, s, s, ok, ok, ok, s, s), "orderNo");
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, nil, ok, ok, s, s), "amount");
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, ok, nil, ok, s, s), "customerMobNum");
    EXPECT_DEATH(sdk.kovenaInit(merchant, s, ok, s, s, ok, ok, nil, s, s), "customerEmail");
    EXPECT_DEATH(sdk.kovenaStatusInit(nullptr, s, ok, s), "merchantVC");
    EXPECT_DEATH(sdk.kovenaStatusInit(merchant, s, nil, s), "orderId");
}

} // namespace
