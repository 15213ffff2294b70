// What every screen shares: the toast, the loading overlay, the keyboard helpers, the storyboard's
// scenes.
#include "api/ApiManager.h"
#include "flow/BaseViewController.h"
#include "flow/MainKovena.h"
#include "flow/PaymentOptionViewController.h"
#include "flow/flow_root_support.h"
#include "payment/PaymentScreen.h"
#include "platform/AlertController.h"
#include "platform/Storyboard.h"
#include "platform/TextField.h"
#include "support/Scoped.h"

#include <QAction>
#include <QFontInfo>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPauseAnimation>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QSequentialAnimationGroup>
#include <QTest>
#include <QToolBar>

using namespace kovena;
using namespace kovena::testing;

namespace {

QList<QLabel *> toastsOf(QWidget *view)
{
    return view->findChildren<QLabel *>(QStringLiteral("kovenaToast"), Qt::FindDirectChildrenOnly);
}

QSequentialAnimationGroup *fadeOf(QLabel *toast)
{
    return toast->findChild<QSequentialAnimationGroup *>(QStringLiteral("kovenaToastFade"));
}

void flushDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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

using ToastTest = ScreenTest;

TEST_F(ToastTest, AppearsFinishedBelowTheMiddleAndFadesOut)
{
    screen->showToast(QStringLiteral("No Network"));
    EXPECT_TRUE(toastsOf(screen).isEmpty()); // queued, not shown at once
    clock.runDue();

    const auto toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 1);
    QLabel *toast = toasts[0];
    EXPECT_EQ(toast->text(), QStringLiteral("No Network"));
    EXPECT_EQ(toast->geometry(), QRect(400 / 2 - 95, 700 - 100, 180, 35));
    EXPECT_TRUE(toast->isVisible());
    EXPECT_EQ(toast->alignment(), Qt::AlignCenter);
    EXPECT_EQ(toast->font().family(), QStringLiteral("Montserrat-Light"));
    const QFontInfo font(toast->font());
    EXPECT_EQ(font.family(), QStringLiteral("Montserrat"));
    EXPECT_EQ(font.styleName(), QStringLiteral("Light"));
    EXPECT_DOUBLE_EQ(toast->font().pointSizeF(), 12.0);

    // Rendered: black at 0.6 over the view, corners rounded away.
    const QImage shot = screen->grab().toImage();
    const QColor behind = shot.pixelColor(toast->x() - 5, toast->y() + 17);
    EXPECT_NEAR(shot.pixelColor(toast->x() + 3, toast->y() + 17).red(), behind.red() * 0.4, 3);
    EXPECT_EQ(shot.pixelColor(toast->x(), toast->y()), behind);

    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(toast->graphicsEffect());
    ASSERT_NE(effect, nullptr);
    EXPECT_DOUBLE_EQ(effect->opacity(), 1.0);
    QSequentialAnimationGroup *fade = fadeOf(toast);
    ASSERT_NE(fade, nullptr);
    EXPECT_EQ(fade->state(), QAbstractAnimation::Running);
    ASSERT_EQ(fade->animationCount(), 2);
    auto *pause = qobject_cast<QPauseAnimation *>(fade->animationAt(0));
    auto *alpha = qobject_cast<QPropertyAnimation *>(fade->animationAt(1));
    ASSERT_TRUE(pause && alpha);
    EXPECT_EQ(pause->duration(), 100);
    EXPECT_EQ(alpha->targetObject(), effect);
    EXPECT_EQ(alpha->propertyName(), QByteArray("opacity"));
    EXPECT_EQ(alpha->endValue().toDouble(), 0.0);
    EXPECT_EQ(alpha->duration(), 4000);
    EXPECT_EQ(alpha->easingCurve().type(), QEasingCurve::OutQuad);

    QPointer<QLabel> watched = toast;
    fade->setCurrentTime(fade->totalDuration());
    EXPECT_DOUBLE_EQ(effect->opacity(), 0.0);
    EXPECT_FALSE(watched->isVisible());
    flushDeletes();
    EXPECT_TRUE(watched.isNull());
}

TEST_F(ToastTest, SeveralToastsCoexistAndFadeOnTheirOwn)
{
    screen->showToast(QStringLiteral("AccessToken Error"));
    screen->showToast(QStringLiteral("Customer Email Error"));
    clock.runDue();
    auto toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 2);
    EXPECT_EQ(toasts[0]->text(), QStringLiteral("AccessToken Error"));
    EXPECT_EQ(toasts[1]->text(), QStringLiteral("Customer Email Error"));
    EXPECT_EQ(toasts[0]->geometry(), toasts[1]->geometry());

    fadeOf(toasts[0])->setCurrentTime(fadeOf(toasts[0])->totalDuration());
    flushDeletes();
    toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts[0]->text(), QStringLiteral("Customer Email Error"));
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
    EXPECT_EQ(views[0]->geometry(), screen->rect());
    EXPECT_EQ(views[1]->parentWidget(), views[0]);
    EXPECT_EQ(views[1]->geometry(), QRect(160, 310, 80, 80));
    EXPECT_EQ(views[2]->parentWidget(), views[1]);
    EXPECT_EQ(views[2]->geometry(), QRect(20, 20, 40, 40));
    EXPECT_TRUE(loader.isAnimating());
    EXPECT_EQ(screen->childAt(200, 350), views[2]); // shown and on top
    EXPECT_EQ(views[0]->property("backgroundColor").value<QColor>(),
        QColor::fromRgbF(0.99609375f, 0.99609375f, 0.99609375f, 0.3f));
    EXPECT_EQ(views[1]->property("backgroundColor").value<QColor>(),
        QColor::fromRgbF(0.265625f, 0.265625f, 0.265625f, 0.7f));
    EXPECT_EQ(views[1]->property("cornerRadius").toReal(), 10.0);

    screen->loadering(false);
    clock.runDue();
    EXPECT_EQ(loader.container()->parentWidget(), nullptr);
    EXPECT_FALSE(loader.isAnimating());
    EXPECT_EQ(screen->children().size(), childrenBefore);
    EXPECT_NE(screen->childAt(200, 350), views[2]);
}

TEST(KeyboardTest, TapsAndTheDoneBarEndEditing)
{
    QWidget window;
    window.resize(400, 700);
    auto *screen = new BaseViewController(&window);
    screen->setGeometry(window.rect());
    auto *field = new TextField(screen);
    field->setObjectName(QStringLiteral("tfSample"));
    field->setGeometry(20, 20, 200, 30);
    screen->loadViewIfNeeded();
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(screen->tapRecognizerCount(), 1);
    screen->addDismissKeyboardTap();
    EXPECT_EQ(screen->tapRecognizerCount(), 2);
    QToolBar *bar = screen->doneToolbar();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(field->inputAccessoryView(), bar);
    const auto actions = bar->actions();
    ASSERT_EQ(actions.size(), 2); // the flexible space, then "Done"
    EXPECT_EQ(actions.back()->text(), QStringLiteral("Done"));

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

// The other scenes are reached, and checked, through the flow and the payment option screens.
TEST(StoryboardTest, PopUpTellsTheCustomerWhatToDoAndSeguesToThePaymentScreens)
{
    // The net banking screen asks for its bank list as it loads: keep that on a closed local port.
    const ScopedServerUrl closedPort(QStringLiteral("http://127.0.0.1:9/KoVena/"));
    ManualScheduler clock;
    ScopedScheduler scoped(clock);
    std::unique_ptr<ViewController> chooser(
        mainKovenaStoryboard().instantiateViewController(QStringLiteral("PaymentOptionViewController")));
    EXPECT_NE(qobject_cast<PaymentOptionViewController *>(chooser.get()), nullptr);
    QWidget window;
    auto *nav = new NavigationController;
    ViewController *popUp
        = mainKovenaStoryboard().instantiateViewController(QStringLiteral("PopUpViewController"));
    nav->setViewControllers({ popUp });
    setRootViewController(&window, nav);
    window.show();
    clock.runDue();
    EXPECT_STREQ(popUp->metaObject()->className(), "kovena::PopUpViewController");
    EXPECT_EQ(popUp->findChild<QLabel *>(QStringLiteral("popUpText"))->text(),
        QStringLiteral(
            "Click on the notification received on your UPI based Bank App & enter your bank MPIN"));
    for (const char *id : { "CardViewController", "NetBankingViewController", "UPIViewController" }) {
        popUp->performSegue(QLatin1String(id), nullptr);
        EXPECT_EQ(nav->topViewController()->storyboardIdentifier(), QLatin1String(id));
        EXPECT_STREQ(
            nav->topViewController()->metaObject()->className(), (std::string("kovena::") + id).c_str());
        nav->popViewController(false);
    }
}

} // namespace
