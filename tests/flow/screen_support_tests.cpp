// What every screen shares: the toast, the loading overlay, the keyboard helpers, the popup,
// the storyboard's scenes and the payment screens' cancel.
#include "flow/BaseViewController.h"
#include "flow/InitialViewController.h"
#include "flow/MainKovena.h"
#include "flow/NavigatorController.h"
#include "flow/flow_root_support.h"
#include "payment/CardViewController.h"
#include "payment/NetBankingViewController.h"
#include "payment/UPIViewController.h"
#include "platform/AlertController.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"
#include "platform/TextField.h"
#include "sdk/MerchantReport.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QFontInfo>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPauseAnimation>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QSequentialAnimationGroup>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

#include <functional>

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

void finishFade(QLabel *toast)
{
    QSequentialAnimationGroup *fade = fadeOf(toast);
    ASSERT_NE(fade, nullptr);
    fade->setCurrentTime(fade->totalDuration());
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
        screen = new BaseViewController;
        screen->resize(400, 700);
        screen->show();
    }
    void TearDown() override { delete screen.data(); }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    QPointer<BaseViewController> screen;
};

// Notes what a toast looks like at the moment it joins the view.
class ChildAddedSpy : public QObject
{
public:
    QStringList seen; // text | geometry | style sheet | font, per new label

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded)
            if (auto *label = qobject_cast<QLabel *>(static_cast<QChildEvent *>(event)->child()))
                seen.append(describe(label));
        return false;
    }

public:
    static QString describe(QLabel *l)
    {
        const QRect g = l->geometry();
        return QStringLiteral("%1|%2,%3 %4x%5|%6|%7|%8")
            .arg(l->text())
            .arg(g.x())
            .arg(g.y())
            .arg(g.width())
            .arg(g.height())
            .arg(l->styleSheet(), l->font().family(), QString::number(l->graphicsEffect() != nullptr));
    }
};

using ToastTest = ScreenTest;

TEST_F(ToastTest, AppearsFinishedBelowTheMiddleAndFadesOut)
{
    ChildAddedSpy spy;
    screen->installEventFilter(&spy);
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

    EXPECT_EQ(spy.seen, QStringList { ChildAddedSpy::describe(toast) });
    EXPECT_EQ(toast->font().family(), QStringLiteral("Montserrat-Light"));

    const QFontInfo font(toast->font());
    EXPECT_EQ(font.family(), QStringLiteral("Montserrat"));
    EXPECT_EQ(font.styleName(), QStringLiteral("Light"));
    EXPECT_DOUBLE_EQ(toast->font().pointSizeF(), 12.0);

    // Rendered: black at 0.6 over the view, corners rounded away.
    const QImage shot = screen->grab().toImage();
    const QColor behind = shot.pixelColor(toast->x() - 5, toast->y() + 17);
    const QColor body = shot.pixelColor(toast->x() + 3, toast->y() + 17);
    const QColor corner = shot.pixelColor(toast->x(), toast->y());
    EXPECT_NEAR(body.red(), behind.red() * 0.4, 3);
    EXPECT_EQ(corner, behind);

    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(toast->graphicsEffect());
    ASSERT_NE(effect, nullptr);
    EXPECT_DOUBLE_EQ(effect->opacity(), 1.0);
    QSequentialAnimationGroup *fade = fadeOf(toast);
    ASSERT_NE(fade, nullptr);
    EXPECT_EQ(fade->state(), QAbstractAnimation::Running);
    ASSERT_EQ(fade->animationCount(), 2);
    auto *pause = qobject_cast<QPauseAnimation *>(fade->animationAt(0));
    auto *alpha = qobject_cast<QPropertyAnimation *>(fade->animationAt(1));
    ASSERT_NE(pause, nullptr);
    ASSERT_NE(alpha, nullptr);
    EXPECT_EQ(pause->duration(), 100);
    EXPECT_EQ(alpha->targetObject(), effect);
    EXPECT_EQ(alpha->propertyName(), QByteArray("opacity"));
    EXPECT_EQ(alpha->endValue().toDouble(), 0.0);
    EXPECT_EQ(alpha->duration(), 4000);
    EXPECT_EQ(alpha->easingCurve().type(), QEasingCurve::OutQuad);

    QPointer<QLabel> watched = toast;
    finishFade(toast);
    EXPECT_DOUBLE_EQ(effect->opacity(), 0.0);
    EXPECT_FALSE(watched->isVisible());
    flushDeletes();
    EXPECT_TRUE(watched.isNull());
    EXPECT_TRUE(toastsOf(screen).isEmpty());
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

    finishFade(toasts[0]);
    flushDeletes();
    toasts = toastsOf(screen);
    ASSERT_EQ(toasts.size(), 1);
    EXPECT_EQ(toasts[0]->text(), QStringLiteral("Customer Email Error"));
    EXPECT_EQ(fadeOf(toasts[0])->state(), QAbstractAnimation::Running);
}

TEST_F(ToastTest, AToastAskedForBeforeAReportAppearsAfterIt)
{
    MerchantWindow host;
    int toastsAtReport = -1;
    host.merchant->onCall
        = [&](const std::shared_ptr<TransactionStatus> &) { toastsAtReport = int(toastsOf(screen).size()); };
    screen->showToast(QStringLiteral("No valid amount"));
    MerchantReport::btnBack(screen, host.merchant, -103);

    EXPECT_EQ(toastsAtReport, 0);
    clock.runDue();
    EXPECT_EQ(toastsOf(screen).size(), 1);
}

using LoaderTest = ScreenTest;

TEST_F(LoaderTest, OverlayCoversTheViewWithACentredSpinner)
{
    LoaderUI &loader = screen->loader();
    screen->loadering(true);
    EXPECT_EQ(loader.container()->parentWidget(), nullptr); // queued
    clock.runDue();

    QWidget *container = loader.container();
    QWidget *loadingView = loader.loadingView();
    QWidget *indicator = loader.activityIndicator();
    EXPECT_EQ(container->parentWidget(), screen.data());
    EXPECT_EQ(container->geometry(), screen->rect());
    EXPECT_EQ(loadingView->parentWidget(), container);
    EXPECT_EQ(loadingView->geometry(), QRect(160, 310, 80, 80));
    EXPECT_EQ(indicator->parentWidget(), loadingView);
    EXPECT_EQ(indicator->geometry(), QRect(20, 20, 40, 40));
    EXPECT_TRUE(loader.isAnimating());
    // The spinner is what a tap in the middle of the screen hits: shown and on top.
    EXPECT_EQ(screen->childAt(200, 350), indicator);

    EXPECT_EQ(container->property("backgroundColor").value<QColor>(),
        QColor::fromRgbF(0.99609375f, 0.99609375f, 0.99609375f, 0.3f));
    EXPECT_EQ(loadingView->property("backgroundColor").value<QColor>(),
        QColor::fromRgbF(0.265625f, 0.265625f, 0.265625f, 0.7f));
    EXPECT_EQ(loadingView->property("cornerRadius").toReal(), 10.0);
}

TEST_F(LoaderTest, ShowingTwiceReusesTheSameViewsAndOneHideRemovesThem)
{
    LoaderUI &loader = screen->loader();
    const QList<QWidget *> views = { loader.container(), loader.loadingView(), loader.activityIndicator() };
    const auto childrenBefore = screen->children().size();

    screen->loadering(true);
    screen->loadering(true);
    clock.runDue();
    EXPECT_EQ(
        (QList<QWidget *> { loader.container(), loader.loadingView(), loader.activityIndicator() }), views);
    EXPECT_EQ(screen->findChildren<QWidget *>(QStringLiteral("loaderContainer")).size(), 1);
    EXPECT_EQ(screen->children().size(), childrenBefore + 1);

    screen->loadering(false);
    clock.runDue();
    EXPECT_EQ(loader.container()->parentWidget(), nullptr);
    EXPECT_FALSE(loader.isAnimating());
    EXPECT_EQ(screen->children().size(), childrenBefore);
    EXPECT_NE(screen->childAt(200, 350), loader.activityIndicator());
}

TEST_F(LoaderTest, HidingAnOverlayThatWasNeverShownChangesNothing)
{
    const auto childrenBefore = screen->children().size();
    screen->loadering(false);
    clock.runDue();
    EXPECT_EQ(screen->children().size(), childrenBefore);
    EXPECT_EQ(screen->loader().container()->parentWidget(), nullptr);
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

    const std::function<void()> ways[] = {
        [&] { QTest::mouseClick(screen, Qt::LeftButton, {}, QPoint(300, 600)); },
        [&] { actions.back()->trigger(); },
        [&] { screen->dismissKeyboard(); },
    };
    for (const auto &endEditing : ways) {
        field->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([&] { return field->hasFocus(); }, 2000));
        endEditing();
        EXPECT_FALSE(field->hasFocus());
    }
}

TEST(StoryboardTest, MainKovenaHasEveryScene)
{
    Storyboard &board = mainKovenaStoryboard();
    EXPECT_EQ(board.name(), QStringLiteral("MainKovena"));
    EXPECT_EQ(&board, &mainKovenaStoryboard());

    std::unique_ptr<ViewController> initial(board.instantiateInitialViewController());
    auto *navigator = qobject_cast<NavigatorController *>(initial.get());
    ASSERT_NE(navigator, nullptr);
    ASSERT_EQ(navigator->viewControllers().size(), 1);
    EXPECT_NE(qobject_cast<InitialViewController *>(navigator->topViewController()), nullptr);

    const char *scenes[] = { "PaymentOptionVC", "PaymentOptionViewController", "UPIViewController",
        "CardViewController", "NetBankingViewController", "PopUpViewController" };
    for (const char *id : scenes) {
        SCOPED_TRACE(id);
        std::unique_ptr<ViewController> scene(board.instantiateViewController(QLatin1String(id)));
        ASSERT_NE(scene, nullptr);
        EXPECT_STREQ(scene->metaObject()->className(), (std::string("kovena::") + id).c_str());
        EXPECT_EQ(scene->storyboardIdentifier(), QLatin1String(id));
    }
}

TEST(StoryboardTest, SeguesLeadToTheScreensOfTheSameName)
{
    ManualScheduler clock;
    ScopedScheduler scoped(clock);
    QWidget window;
    auto *nav = new NavigationController;
    ViewController *source
        = mainKovenaStoryboard().instantiateViewController(QStringLiteral("PopUpViewController"));
    nav->setViewControllers({ source });
    setRootViewController(&window, nav);
    clock.runDue();
    for (const char *id : { "CardViewController", "NetBankingViewController", "UPIViewController" }) {
        source->performSegue(QLatin1String(id), nullptr);
        EXPECT_EQ(nav->topViewController()->storyboardIdentifier(), QLatin1String(id));
        nav->popViewController(false);
    }
}

TEST(PopUpTest, TellsTheCustomerWhatToDo)
{
    std::unique_ptr<ViewController> popUp(
        mainKovenaStoryboard().instantiateViewController(QStringLiteral("PopUpViewController")));
    popUp->loadViewIfNeeded();
    auto *text = popUp->findChild<QLabel *>(QStringLiteral("popUpText"));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(),
        QStringLiteral(
            "Click on the notification received on your UPI based Bank App & enter your bank MPIN"));
}

// The card and net banking screens, opened the way the payment option screen opens them.
class CancelTest : public ::testing::TestWithParam<const char *>
{
protected:
    PaymentScreen *open(bool modeChosenByMerchant)
    {
        auto *nav = new NavigationController;
        nav->setViewControllers({ new BaseViewController });
        setRootViewController(&host.window, nav);
        clock.runDue();
        auto *screen = qobject_cast<PaymentScreen *>(
            mainKovenaStoryboard().instantiateViewController(QLatin1String(GetParam())));
        screen->amount = QStringLiteral("250.00");
        screen->merchantTransactionRefNumber = QStringLiteral("ORD-3");
        screen->collectorId = QStringLiteral("COL-3");
        screen->merchantVC = host.merchant;
        screen->isPaymentModeAvail = modeChosenByMerchant;
        nav->pushViewController(screen, false);
        return screen;
    }

    QPushButton *button(const char *name)
    {
        return host.window.findChild<QPushButton *>(QLatin1String(name));
    }

    AlertController *alert() { return host.window.findChild<AlertController *>(); }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    MerchantWindow host;
};

TEST_P(CancelTest, ShowsTheCheckoutAndCancelsOnlyAfterConfirmation)
{
    PaymentScreen *screen = open(true);
    EXPECT_EQ(
        screen->findChild<QLabel *>(QStringLiteral("lbAmount"))->text(), QStringLiteral("\u20B9 250.00"));
    EXPECT_EQ(screen->findChild<QLabel *>(QStringLiteral("lbOrderId"))->text(), QStringLiteral("ORD-3"));
    EXPECT_EQ(screen->findChild<QLabel *>(QStringLiteral("lbCollectorId"))->text(), QStringLiteral("COL-3"));
    EXPECT_TRUE(screen->findChild<QPushButton *>(QStringLiteral("btnCancel"))->isHidden());

    QPushButton *back = button("navBackButton");
    QPushButton *cancel = button("navRightButton");
    ASSERT_TRUE(back && cancel);
    EXPECT_FALSE(back->isVisible());
    EXPECT_TRUE(cancel->isVisible());
    EXPECT_EQ(cancel->text(), QStringLiteral("Cancel"));
    const auto &item = screen->navigationItem().rightBarButtonItem;
    ASSERT_TRUE(item.has_value());
    EXPECT_EQ(item->background, QColor::fromRgbF(0.22265625f, 0.48046875f, 0.6171875f, 1.0f));

    // "Cancel" in the question keeps the customer on the screen.
    LogCatcher log("kovena.payment");
    QTest::mouseClick(cancel, Qt::LeftButton);
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->title(), QString());
    EXPECT_EQ(alert()->message(), QStringLiteral("Are you sure want to cancel transaction?"));
    QPushButton *no = alert()->findChild<QPushButton *>(QStringLiteral("alertAction0"));
    ASSERT_NE(no, nullptr);
    EXPECT_EQ(no->text(), QStringLiteral("Cancel"));
    QTest::mouseClick(no, Qt::LeftButton);
    flushDeletes();
    EXPECT_EQ(alert(), nullptr);
    EXPECT_EQ(host.merchant->callCount(), 0u);
    EXPECT_TRUE(log.messages().contains(QStringLiteral("you have pressed the No button")));

    // "Proceed" reports the cancellation, once.
    QTest::mouseClick(cancel, Qt::LeftButton);
    ASSERT_NE(alert(), nullptr);
    QPushButton *yes = alert()->findChild<QPushButton *>(QStringLiteral("alertAction1"));
    ASSERT_NE(yes, nullptr);
    EXPECT_EQ(yes->text(), QStringLiteral("Proceed"));
    QTest::mouseClick(yes, Qt::LeftButton);
    const auto calls = host.merchant->calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].record->dictionaryRepresentation(),
        JsonValue::parse(R"({"data":{"paymentStatus":-1,"description":"Cancelled"}})"));
}

TEST_P(CancelTest, WithoutAModeFromTheMerchantCancelIsOnTheScreen)
{
    PaymentScreen *screen = open(false);
    EXPECT_FALSE(button("navRightButton")->isVisible());
    EXPECT_FALSE(screen->navigationItem().rightBarButtonItem.has_value());
    QPushButton *cancel = screen->findChild<QPushButton *>(QStringLiteral("btnCancel"));
    ASSERT_NE(cancel, nullptr);
    EXPECT_TRUE(cancel->isVisible());

    QTest::mouseClick(cancel, Qt::LeftButton);
    ASSERT_NE(alert(), nullptr);
    ASSERT_TRUE(alert()->trigger(QStringLiteral("Proceed")));
    ASSERT_EQ(host.merchant->callCount(), 1u);
    EXPECT_EQ(host.merchant->calls()[0].record->data->paymentStatus, -1);
}

INSTANTIATE_TEST_SUITE_P(
    PaymentScreens, CancelTest, ::testing::Values("CardViewController", "NetBankingViewController"));

} // namespace
