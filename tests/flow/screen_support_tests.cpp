// What every screen shares: the toast, the loading overlay, the keyboard helpers.
#include "flow/BaseViewController.h"
#include "flow/Theme.h"
#include "flow/flow_root_support.h"
#include "platform/TextField.h"

#include <QAction>
#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QSequentialAnimationGroup>
#include <QTest>
#include <QToolBar>

using namespace Qt::StringLiterals;

using namespace kovena;
using namespace kovena::testing;

namespace {

QList<QLabel *> toastsOf(QWidget *view)
{
    return view->findChildren<QLabel *>(u"kovenaToast"_s, Qt::FindDirectChildrenOnly);
}

QSequentialAnimationGroup *fadeOf(QLabel *toast)
{
    return toast->findChild<QSequentialAnimationGroup *>(u"kovenaToastFade"_s);
}

// A screen of the size of a phone, shown in its own window.
class ScreenTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        screen->resize(400, 700);
        screen->show();
    }
    void TearDown() override { delete screen.data(); }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    QPointer<BaseViewController> screen = new BaseViewController;
};

// Toasts are queued to the next turn, coexist, and each is released once its own fade ends.
TEST_F(ScreenTest, ToastsAppearOnTheNextTurnAndEachIsReleasedOnceFaded)
{
    screen->showToast(u"AccessToken Error"_s);
    screen->showToast(u"Customer Email Error"_s);
    EXPECT_TRUE(toastsOf(screen).isEmpty()); // queued, not shown at once
    clock.runDue();
    auto toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 2);
    EXPECT_EQ(toasts[0]->text(), u"AccessToken Error"_s);
    EXPECT_EQ(toasts[1]->text(), u"Customer Email Error"_s);
    EXPECT_TRUE(toasts[0]->isVisible());
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(toasts[0]->graphicsEffect());
    ASSERT_TRUE(effect && fadeOf(toasts[0]) && fadeOf(toasts[1]));
    EXPECT_EQ(fadeOf(toasts[0])->state(), QAbstractAnimation::Running);

    QPointer<QLabel> watched = toasts[0];
    fadeOf(toasts[0])->setCurrentTime(fadeOf(toasts[0])->totalDuration());
    EXPECT_DOUBLE_EQ(effect->opacity(), 0.0);
    EXPECT_FALSE(watched->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(watched.isNull());
    toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts[0]->text(), u"Customer Email Error"_s);
    EXPECT_EQ(fadeOf(toasts[0])->state(), QAbstractAnimation::Running);
}

TEST_F(ScreenTest, LoaderReusesItsViewsAndHidingWithoutShowingChangesNothing)
{
    LoaderUI &loader = screen->loader();
    const QList<QWidget *> views = { loader.container(), loader.loadingView(), loader.activityIndicator() };
    const auto childrenBefore = screen->children().size();
    screen->loadering(false);
    clock.runDue();
    EXPECT_EQ(screen->children().size(), childrenBefore);
    EXPECT_EQ(loader.container()->parentWidget(), nullptr);

    screen->loadering(true);
    screen->loadering(true);
    EXPECT_EQ(loader.container()->parentWidget(), nullptr); // queued
    clock.runDue();
    EXPECT_EQ(
        QList<QWidget *>({ loader.container(), loader.loadingView(), loader.activityIndicator() }), views);
    EXPECT_EQ(screen->children().size(), childrenBefore + 1);
    EXPECT_EQ(views[0]->parentWidget(), screen);
    EXPECT_TRUE(loader.isAnimating());
    EXPECT_EQ(screen->childAt(200, 350), views[2]); // shown and on top

    screen->loadering(false);
    clock.runDue();
    EXPECT_EQ(loader.container()->parentWidget(), nullptr);
    EXPECT_FALSE(loader.isAnimating());
    EXPECT_EQ(screen->children().size(), childrenBefore);
    EXPECT_NE(screen->childAt(200, 350), views[2]);
}

// On a screen under the theme's style sheet the overlay is styled by the sheet while shown and
// leaves with the application's own style, every time.
TEST(LoaderThemeTest, TheOverlayLeavesAThemedScreenWithTheApplicationStyle)
{
    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    QWidget window;
    window.resize(400, 700);
    theme::applyTo(&window);
    auto *screen = new BaseViewController(&window);
    screen->setGeometry(window.rect());
    window.show();
    LoaderUI &loader = screen->loader();
    const QList<QWidget *> views = { loader.container(), loader.loadingView(), loader.activityIndicator() };
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        screen->loadering(true);
        clock.runDue();
        for (QWidget *view : views) {
            EXPECT_NE(view->style(), QApplication::style());
            EXPECT_TRUE(view->testAttribute(Qt::WA_StyleSheet));
        }
        screen->loadering(false);
        clock.runDue();
        EXPECT_EQ(loader.container()->parentWidget(), nullptr);
        for (QWidget *view : views) {
            EXPECT_EQ(view->style(), QApplication::style());
            EXPECT_FALSE(view->testAttribute(Qt::WA_StyleSheet));
            EXPECT_EQ(view->palette(), QApplication::palette(view));
        }
    }
}

TEST(KeyboardTest, TapsAndTheDoneBarEndEditing)
{
    QWidget window;
    window.resize(400, 700);
    auto *screen = new BaseViewController(&window);
    screen->setGeometry(window.rect());
    auto *field = new TextField(screen);
    field->setObjectName(u"tfSample"_s);
    field->setGeometry(20, 20, 200, 30);
    screen->loadViewIfNeeded();
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QToolBar *bar = screen->doneToolbar();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(field->inputAccessoryView(), bar);
    const auto actions = bar->actions();
    ASSERT_EQ(actions.size(), 2); // the flexible space, then "Done"
    EXPECT_EQ(actions.back()->text(), u"Done"_s);

    const std::function<void()> ways[]
        = { [&] { QTest::mouseClick(screen, Qt::LeftButton, {}, QPoint(300, 600)); },
              [&] { actions.back()->trigger(); }, [&] { screen->dismissKeyboard(); } };
    for (const auto &endEditing : ways) {
        field->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([&] { return field->hasFocus(); }, 2000));
        endEditing();
        EXPECT_FALSE(field->hasFocus());
    }
}

} // namespace
