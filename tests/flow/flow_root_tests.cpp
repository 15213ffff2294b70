// The flow's root: the navigation controller hands the checkout to the first screen, which
// opens the payment option screen at once and never talks to the backend on a checkout.
#include "flow/InitialViewController.h"
#include "flow/NavigatorController.h"
#include "flow/PaymentOptionVC.h"
#include "flow/flow_root_support.h"
#include "flow/status_enquiry_backend.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/UserDefaults.h"
#include "sdk/KovenaSDK.h"

#include <gtest/gtest.h>

using namespace kovena;
using namespace kovena::testing;

namespace {

template<class Screen> QStringList checkoutFieldsOf(const Screen &s)
{
    return { s.amount.value_or("?"), s.merchantTransactionRefNumber.value_or("?"),
        s.merchantAppName.value_or("?"), s.collectorId.value_or("?"), s.accessToken.value_or("?"),
        s.customerMobNum.value_or("?"), s.customerEmail.value_or("?"), s.requestId.value_or("?"),
        s.paymentMode.value_or("?") };
}

class FlowRootTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        statusBackend().clearRequests();
        UserDefaults::resetStandardUserDefaults();
    }

    NavigatorController *navigator()
    {
        return qobject_cast<NavigatorController *>(rootViewController(&host.window));
    }
    std::optional<QString> stored(const char *key)
    {
        return UserDefaults::standard().string(QLatin1String(key));
    }

    void checkout(const QString &orderNo, const QString &requestId)
    {
        KovenaSDK::instance().kovenaInit(host.merchant, QStringLiteral("Corner Shop"), orderNo,
            QStringLiteral("token-7"), QStringLiteral("COL-7"), QStringLiteral("250.75"),
            QStringLiteral("9876543210"), QStringLiteral("buyer@example.in"), requestId, QStringLiteral("0"));
    }
    void enquire()
    {
        KovenaSDK::instance().kovenaStatusInit(
            host.merchant, QStringLiteral("42"), QStringLiteral("ORD-1"), QStringLiteral("token-1"));
    }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    MerchantWindow host;
};

TEST_F(FlowRootTest, CheckoutOpensThePaymentOptionScreenWithTheCheckout)
{
    LogCatcher log("kovena.flow");
    checkout(QStringLiteral("ORD-7"), QString());
    clock.runDue();

    EXPECT_TRUE(log.messages().contains(QStringLiteral(" NavigatorController -------")));
    EXPECT_EQ(stored("requestId"), QStringLiteral("ORD-7"));
    EXPECT_EQ(stored("paymentMode"), QStringLiteral("0"));

    ASSERT_NE(navigator(), nullptr);
    const auto stack = navigator()->viewControllers();
    ASSERT_EQ(stack.size(), 2);
    auto *initial = qobject_cast<InitialViewController *>(stack[0]);
    auto *options = qobject_cast<PaymentOptionVC *>(stack[1]);
    ASSERT_TRUE(initial && options);
    EXPECT_EQ(options->storyboardIdentifier(), QStringLiteral("PaymentOptionVC"));
    EXPECT_FALSE(initial->isStatusClicked);
    EXPECT_EQ(initial->tapRecognizerCount(), 2);
    EXPECT_EQ(initial->merchantVC, host.merchant.data());
    EXPECT_EQ(options->merchantVC, host.merchant.data());
    // The request id and the mode travel through the user defaults, not the screens.
    const QStringList expected
        = { "250.75", "ORD-7", "Corner Shop", "COL-7", "token-7", "9876543210", "buyer@example.in", "", "" };
    EXPECT_EQ(checkoutFieldsOf(*options), expected);
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

TEST_F(FlowRootTest, ACheckoutAfterAStatusEnquiryShowsTheSecondCall)
{
    enquire();
    checkout(QStringLiteral("ORD-8"), QStringLiteral("REQ-8"));
    clock.runDue();

    ASSERT_NE(navigator(), nullptr);
    auto *options = qobject_cast<PaymentOptionVC *>(navigator()->topViewController());
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(options->merchantTransactionRefNumber, QStringLiteral("ORD-8"));
    EXPECT_EQ(stored("requestId"), QStringLiteral("REQ-8"));
    EXPECT_EQ(stored("paymentMode"), QStringLiteral("0"));
    EXPECT_TRUE(statusBackend().requests().empty()); // the enquiry was replaced before it loaded
}

TEST_F(FlowRootTest, AStatusEnquiryHandsOnlyItsOwnFieldsToTheFirstScreen)
{
    enquire();
    ASSERT_NE(navigator(), nullptr);
    navigator()->checkoutParams.amount = QStringLiteral("should not travel");
    navigator()->checkoutParams.requestId = QStringLiteral("should not be stored");
    clock.runDue();

    auto *initial = qobject_cast<InitialViewController *>(navigator()->topViewController());
    ASSERT_NE(initial, nullptr);
    EXPECT_TRUE(initial->isStatusClicked);
    EXPECT_EQ(QStringList({ initial->kovenaTxnId, initial->orderId, initial->amount }),
        QStringList({ "42", "ORD-1", "" }));
    EXPECT_EQ(initial->merchantVC, host.merchant.data());
    EXPECT_FALSE(UserDefaults::standard().contains(QStringLiteral("requestId")));
    EXPECT_EQ(navigator()->viewControllers().size(), 1);
    // Let the enquiry reach the backend here, not during a later test.
    EXPECT_TRUE(statusBackend().waitForRequests(1, std::chrono::seconds(10)));
}

TEST(FlowRootDeathTest, AFirstScreenOfAnotherKindStopsTheProcess)
{
    NavigatorController navigator;
    navigator.setViewControllers({ new BaseViewController });
    EXPECT_DEATH(navigator.loadViewIfNeeded(), "not an InitialViewController");
}

} // namespace
