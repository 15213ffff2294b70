#pragma once

// What the payment screen suites share: the screen under test pushed above a stand-in for the
// payment option screen, the merchant it reports to, the manual clock counting the answers other
// threads queue on it, and the network switch.
#include "payment/PaymentScreen.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "support/CountingScheduler.h"
#include "support/InProcessBackend.h"
#include "support/Scoped.h"
#include "support/ScreenDriving.h"
#include "support/TestMerchant.h"

#include <QPointer>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>

namespace kovena::testing {

class ScreenFixture : public ::testing::Test
{
protected:
    // Hands `screen` the checkout the option screen would, with a merchant to report to.
    void prepare(
        PaymentScreen &screen, const QString &amount, const QString &reference, const QString &collectorId)
    {
        window.resize(375, 667);
        merchant = new TestMerchant;
        merchant->setParent(&window);
        nav = new NavigationController;
        handOverCheckout(screen, merchant, amount, reference, collectorId);
    }

    // Shows `screen` above the stand-in and runs what its appearance queued.
    void show(ViewController *screen)
    {
        root = new ViewController;
        nav->setViewControllers({ root.data(), screen });
        setRootViewController(&window, nav);
        window.show();
        clock.runDue();
    }

    // Runs the main queue until `done` holds; false if it never does.
    bool settle(const std::function<bool()> &done)
    {
        return QTest::qWaitFor(
            [&] {
                clock.runDue();
                return done();
            },
            kWaitMs);
    }

    bool arrived(int answers)
    {
        return QTest::qWaitFor([&] { return counting.fromOtherThreads() >= answers; }, kWaitMs);
    }

    // Waits until `answers` backend answers have been queued in all, then runs them.
    bool answer(int answers)
    {
        const bool ok = arrived(answers);
        clock.runDue();
        return ok;
    }

    SwitchableNetwork network;
    ManualScheduler clock;
    CountingScheduler counting { clock };
    ScopedScheduler scoped { counting };
    QWidget window;
    QPointer<TestMerchant> merchant;
    QPointer<NavigationController> nav;
    QPointer<ViewController> root;
};

} // namespace kovena::testing
