#include "ScreenTestSupport.h"

#include "platform/AlertController.h"
#include "platform/ManualScheduler.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace kovena {
namespace {

using test::flushDeletes;
using test::RecordingScreen;

// A window whose root is a navigation stack with one loaded screen on top.
class PresentationTest : public ::testing::Test
{
protected:
    PresentationTest()
    {
        window.resize(360, 640);
        window.show();
        nav = new NavigationController;
        home = new RecordingScreen(QStringLiteral("home"), &journal);
        nav->setViewControllers({ home });
        setRootViewController(&window, nav);
        clock.runDue();
        journal.clear();
    }

    ManualScheduler clock;
    ScopedScheduler installed { clock };
    QStringList journal;
    QWidget window;
    NavigationController *nav = nullptr;
    RecordingScreen *home = nullptr;
};

TEST_F(PresentationTest, PresentedScreenCoversTheWindowAndDismissReleasesIt)
{
    auto *popup = new RecordingScreen(QStringLiteral("popup"), &journal);
    QPointer<ViewController> guard = popup;
    home->present(popup, true);
    EXPECT_EQ(journal, QStringList({ "popup.load", "popup.willAppear", "popup.didAppear" }))
        << "the presenting screen keeps running underneath";
    EXPECT_EQ(home->presentedViewController(), popup);
    EXPECT_EQ(popup->presentingViewController(), home);
    EXPECT_TRUE(popup->isVisible());
    EXPECT_EQ(popup->mapTo(&window, QPoint(0, 0)), QPoint(0, 0));
    EXPECT_EQ(popup->size(), window.size());

    journal.clear();
    home->dismiss(true);
    EXPECT_EQ(journal, QStringList({ "popup.willDisappear", "popup.didDisappear" }));
    EXPECT_EQ(home->presentedViewController(), nullptr);
    flushDeletes();
    EXPECT_TRUE(guard.isNull());
    EXPECT_TRUE(home->isVisible());
}

TEST_F(PresentationTest, DismissOnlyEverRemovesAPresentation)
{
    // Each case: whether a popup is presented first, and whether it (not its presenter) dismisses.
    for (const auto &[presentFirst, fromPresented] :
        { std::pair { true, false }, { true, true }, { false, false } }) {
        SCOPED_TRACE(::testing::Message() << presentFirst << fromPresented);
        QPointer<ViewController> popup = new RecordingScreen(QStringLiteral("popup"), &journal);
        if (presentFirst)
            home->present(popup, false);
        (fromPresented ? popup.data() : static_cast<ViewController *>(home))->dismiss(true);
        flushDeletes();
        EXPECT_EQ(popup.isNull(), presentFirst);
        EXPECT_TRUE(home->isVisible()) << "the screen that was not presented stays where it is";
        EXPECT_EQ(nav->topViewController(), home);
        EXPECT_EQ(rootViewController(&window), nav);
        delete popup;
    }
}

TEST_F(PresentationTest, ScreenInsideAPresentedStackDismissesTheWholeStack)
{
    auto *modal = new NavigationController;
    auto *inner = new RecordingScreen(QStringLiteral("inner"), &journal);
    modal->setViewControllers({ inner });
    QPointer<NavigationController> modalGuard = modal;
    home->present(modal, true);
    EXPECT_EQ(journal.last(), QStringLiteral("inner.didAppear"));
    inner->dismiss(true);
    EXPECT_EQ(journal.last(), QStringLiteral("inner.didDisappear"));
    flushDeletes();
    EXPECT_TRUE(modalGuard.isNull());
}

// The payment screens' tests answer the cancel question by its buttons; here what they do not reach.
TEST_F(PresentationTest, AlertRunsTheTappedActionThenClosesAndRefusesAnActionItLacks)
{
    QStringList ran;
    QPointer<AlertController> alert = new AlertController(QString(), QStringLiteral("Sure?"));
    alert->addAction(
        { QStringLiteral("Cancel"), AlertController::ActionStyle::Cancel, [&] { ran << "no"; } });
    alert->addAction(
        { QStringLiteral("Proceed"), AlertController::ActionStyle::Default, [&] { ran << "yes"; } });
    home->present(alert, true);
    EXPECT_EQ(alert->findChild<QLabel *>(QStringLiteral("alertTitle")), nullptr) << "no title was given";
    EXPECT_FALSE(alert->trigger(QStringLiteral("Maybe")));
    EXPECT_EQ(home->presentedViewController(), alert.data());
    QTest::mouseClick(alert->findChild<QPushButton *>(QStringLiteral("alertAction1")), Qt::LeftButton);
    EXPECT_EQ(ran, QStringList({ "yes" }));
    EXPECT_EQ(home->presentedViewController(), nullptr);
    flushDeletes();
    EXPECT_TRUE(alert.isNull());
}

class SegueSource : public RecordingScreen
{
public:
    using RecordingScreen::RecordingScreen;
    void prepare(const StoryboardSegue &segue, QObject *sender) override
    {
        prepared = segue;
        preparedSender = sender;
        // The destination is not loaded yet when fields are handed over.
        destinationLoadedAtPrepare = segue.destination->isViewLoaded();
    }
    StoryboardSegue prepared;
    QObject *preparedSender = nullptr;
    bool destinationLoadedAtPrepare = true;
};

class StoryboardTest : public ::testing::Test
{
protected:
    StoryboardTest()
    {
        board.registerScene(
            QStringLiteral("Source"), [this] { return new SegueSource(QStringLiteral("source"), &journal); });
        board.registerScene(QStringLiteral("Target"),
            [this] { return new RecordingScreen(QStringLiteral("target"), &journal); });
        board.registerSegue(QStringLiteral("toTarget"), QStringLiteral("Target"));
    }
    QStringList journal;
    Storyboard board { QStringLiteral("MainKovena") };
};

TEST_F(StoryboardTest, SeguePreparesThenPushesOnTheSourceStack)
{
    NavigationController nav;
    auto *source = static_cast<SegueSource *>(board.instantiateViewController(QStringLiteral("Source")));
    nav.setViewControllers({ source });
    nav.appear();
    QObject sender;
    source->performSegue(QStringLiteral("toTarget"), &sender);

    EXPECT_EQ(source->prepared.identifier, QStringLiteral("toTarget"));
    EXPECT_EQ(source->prepared.source, source);
    EXPECT_EQ(source->preparedSender, &sender);
    EXPECT_FALSE(source->destinationLoadedAtPrepare);
    EXPECT_EQ(nav.topViewController(), source->prepared.destination);
    EXPECT_EQ(nav.topViewController()->storyboardIdentifier(), QStringLiteral("Target"));
    EXPECT_EQ(journal.last(), QStringLiteral("target.didAppear"));
}

using StoryboardDeathTest = StoryboardTest;

TEST_F(StoryboardDeathTest, UnknownIdentifiersAreFatal)
{
    using testing::fatalLine;
    EXPECT_DEATH(board.instantiateViewController(QStringLiteral("PaymentOptionVc")),
        fatalLine(R"(storyboard MainKovena has no scene "PaymentOptionVc")"));
    board.registerScene(QStringLiteral("Empty"), [] { return nullptr; });
    EXPECT_DEATH(board.instantiateViewController(QStringLiteral("Empty")),
        fatalLine(R"(storyboard MainKovena made no screen for the scene "Empty")"));
    std::unique_ptr<ViewController> source(board.instantiateViewController(QStringLiteral("Source")));
    EXPECT_DEATH(source->performSegue(QStringLiteral("toNowhere"), nullptr),
        fatalLine(R"(storyboard MainKovena has no segue "toNowhere")"));
    EXPECT_DEATH(board.performSegue(nullptr, QStringLiteral("toTarget"), nullptr),
        fatalLine(R"(storyboard MainKovena performed the segue "toTarget" without a source screen)"));
    RecordingScreen loose(QStringLiteral("loose"), &journal);
    EXPECT_DEATH(loose.performSegue(QStringLiteral("toTarget"), nullptr),
        fatalLine(R"(performSegue "toTarget": the screen does not come from a storyboard)"));
}

} // namespace
} // namespace kovena
