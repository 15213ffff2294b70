// Drives the two payment option screens inside a real navigation stack installed as the root
// of a test window, with a merchant screen that records what it is told.
#include "api/ApiManager.h"
#include "flow/MainKovena.h"
#include "flow/PaymentOptionVC.h"
#include "flow/PaymentOptionViewController.h"
#include "model/TransactionStatus.h"
#include "payment/PaymentScreen.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/Reachability.h"
#include "platform/Storyboard.h"
#include "platform/UserDefaults.h"
#include "sdk/KovenaCallback.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;
using namespace kovena;

namespace {

struct Report
{
    qint64 paymentStatus;
    QString description;
    int toastsShownBefore; // toasts on screen when the merchant was called
};

class Merchant : public QWidget, public KovenaCallback
{
public:
    void onTransactionComplete(std::shared_ptr<TransactionStatus> transactionStatus) override
    {
        ASSERT_TRUE(transactionStatus && transactionStatus->data);
        const auto &data = *transactionStatus->data;
        int toasts = 0;
        for (QWidget *w : QApplication::allWidgets())
            toasts += w->objectName() == u"kovenaToast";
        reports.push_back({ data.paymentStatus.value_or(0), data.description.value_or(QString()), toasts });
        if (echo)
            std::fprintf(stderr, "[merchant %lld]\n", static_cast<long long>(reports.back().paymentStatus));
    }
    bool echo = false; // also tell stderr, for death tests
    std::vector<Report> reports;
};

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

// No network for the payment screens of the main storyboard, whatever the machine has.
struct OfflineProbe
{
    OfflineProbe() { reachability::setProbe([] { return std::optional<std::uint32_t>(); }); }
    ~OfflineProbe() { reachability::setProbe({}); }
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
    // A new window with the merchant screen, replaced by an empty navigation stack.
    void freshStack()
    {
        auto &defaults = UserDefaults::standard();
        defaults.clear();
        defaults.setString(u"paymentMode"_s, u"4"_s);
        window = std::make_unique<QWidget>();
        window->resize(375, 667);
        auto *layout = new QVBoxLayout(window.get());
        merchant = new Merchant;
        layout->addWidget(merchant);
        window->show();
        navigation = new NavigationController;
        setRootViewController(window.get(), navigation);
        scheduler.runDue(); // the new root appears on the next turn of the main queue
    }
    void TearDown() override
    {
        window.reset();
        // Toasts and other blocks queued for the screens must not outlive the test.
        scheduler.advance(std::chrono::seconds(10));
    }

    template<class Screen> Screen *fill(Screen *screen)
    {
        screen->amount = u"100"_s;
        screen->merchantTransactionRefNumber = u"ORD-77"_s;
        screen->accessToken = u"token"_s;
        screen->collectorId = u"C-9"_s;
        screen->customerMobNum = u"9876543210"_s;
        screen->customerEmail = u"buyer@example.in"_s;
        screen->merchantAppName = u"Chai Point"_s;
        screen->merchantVC = merchant;
        return screen;
    }
    PaymentOptionVC *makeOptionVC()
    {
        return fill(qobject_cast<PaymentOptionVC *>(
            testStoryboard().instantiateViewController(u"PaymentOptionVC"_s)));
    }
    PaymentOptionViewController *makeChooser()
    {
        return fill(qobject_cast<PaymentOptionViewController *>(
            testStoryboard().instantiateViewController(u"PaymentOptionViewController"_s)));
    }
    QStringList statuses() const
    {
        QStringList out;
        for (const Report &r : merchant->reports)
            out << QString::number(r.paymentStatus) + u' ' + r.description;
        return out;
    }
    void show(ViewController *screen) { navigation->pushViewController(screen, false); }
    void setMode(const QString &mode) { UserDefaults::standard().setString(u"paymentMode"_s, mode); }

    ManualScheduler scheduler;
    ScopedScheduler scoped { scheduler };
    std::unique_ptr<QWidget> window;
    Merchant *merchant = nullptr;
    NavigationController *navigation = nullptr;
};

TEST_F(OptionsScreens, RoutesByTheStoredPaymentMode)
{
    const std::pair<QString, QString> rows[] = { { u"1"_s, kScenes[0] }, { u"2"_s, kScenes[1] },
        { u"3"_s, kScenes[2] }, { u"4"_s, {} }, { u""_s, {} }, { u" 1"_s, {} }, { u"01"_s, {} } };
    for (const auto &[mode, scene] : rows) {
        SCOPED_TRACE(mode.toStdString());
        freshStack();
        setMode(mode);
        PaymentOptionVC *options = makeOptionVC();
        options->paymentMode = u"2"_s; // the field is not what routes
        show(options);
        ASSERT_TRUE(options->isViewLoaded());
        EXPECT_TRUE(merchant->reports.empty());
        if (scene.isEmpty()) {
            EXPECT_EQ(navigation->viewControllers(), QList<ViewController *> { options });
            EXPECT_FALSE(navigation->lastTransition().has_value());
            continue;
        }
        auto *next = dynamic_cast<FakePaymentScreen *>(navigation->topViewController());
        ASSERT_NE(next, nullptr);
        EXPECT_EQ(next->storyboardIdentifier(), scene);
        EXPECT_EQ(navigation->viewControllers(), (QList<ViewController *> { options, next }));
        EXPECT_EQ(next->loads, 1);
        EXPECT_TRUE(next->isPaymentModeAvail);
        EXPECT_EQ(next->amount, u"100"_s);
        EXPECT_EQ(next->merchantTransactionRefNumber, u"ORD-77"_s);
        EXPECT_EQ(next->collectorId, u"C-9"_s);
        EXPECT_EQ(next->merchantVC, merchant);
        const auto transition = navigation->lastTransition();
        ASSERT_TRUE(transition.has_value());
        EXPECT_DOUBLE_EQ(transition->duration, 0.3);
        EXPECT_EQ(transition->type, u"moveIn"_s);
        EXPECT_EQ(transition->subtype, u"fromTop"_s);
    }
}

TEST_F(OptionsScreens, WithoutNavigationControllerNothingIsPushed)
{
    setMode(u"1"_s);
    std::unique_ptr<PaymentOptionVC> options(makeOptionVC());
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
        PaymentOptionVC *options = makeOptionVC();
        options->amount = row.amount;
        const QColor normalColour = options->UPILabel()->palette().color(QPalette::ButtonText);
        show(options);
        EXPECT_EQ(options->findChild<QLabel *>(u"lbAmount"_s)->text(), row.optionText);
        EXPECT_EQ(options->findChild<QLabel *>(u"lbOrderId"_s)->text(), u"ORD-77"_s);
        EXPECT_EQ(options->findChild<QLabel *>(u"lbTitleAppName"_s)->text(), u"Chai Point"_s);
        EXPECT_TRUE(options->navigationItem().hidesBackButton);
        EXPECT_EQ(options->UPILabel()->isEnabled(), row.upi);
        EXPECT_EQ(options->UPILabel()->palette().color(QPalette::Active, QPalette::ButtonText),
            row.upi ? normalColour : QColor(Qt::lightGray));

        PaymentOptionViewController *chooser = makeChooser();
        chooser->amount = row.amount;
        show(chooser);
        EXPECT_EQ(chooser->findChild<QLabel *>(u"lbAmount"_s)->text(), row.chooserText);
        EXPECT_EQ(chooser->findChild<QLabel *>(u"lbOrderId"_s)->text(), u"ORD-77"_s);
        EXPECT_EQ(chooser->findChild<QLabel *>(u"firstLetterInCircle"_s)->text(), u"C"_s);
        EXPECT_TRUE(merchant->reports.empty());
    }
}

TEST_F(OptionsScreens, EmptyMerchantNameShowsTheApplicationName)
{
    const QString previous = QCoreApplication::applicationName();
    QCoreApplication::setApplicationName(u"\u00C9picerie Fine"_s);
    PaymentOptionVC *options = makeOptionVC();
    options->merchantAppName = u""_s;
    show(options);
    PaymentOptionViewController *chooser = makeChooser();
    chooser->merchantAppName = u""_s;
    show(chooser);
    QCoreApplication::setApplicationName(previous);

    EXPECT_EQ(options->lbTitleAppName()->text(), u"\u00C9picerie Fine"_s);
    EXPECT_EQ(chooser->lbTitleAppName()->text(), u"\u00C9picerie Fine"_s);
    EXPECT_EQ(chooser->firstLetterInCircle()->text(), u"\u00C9"_s);
}

TEST_F(OptionsScreens, LoadingResetsRetry)
{
    UserDefaults::standard().setBool(u"retry"_s, true);
    show(makeOptionVC());
    EXPECT_EQ(UserDefaults::standard().boolean(u"retry"_s), std::optional<bool>(false));
}

TEST_F(OptionsScreens, FailedValidationReportsThenStillRoutes)
{
    setMode(u"1"_s);
    PaymentOptionVC *options = makeOptionVC();
    options->amount = u"0.99"_s;
    options->customerEmail = u""_s;
    show(options);

    EXPECT_EQ(
        statuses(), (QStringList { u"-104 Missing SDK params,amount range is invalid"_s, u"-107 Error"_s }));
    // The toasts are queued: none was on screen while the merchant was being told.
    for (const Report &r : merchant->reports)
        EXPECT_EQ(r.toastsShownBefore, 0);
    auto *next = dynamic_cast<FakePaymentScreen *>(navigation->topViewController());
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->storyboardIdentifier(), u"UPIViewController"_s);
    EXPECT_EQ(next->amount, u"0.99"_s);

    scheduler.runDue();
    QStringList toasts;
    for (QLabel *label : options->findChildren<QLabel *>(u"kovenaToast"_s))
        toasts << label->text();
    EXPECT_EQ(toasts, (QStringList { u"Invalid amount range"_s, u"Customer Email Error"_s }));
}

TEST_F(OptionsScreens, CancelReportsCancelledWithoutAsking)
{
    PaymentOptionVC *options = makeOptionVC();
    show(options);
    QTest::mouseClick(options->findChild<QPushButton *>(u"cancelButton"_s), Qt::LeftButton);
    options->back();
    PaymentOptionViewController *chooser = makeChooser();
    show(chooser);
    QTest::mouseClick(chooser->findChild<QPushButton *>(u"cancelButton"_s), Qt::LeftButton);

    EXPECT_EQ(statuses(), QStringList(3, u"-1 Cancelled"_s));
    EXPECT_EQ(options->presentedViewController(), nullptr);
    EXPECT_EQ(chooser->presentedViewController(), nullptr);
}

// Which fields a segue hands to a fresh payment screen: "amount order merchant collector".
template<class Screen> QString handedBy(Screen *source, const QString &segue)
{
    FakePaymentScreen destination;
    source->prepare(StoryboardSegue { segue, source, &destination }, nullptr);
    QStringList handed;
    if (destination.amount == u"100")
        handed << u"amount"_s;
    if (destination.merchantTransactionRefNumber == u"ORD-77"_s)
        handed << u"order"_s;
    if (destination.merchantVC == source->merchantVC)
        handed << u"merchant"_s;
    if (destination.collectorId == u"C-9"_s)
        handed << u"collector"_s;
    EXPECT_FALSE(destination.isPaymentModeAvail);
    return handed.join(u' ');
}

TEST_F(OptionsScreens, PrepareHandsFieldsBySegue)
{
    const QString all = u"amount order merchant collector"_s;
    const struct
    {
        QString segue, byChooser, byOptionVC;
    } rows[] = { { u"CardViewController"_s, u"amount order merchant"_s, all },
        { u"NetBankingViewController"_s, all, all }, { u"UPIViewController"_s, all, all },
        { u"cardViewController"_s, {}, {} }, { u"PopUpViewController"_s, {}, {} }, { u""_s, {}, {} } };
    std::unique_ptr<PaymentOptionVC> options(makeOptionVC());
    std::unique_ptr<PaymentOptionViewController> chooser(makeChooser());
    for (const auto &row : rows) {
        SCOPED_TRACE(row.segue.toStdString());
        EXPECT_EQ(handedBy(chooser.get(), row.segue), row.byChooser);
        EXPECT_EQ(handedBy(options.get(), row.segue), row.byOptionVC);
    }
}

TEST_F(OptionsScreens, ChooserStaysAndRunsTheChosenSegue)
{
    const struct
    {
        const char *button;
        QString scene, collectorId;
    } rows[] = { { "btnUPI", kScenes[0], u"C-9"_s }, { "btnCard", kScenes[1], u""_s },
        { "btnNetBanking", kScenes[2], u"C-9"_s } };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.button);
        freshStack();
        setMode(u"1"_s); // the chooser never routes by itself
        PaymentOptionViewController *chooser = makeChooser();
        show(chooser);
        ASSERT_EQ(navigation->topViewController(), chooser);

        QTest::mouseClick(chooser->findChild<QPushButton *>(QString::fromLatin1(row.button)), Qt::LeftButton);
        auto *next = dynamic_cast<FakePaymentScreen *>(navigation->topViewController());
        ASSERT_NE(next, nullptr);
        EXPECT_EQ(next->storyboardIdentifier(), row.scene);
        EXPECT_EQ(next->collectorId, row.collectorId);
        EXPECT_EQ(next->amount, u"100"_s);
    }
}

TEST_F(OptionsScreens, CircleIsDrawnRoundBehindTheInitial)
{
    PaymentOptionViewController *chooser = makeChooser();
    show(chooser);
    QWidget *circle = chooser->vCircle();
    ASSERT_TRUE(QTest::qWaitFor([circle] { return circle->isVisible(); }, 2000));
    // Drawn as part of the screen, so that the corners show what lies behind the circle.
    const QImage image = chooser->grab().toImage();
    const QPoint origin = circle->mapTo(chooser, QPoint(0, 0));
    const QColor fill = image.pixelColor(origin + QPoint(circle->width() / 2, circle->height() / 8));
    EXPECT_EQ(fill, QColor(0x3f, 0x51, 0xb5));
    EXPECT_NE(image.pixelColor(origin + QPoint(1, 1)), fill);
}

TEST_F(OptionsScreens, MainStoryboardOpensThePaymentScreens)
{
    // Keep the payment screens away from any backend: no network, and a closed local port.
    OfflineProbe offline;
    ApiManager::setServerUrl(u"http://127.0.0.1:9/KoVena/"_s);
    const std::pair<QString, const char *> rows[] = { { u"1"_s, "kovena::UPIViewController" },
        { u"2"_s, "kovena::CardViewController" }, { u"3"_s, "kovena::NetBankingViewController" } };
    for (const auto &[mode, className] : rows) {
        SCOPED_TRACE(className);
        freshStack();
        setMode(mode);
        PaymentOptionVC *options = fill(new PaymentOptionVC);
        show(options);
        auto *next = qobject_cast<PaymentScreen *>(navigation->topViewController());
        ASSERT_NE(next, nullptr);
        EXPECT_STREQ(next->metaObject()->className(), className);
        EXPECT_TRUE(next->isPaymentModeAvail);
        EXPECT_EQ(next->amount, u"100"_s);
    }
}

using OptionsScreensDeath = OptionsScreens;

TEST_F(OptionsScreensDeath, MissingPaymentModeIsFatal)
{
    UserDefaults::standard().remove(u"paymentMode"_s);
    EXPECT_DEATH(show(makeOptionVC()), "");
}

TEST_F(OptionsScreensDeath, AmountThatFormatsToNoNumberEndsAtTheUpiLimit)
{
    // "1.5e3" is in range but not a valid amount; cut to two places it reads "1.5e", which the
    // UPI limit cannot read. The merchant has been told of the invalid amount by then.
    merchant->echo = true;
    PaymentOptionVC *options = makeOptionVC();
    options->amount = u"1.5e3"_s;
    EXPECT_DEATH(show(options), R"(\[merchant -103\][^[]*fatal error)");
}

} // namespace
