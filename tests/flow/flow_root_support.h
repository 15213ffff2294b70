#pragma once

// Shared by the flow and facade suites: a merchant screen that records its reports, the window
// that hosts it, and the facade's two calls with fixed arguments.
#include "flow/NavigatorController.h"
#include "model/TransactionStatus.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/UserDefaults.h"
#include "sdk/KovenaCallback.h"
#include "sdk/KovenaSDK.h"
#include "support/TestMerchant.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QMutex>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace kovena::testing {

// A merchant application's window whose content is the merchant screen.
struct MerchantWindow
{
    MerchantWindow()
    {
        window.setCentralWidget(merchant);
        window.resize(400, 700);
        window.show();
    }
    QMainWindow window;
    QPointer<TestMerchant> merchant = new TestMerchant;
};

// Fills the fields a checkout hands to a payment option screen, as the merchant passed them.
template<class Screen> Screen *withCheckoutFields(Screen *screen, TestMerchant *merchant)
{
    screen->amount = QStringLiteral("100");
    screen->merchantTransactionRefNumber = QStringLiteral("ORD-77");
    screen->accessToken = QStringLiteral("token");
    screen->collectorId = QStringLiteral("C-9");
    screen->customerMobNum = QStringLiteral("9876543210");
    screen->customerEmail = QStringLiteral("buyer@example.in");
    screen->merchantAppName = QStringLiteral("Chai Point");
    screen->merchantVC = merchant;
    return screen;
}

// A merchant window on the manual clock, with fresh user defaults and the facade's two calls.
class FlowTest : public ::testing::Test
{
protected:
    void SetUp() override { UserDefaults::resetStandardUserDefaults(); }
    static NavigatorController *rootOf(MerchantWindow &w)
    {
        return qobject_cast<NavigatorController *>(rootViewController(&w.window));
    }
    NavigatorController *navigator() { return rootOf(host); }
    static std::optional<QString> stored(const char *key)
    {
        return UserDefaults::standard().string(QLatin1String(key));
    }
    // Mode "0" routes nowhere: the flow stops on the payment option screen.
    void checkout(
        const QString &orderNo = QStringLiteral("ORD-1"), const QString &requestId = QStringLiteral("REQ-1"))
    {
        KovenaSDK::instance().kovenaInit(host.merchant, QStringLiteral("Shop"), orderNo,
            QStringLiteral("token-1"), QStringLiteral("COL-1"), QStringLiteral("100.50"),
            QStringLiteral("9876543210"), QStringLiteral("a@b.in"), requestId, QStringLiteral("0"));
    }
    void enquire(MerchantWindow &w, const char *id = "42", const char *orderId = "ORD-1")
    {
        KovenaSDK::instance().kovenaStatusInit(
            w.merchant, QLatin1String(id), QLatin1String(orderId), QStringLiteral("token-2"));
    }
    void enquire() { enquire(host); }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    MerchantWindow host;
};

} // namespace kovena::testing
