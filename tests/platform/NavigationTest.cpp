#include "ScreenTestSupport.h"

#include "platform/ManualScheduler.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using test::flushDeletes;
using test::RecordingScreen;

class NavigationTest : public ::testing::Test
{
protected:
    NavigationTest() { nav.resize(360, 640); }

    RecordingScreen *screen(const char *name)
    {
        return new RecordingScreen(QString::fromLatin1(name), &journal);
    }

    ManualScheduler clock;
    ScopedScheduler installed { clock };
    QStringList journal;
    NavigationController nav;
};

TEST_F(NavigationTest, ScreensPushedFromSuccessiveLoadsSettleOnTheLastOne)
{
    auto *initial = screen("initial");
    auto *options = screen("options");
    auto *upi = screen("upi");
    initial->onLoad = [&] { nav.pushViewController(options, false); };
    options->onLoad = [&] { nav.pushViewController(upi, false); };
    nav.setViewControllers({ initial });
    EXPECT_TRUE(journal.isEmpty()) << "setting the stack does not load it";

    QSignalSpy shown(&nav, &NavigationController::didShowViewController);
    nav.show();
    nav.appear();

    EXPECT_EQ(journal,
        QStringList({ "initial.load", "options.load", "upi.load", "upi.willAppear", "upi.didAppear" }));
    EXPECT_EQ(nav.topViewController(), upi);
    EXPECT_EQ(nav.viewControllers(), (QList<ViewController *> { initial, options, upi }));
    EXPECT_TRUE(upi->isVisible());
    EXPECT_FALSE(options->isVisible());
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown.at(0).at(0).value<ViewController *>(), upi);
}

TEST_F(NavigationTest, PushAndPopOnAVisibleStackCallTheLifecycleInPlatformOrder)
{
    auto *first = screen("first");
    nav.setViewControllers({ first });
    nav.appear();
    journal.clear();

    auto *second = screen("second");
    nav.pushViewController(second, true);
    EXPECT_EQ(journal,
        QStringList({ "second.load", "first.willDisappear", "second.willAppear", "first.didDisappear",
            "second.didAppear" }));
    EXPECT_FALSE(nav.lastTransition().has_value()) << "no transition was asked for";

    journal.clear();
    QPointer<ViewController> popped = nav.popViewController(true);
    EXPECT_EQ(popped, second);
    EXPECT_EQ(journal,
        QStringList({ "second.willDisappear(moving)", "first.willAppear", "second.didDisappear(moving)",
            "first.didAppear" }));
    EXPECT_FALSE(second->isMovingFromParent());
    EXPECT_EQ(nav.topViewController(), first);
    flushDeletes();
    EXPECT_TRUE(popped.isNull()) << "a popped screen is released";

    journal.clear();
    EXPECT_EQ(nav.popViewController(true), nullptr) << "the root screen is never popped";
    EXPECT_TRUE(journal.isEmpty());
}

TEST_F(NavigationTest, HiddenStackLoadsNothingUntilItAppears)
{
    auto *first = screen("first");
    auto *second = screen("second");
    nav.setViewControllers({ first });
    nav.pushViewController(second, false);
    EXPECT_TRUE(journal.isEmpty());
    nav.appear();
    EXPECT_EQ(journal, QStringList({ "second.load", "second.willAppear", "second.didAppear" }));
    EXPECT_FALSE(first->isViewLoaded());

    journal.clear();
    nav.disappear();
    EXPECT_EQ(journal, QStringList({ "second.willDisappear", "second.didDisappear" }));
}

TEST_F(NavigationTest, PushFromWillAppearEndsOnThePushedScreen)
{
    auto *first = screen("first");
    auto *second = screen("second");
    bool pushed = false;
    first->onWillAppear = [&] {
        if (!std::exchange(pushed, true))
            nav.pushViewController(second, false);
    };
    nav.setViewControllers({ first });
    nav.appear();
    EXPECT_EQ(nav.topViewController(), second);
    EXPECT_EQ(journal.count(u"second.load"_s), 1);
    EXPECT_EQ(journal.last(), u"second.didAppear"_s);
    EXPECT_FALSE(journal.contains(u"first.didAppear"_s));
}

TEST_F(NavigationTest, NavigationBarFollowsTheTopScreen)
{
    auto *first = screen("first");
    first->navigationItem().title = u"Options"_s;
    nav.setViewControllers({ first });
    nav.show();
    nav.appear();
    EXPECT_FALSE(nav.backButton()->isVisible()) << "nothing to go back to";
    EXPECT_EQ(nav.findChild<QLabel *>(u"navTitle"_s)->text(), u"Options"_s);

    auto *second = screen("second");
    second->navigationItem().rightBarButtonItem = BarButtonItem { u"Cancel"_s, Qt::red, [] {} };
    nav.pushViewController(second, false);
    EXPECT_TRUE(nav.backButton()->isVisible());
    EXPECT_TRUE(nav.rightButton()->isVisible());
    QTest::mouseClick(nav.backButton(), Qt::LeftButton);
    EXPECT_EQ(nav.topViewController(), first);
    EXPECT_FALSE(nav.rightButton()->isVisible());
}

// Installing a root waits for the main queue, which these tests run by hand.
using RootTest = NavigationTest;

TEST_F(RootTest, MainWindowKeepsTheMerchantWidgetAndLoadsTheRootOnTheNextTurn)
{
    QMainWindow window;
    QPointer<QWidget> merchant = new QLabel(u"merchant"_s);
    window.setCentralWidget(merchant);
    window.show();

    auto *nav = new NavigationController;
    auto *initial = screen("initial");
    nav->setViewControllers({ initial });
    setRootViewController(merchant, nav);

    EXPECT_EQ(rootViewController(&window), nav);
    ASSERT_FALSE(merchant.isNull());
    EXPECT_EQ(merchant->parentWidget(), &window);
    EXPECT_TRUE(journal.isEmpty()) << "loading waits for the main queue";

    EXPECT_EQ(clock.runDue(), 1);
    EXPECT_EQ(journal, QStringList({ "initial.load", "initial.willAppear", "initial.didAppear" }));

    // A second install releases the first root, which disappears first.
    journal.clear();
    setRootViewController(merchant, screen("again"));
    flushDeletes();
    EXPECT_FALSE(merchant.isNull());
    clock.runDue();
    EXPECT_EQ(journal,
        QStringList({ "initial.willDisappear", "initial.didDisappear", "again.load", "again.willAppear",
            "again.didAppear" }));
}

TEST_F(RootTest, PlainWindowCoversTheMerchantAndAReplacedRootNeverLoads)
{
    QWidget window;
    window.resize(400, 700);
    QPointer<QWidget> merchant = new QPushButton(u"Pay"_s, &window);
    window.show();

    auto *stale = screen("stale");
    QPointer<ViewController> staleGuard = stale;
    setRootViewController(merchant, stale);
    auto *fresh = screen("fresh");
    setRootViewController(&window, fresh);

    clock.runDue();
    flushDeletes();
    EXPECT_TRUE(staleGuard.isNull());
    EXPECT_EQ(journal, QStringList({ "fresh.load", "fresh.willAppear", "fresh.didAppear" }));
    EXPECT_EQ(rootViewController(merchant), fresh);
    ASSERT_FALSE(merchant.isNull());
    EXPECT_FALSE(merchant->isVisible());
    EXPECT_EQ(fresh->geometry(), window.rect());
    window.resize(500, 800);
    EXPECT_EQ(fresh->geometry(), window.rect()) << "the root follows the window's size";
}

TEST_F(RootTest, ARootInAWindowNotShownLoadsWhenTheWindowIsShown)
{
    QMainWindow window;
    QPointer<QWidget> merchant = new QLabel(u"merchant"_s);
    window.setCentralWidget(merchant);

    auto *nav = new NavigationController;
    nav->setViewControllers({ screen("hidden") });
    setRootViewController(merchant, nav);
    clock.runDue();
    EXPECT_TRUE(journal.isEmpty()) << "nothing loads while the window is not on screen";
    // Replaced while waiting: only the latest root loads.
    auto *latest = new NavigationController;
    latest->setViewControllers({ screen("latest") });
    setRootViewController(merchant, latest);
    clock.runDue();
    flushDeletes();
    EXPECT_TRUE(journal.isEmpty());

    window.show();
    EXPECT_TRUE(journal.isEmpty()) << "loading waits for the main queue";
    clock.runDue();
    EXPECT_EQ(journal, QStringList({ "latest.load", "latest.willAppear", "latest.didAppear" }));
    window.hide();
    window.show();
    clock.runDue();
    EXPECT_EQ(journal.size(), 3) << "a root loads once";
}

} // namespace
} // namespace kovena
