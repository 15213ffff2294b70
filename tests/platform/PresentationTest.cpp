#include "ScreenTestSupport.h"

#include "platform/AlertController.h"
#include "platform/ManualScheduler.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using test::flushDeletes;
using test::RecordingScreen;

// Puts named buttons on `screen`, one above the other.
template<class Screen> Screen *withButtons(Screen *screen, const QStringList &names)
{
    auto *layout = new QVBoxLayout(screen);
    for (const QString &name : names) {
        auto *button = new QPushButton(name, screen);
        button->setObjectName(name);
        button->setFocusPolicy(Qt::StrongFocus);
        layout->addWidget(button);
    }
    return screen;
}

// An active window whose root is a navigation stack with one loaded screen on top.
class PresentationTest : public ::testing::Test
{
protected:
    PresentationTest()
    {
        window.resize(360, 640);
        window.show();
        QApplication::setActiveWindow(&window);
        nav = new NavigationController;
        home = withButtons(new RecordingScreen(u"home"_s, &journal), { u"homeField"_s, u"homeProceed"_s });
        nav->setViewControllers({ home });
        setRootViewController(&window, nav);
        clock.runDue();
        journal.clear();
    }
    static QString focused()
    {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
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
    auto *popup = new RecordingScreen(u"popup"_s, &journal);
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
        QPointer<ViewController> popup = new RecordingScreen(u"popup"_s, &journal);
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
    auto *inner = new RecordingScreen(u"inner"_s, &journal);
    modal->setViewControllers({ inner });
    QPointer<NavigationController> modalGuard = modal;
    home->present(modal, true);
    EXPECT_EQ(journal.last(), u"inner.didAppear"_s);
    inner->dismiss(true);
    EXPECT_EQ(journal.last(), u"inner.didDisappear"_s);
    flushDeletes();
    EXPECT_TRUE(modalGuard.isNull());
}

// The payment screens' tests answer the cancel question by its buttons; here what they do not reach.
TEST_F(PresentationTest, AlertRunsTheTappedActionThenClosesAndRefusesAnActionItLacks)
{
    QStringList ran;
    QPointer<AlertController> alert = new AlertController(QString(), u"Sure?"_s);
    alert->addAction({ u"Cancel"_s, AlertController::ActionStyle::Cancel, [&] { ran << "no"; } });
    alert->addAction({ u"Proceed"_s, AlertController::ActionStyle::Default, [&] { ran << "yes"; } });
    home->present(alert, true);
    EXPECT_EQ(alert->findChild<QLabel *>(u"alertTitle"_s), nullptr) << "no title was given";
    EXPECT_FALSE(alert->trigger(u"Maybe"_s));
    EXPECT_EQ(home->presentedViewController(), alert.data());
    QTest::mouseClick(alert->findChild<QPushButton *>(u"alertAction1"_s), Qt::LeftButton);
    EXPECT_EQ(ran, QStringList({ "yes" }));
    EXPECT_EQ(home->presentedViewController(), nullptr);
    flushDeletes();
    EXPECT_TRUE(alert.isNull());
}

// A presentation is modal for the keyboard too: it takes the keyboard when it shows, keeps Tab
// among its own controls, and gives the keyboard back when it goes. A second presentation while
// one is shown is refused, and a refused screen nobody owns is released, not leaked.
TEST_F(PresentationTest, TheKeyboardGoesInStaysInsideAndComesBack)
{
    home->findChild<QWidget *>(u"homeProceed"_s)->setFocus();
    auto *sheet = withButtons(new ViewController, { u"first"_s, u"second"_s });
    int dismissals = 0;
    QObject::connect(home, &ViewController::presentedViewControllerDismissed, home, [&] { ++dismissals; });
    home->present(sheet, true);
    EXPECT_EQ(focused(), u"first"_s);

    // Forward and backward, Tab never leaves the presentation for the screen beneath it.
    for (const auto &[key, modifier] :
        { std::pair { Qt::Key_Tab, Qt::NoModifier }, { Qt::Key_Backtab, Qt::ShiftModifier } }) {
        QStringList order;
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(QApplication::focusWidget(), key, modifier);
            order << focused();
        }
        EXPECT_EQ(order, QStringList({ "second", "first", "second", "first" })) << key;
    }

    home->dismiss(true);
    EXPECT_EQ(focused(), u"homeProceed"_s);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(PresentationTest, ARefusedPresentationIsReleasedUnlessSomeoneOwnsIt)
{
    QPointer<ViewController> shown = withButtons(new ViewController, { u"first"_s });
    home->present(shown, true);

    QPointer<ViewController> orphan = withButtons(new ViewController, { u"orphan"_s });
    QWidget owner;
    QPointer<ViewController> owned = withButtons(new ViewController, { u"owned"_s });
    owned->setParent(&owner);
    home->present(orphan, true);
    home->present(owned, true);
    flushDeletes();

    EXPECT_EQ(home->presentedViewController(), shown.data());
    EXPECT_TRUE(shown);
    EXPECT_FALSE(orphan) << "a refused presentation nobody owns must not leak";
    ASSERT_TRUE(owned) << "a refused screen with an owner stays the owner's";
    EXPECT_EQ(owned->parent(), &owner);
    EXPECT_FALSE(owned->isVisible());
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
        board.registerScene(u"Source"_s, [this] { return new SegueSource(u"source"_s, &journal); });
        board.registerScene(u"Target"_s, [this] { return new RecordingScreen(u"target"_s, &journal); });
        board.registerSegue(u"toTarget"_s, u"Target"_s);
    }
    QStringList journal;
    Storyboard board { u"MainKovena"_s };
};

TEST_F(StoryboardTest, SeguePreparesThenPushesOnTheSourceStack)
{
    NavigationController nav;
    auto *source = static_cast<SegueSource *>(board.instantiateViewController(u"Source"_s));
    nav.setViewControllers({ source });
    nav.appear();
    QObject sender;
    source->performSegue(u"toTarget"_s, &sender);

    EXPECT_EQ(source->prepared.identifier, u"toTarget"_s);
    EXPECT_EQ(source->prepared.source, source);
    EXPECT_EQ(source->preparedSender, &sender);
    EXPECT_FALSE(source->destinationLoadedAtPrepare);
    EXPECT_EQ(nav.topViewController(), source->prepared.destination);
    EXPECT_EQ(nav.topViewController()->storyboardIdentifier(), u"Target"_s);
    EXPECT_EQ(journal.last(), u"target.didAppear"_s);
}

using StoryboardDeathTest = StoryboardTest;

TEST_F(StoryboardDeathTest, UnknownIdentifiersAreFatal)
{
    using testing::fatalLine;
    EXPECT_DEATH(board.instantiateViewController(u"PaymentOptionVc"_s),
        fatalLine(R"(storyboard MainKovena has no scene "PaymentOptionVc")"));
    board.registerScene(u"Empty"_s, [] { return nullptr; });
    EXPECT_DEATH(board.instantiateViewController(u"Empty"_s),
        fatalLine(R"(storyboard MainKovena made no screen for the scene "Empty")"));
    std::unique_ptr<ViewController> source(board.instantiateViewController(u"Source"_s));
    EXPECT_DEATH(source->performSegue(u"toNowhere"_s, nullptr),
        fatalLine(R"(storyboard MainKovena has no segue "toNowhere")"));
    EXPECT_DEATH(board.performSegue(nullptr, u"toTarget"_s, nullptr),
        fatalLine(R"(storyboard MainKovena performed the segue "toTarget" without a source screen)"));
    RecordingScreen loose(u"loose"_s, &journal);
    EXPECT_DEATH(loose.performSegue(u"toTarget"_s, nullptr),
        fatalLine(R"(performSegue "toTarget": the screen does not come from a storyboard)"));
}

} // namespace
} // namespace kovena
