// The two payment option screens inside a real navigation stack that replaced a merchant screen.
#include "api/ApiManager.h"
#include "flow/PaymentOptionVC.h"
#include "flow/PaymentOptionViewController.h"
#include "flow/flow_root_support.h"
#include "payment/PaymentScreen.h"
#include "platform/Reachability.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"
#include "support/Scoped.h"
#include "support/ScreenDriving.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace kovena;
using namespace kovena::testing;

namespace {

// Stands in for the card, UPI and net banking screens: only the handed-over fields matter here.
class FakePaymentScreen : public PaymentScreen
{
public:
    FakePaymentScreen() { ++alive, ++made; }
    ~FakePaymentScreen() override { --alive; }
    void viewDidLoad() override { ++loads; }
    int loads = 0;
    static inline int alive = 0, made = 0;
};

const QString kScenes[] = { u"UPIViewController"_s, u"CardViewController"_s, u"NetBankingViewController"_s };

Storyboard &testStoryboard()
{
    static Storyboard *board = [] {
        auto *b = new Storyboard(u"OptionsTest"_s);
        b->registerScene(u"PaymentOptionVC"_s, [] { return new PaymentOptionVC; });
        b->registerScene(u"PaymentOptionViewController"_s, [] { return new PaymentOptionViewController; });
        for (const QString &scene : kScenes) {
            b->registerScene(scene, [] { return new FakePaymentScreen; });
            b->registerSegue(scene, scene);
        }
        return b;
    }();
    return *board;
}

class OptionsScreens : public ::testing::Test
{
protected:
    void SetUp() override { freshStack(); }
    void TearDown() override
    {
        host.reset();
        scheduler.advance(std::chrono::seconds(10)); // queued toasts must not outlive the test
    }
    // A new merchant window whose content an empty navigation stack replaced.
    void freshStack(const QString &mode = u"4"_s)
    {
        UserDefaults::standard().clear();
        UserDefaults::standard().setString(u"paymentMode"_s, mode);
        host = std::make_unique<MerchantWindow>();
        navigation = new NavigationController;
        setRootViewController(&host->window, navigation);
        scheduler.runDue(); // the new root appears on the next turn of the main queue
    }
    template<class Screen> Screen *fill(Screen *screen) { return withCheckoutFields(screen, host->merchant); }
    template<class Screen> Screen *make() // the scene is named after the class
    {
        const QString id = QString::fromLatin1(Screen::staticMetaObject.className()).section(u"::"_s, 1);
        return fill(qobject_cast<Screen *>(testStoryboard().instantiateViewController(id)));
    }
    void show(ViewController *screen) { navigation->pushViewController(screen, false); }
    FakePaymentScreen *top() { return dynamic_cast<FakePaymentScreen *>(navigation->topViewController()); }
    // The payment screen on top is `scene`, handed the checkout's fields by the segue.
    void expectHandedOver(const QString &scene, const QString &collectorId, bool paymentModeAvail)
    {
        ASSERT_NE(top(), nullptr);
        EXPECT_EQ(std::tuple(top()->storyboardIdentifier(), top()->amount,
                      top()->merchantTransactionRefNumber, top()->collectorId),
            std::tuple(scene, u"100"_s, std::optional(u"ORD-77"_s), std::optional(collectorId)));
        EXPECT_EQ(top()->merchantVC, host->merchant);
        EXPECT_EQ(top()->isPaymentModeAvail, paymentModeAvail);
    }

    ManualScheduler scheduler;
    ScopedScheduler scoped { scheduler };
    std::unique_ptr<MerchantWindow> host;
    NavigationController *navigation = nullptr;
};

TEST_F(OptionsScreens, RoutesByTheStoredPaymentMode)
{
    const std::pair<QString, QString> rows[] = { { u"1"_s, kScenes[0] }, { u"2"_s, kScenes[1] },
        { u"3"_s, kScenes[2] }, { u"4"_s, {} }, { u""_s, {} }, { u" 1"_s, {} }, { u"01"_s, {} } };
    for (const auto &[mode, scene] : rows) {
        SCOPED_TRACE(mode.toStdString());
        freshStack(mode);
        PaymentOptionVC *options = make<PaymentOptionVC>();
        options->paymentMode = u"2"_s; // the field is not what routes
        UserDefaults::standard().setBool(u"retry"_s, true);
        show(options);
        ASSERT_TRUE(options->isViewLoaded());
        EXPECT_EQ(UserDefaults::standard().boolean(u"retry"_s), std::optional<bool>(false));
        EXPECT_EQ(host->merchant->callCount(), 0u);
        if (scene.isEmpty()) {
            EXPECT_EQ(navigation->viewControllers(), QList<ViewController *> { options });
            EXPECT_FALSE(navigation->lastTransition().has_value());
            continue;
        }
        expectHandedOver(scene, u"C-9"_s, true);
        ASSERT_NE(top(), nullptr);
        EXPECT_EQ(navigation->viewControllers(), (QList<ViewController *> { options, top() }));
        EXPECT_EQ(top()->loads, 1);
        const auto transition = navigation->lastTransition();
        ASSERT_TRUE(transition.has_value());
        EXPECT_EQ(std::tuple(transition->duration, transition->type, transition->subtype),
            std::tuple(0.3, u"moveIn"_s, u"fromTop"_s));
    }
}

TEST_F(OptionsScreens, WithoutNavigationControllerNothingIsPushed)
{
    freshStack(u"1"_s);
    std::unique_ptr<PaymentOptionVC> options(make<PaymentOptionVC>());
    const int aliveBefore = FakePaymentScreen::alive, madeBefore = FakePaymentScreen::made;
    options->loadViewIfNeeded();
    EXPECT_TRUE(navigation->viewControllers().isEmpty());
    EXPECT_EQ(FakePaymentScreen::made, madeBefore + 1);
    EXPECT_EQ(FakePaymentScreen::alive, aliveBefore); // not shown, not leaked
}

TEST_F(OptionsScreens, ShowAmountAndOfferUpiUpToOneHundredThousandRupees)
{
    const struct
    {
        QString amount, optionText, chooserText;
        bool upi;
    } rows[] = { { u"100"_s, u"\u20B9 100.00"_s, u"100"_s, true },
        { u"12.5"_s, u"\u20B9 12.50"_s, u"12.50"_s, true },
        { u"12.345"_s, u"\u20B9 12.34"_s, u"12.34"_s, true },
        { u"100000"_s, u"\u20B9 100000.00"_s, u"100000"_s, true },
        { u"100000.99"_s, u"\u20B9 100000.99"_s, u"100000.99"_s, true },
        { u"100001"_s, u"\u20B9 100001.00"_s, u"100001"_s, false },
        { u"150000.50"_s, u"\u20B9 150000.50"_s, u"150000.50"_s, false } };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.amount.toStdString());
        freshStack();
        PaymentOptionVC *options = make<PaymentOptionVC>();
        options->amount = row.amount;
        const QColor normalColour = options->UPILabel()->palette().color(QPalette::ButtonText);
        show(options);
        EXPECT_EQ(options->lbAmount()->text(), row.optionText);
        EXPECT_EQ(options->UPILabel()->isEnabled(), row.upi);
        EXPECT_EQ(options->UPILabel()->palette().color(QPalette::Active, QPalette::ButtonText),
            row.upi ? normalColour : QColor(Qt::lightGray));

        PaymentOptionViewController *chooser = make<PaymentOptionViewController>();
        chooser->amount = row.amount;
        show(chooser);
        EXPECT_EQ(chooser->findChild<QLabel *>(u"lbAmount"_s)->text(), row.chooserText);
        EXPECT_EQ(host->merchant->callCount(), 0u);
    }
}

TEST_F(OptionsScreens, TitleIsTheMerchantNameOrElseTheApplicationName)
{
    const QString previous = QCoreApplication::applicationName();
    QCoreApplication::setApplicationName(u"\u00C9picerie Fine"_s);
    for (const auto &[given, title] :
        { std::pair { u"Chai Point"_s, u"Chai Point"_s }, std::pair { u""_s, u"\u00C9picerie Fine"_s } }) {
        PaymentOptionVC *options = make<PaymentOptionVC>();
        PaymentOptionViewController *chooser = make<PaymentOptionViewController>();
        options->merchantAppName = chooser->merchantAppName = given;
        show(options);
        show(chooser);
        EXPECT_EQ(options->lbTitleAppName()->text(), title);
        EXPECT_EQ(chooser->lbTitleAppName()->text(), title);
        EXPECT_EQ(chooser->firstLetterInCircle()->text(), title.left(1));
    }
    QCoreApplication::setApplicationName(previous);
}

TEST_F(OptionsScreens, FailedValidationReportsThenStillRoutes)
{
    freshStack(u"1"_s);
    PaymentOptionVC *options = make<PaymentOptionVC>();
    options->amount = u"0.99"_s;
    options->customerEmail = u""_s;
    show(options);
    EXPECT_EQ(host->merchant->statuses(),
        (QStringList { u"-104 Missing SDK params,amount range is invalid"_s, u"-107 Error"_s }));
    ASSERT_NE(top(), nullptr);
    EXPECT_EQ(top()->storyboardIdentifier(), u"UPIViewController"_s);
    EXPECT_EQ(top()->amount, u"0.99"_s);

    scheduler.runDue();
    EXPECT_EQ(toastsOn(options), (QStringList { u"Invalid amount range"_s, u"Customer Email Error"_s }));
}

TEST_F(OptionsScreens, CancelReportsCancelledWithoutAsking)
{
    PaymentOptionVC *options = make<PaymentOptionVC>();
    show(options);
    QTest::mouseClick(options->findChild<QPushButton *>(u"cancelButton"_s), Qt::LeftButton);
    options->back();
    PaymentOptionViewController *chooser = make<PaymentOptionViewController>();
    show(chooser);
    QTest::mouseClick(chooser->findChild<QPushButton *>(u"cancelButton"_s), Qt::LeftButton);
    EXPECT_EQ(host->merchant->statuses(), QStringList(3, u"-1 Cancelled"_s));
    EXPECT_EQ(options->presentedViewController(), nullptr);
    EXPECT_EQ(chooser->presentedViewController(), nullptr);
}

TEST_F(OptionsScreens, ChooserStaysAndRunsTheChosenSegue)
{
    // The card segue alone leaves the collector id behind.
    const std::tuple<const char *, QString, QString> rows[] = { { "btnUPI", kScenes[0], u"C-9"_s },
        { "btnCard", kScenes[1], u""_s }, { "btnNetBanking", kScenes[2], u"C-9"_s } };
    for (const auto &[button, scene, collectorId] : rows) {
        SCOPED_TRACE(button);
        freshStack(u"1"_s); // the chooser never routes by itself
        PaymentOptionViewController *chooser = make<PaymentOptionViewController>();
        show(chooser);
        ASSERT_EQ(navigation->topViewController(), chooser);
        QTest::mouseClick(chooser->findChild<QPushButton *>(QLatin1String(button)), Qt::LeftButton);
        expectHandedOver(scene, collectorId, false);
    }
    // Segue names match exactly; any other hands nothing over.
    std::unique_ptr<PaymentOptionVC> options(make<PaymentOptionVC>());
    std::unique_ptr<PaymentOptionViewController> chooser(make<PaymentOptionViewController>());
    for (const QString &segue : { u"cardViewController"_s, u"PopUpViewController"_s, u""_s }) {
        FakePaymentScreen a, b;
        options->prepare(StoryboardSegue { segue, options.get(), &a }, nullptr);
        chooser->prepare(StoryboardSegue { segue, chooser.get(), &b }, nullptr);
        for (const FakePaymentScreen *d : { &a, &b })
            EXPECT_TRUE(d->amount != u"100"_s && d->merchantTransactionRefNumber != u"ORD-77"_s
                && d->collectorId != u"C-9"_s && d->merchantVC != host->merchant)
                << segue.toStdString();
    }
}

TEST_F(OptionsScreens, WithoutAStoryboardItRoutesThroughTheMainOne)
{
    // Keep the payment screen away from any backend: no network, and a closed local port.
    const ScopedReachability offline([] { return std::optional<std::uint32_t>(); });
    const ScopedServerUrl closedPort(u"http://127.0.0.1:9/KoVena/"_s);
    freshStack(u"2"_s);
    show(fill(new PaymentOptionVC));
    auto *next = qobject_cast<PaymentScreen *>(navigation->topViewController());
    ASSERT_NE(next, nullptr);
    EXPECT_STREQ(next->metaObject()->className(), "kovena::CardViewController");
    EXPECT_TRUE(next->isPaymentModeAvail);
    EXPECT_EQ(next->amount, u"100"_s);
}

using OptionsScreensDeath = OptionsScreens;

TEST_F(OptionsScreensDeath, MissingPaymentModeIsFatal)
{
    UserDefaults::standard().remove(u"paymentMode"_s);
    EXPECT_DEATH(
        show(make<PaymentOptionVC>()), fatalLine("PaymentOptionVC: no payment mode in the user defaults"));
}

TEST_F(OptionsScreensDeath, AmountThatFormatsToNoNumberEndsAtTheUpiLimit)
{
    // "1.5e3" is in range but not a valid amount; cut to two places it reads "1.5e", which the
    // UPI limit cannot read. The merchant has been told of the invalid amount by then.
    host->merchant->onCall = [](const auto &record) {
        std::fprintf(
            stderr, "[merchant %lld]\n", static_cast<long long>(record->data->paymentStatus.value_or(0)));
    };
    PaymentOptionVC *options = make<PaymentOptionVC>();
    options->amount = u"1.5e3"_s;
    // Log lines may come between; no second report may.
    EXPECT_DEATH(
        show(options), "\\[merchant -103\\]\n[^[]*" + fatalLine("PaymentOptionVC: amount is not a number"));
}

} // namespace
