// Every screen of the checkout walked with the keyboard, as a customer who cannot use a pointer
// would: real Tab key presses from the top of the screen, in the themed flow the merchant gets.
// Tab must visit the controls in the form's order (amount, the fields in reading order, proceed,
// then cancel), and every control it reaches, or could reach, has an accessible name and
// description for a screen reader.
#include "flow/MainKovena.h"
#include "flow/PaymentOptionViewController.h"
#include "flow/flow_root_support.h"
#include "payment/NetBankingViewController.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"
#include "sdk/KovenaSDK.h"
#include "support/InProcessBackend.h"
#include "support/Scoped.h"

#include <QAccessible>
#include <QApplication>
#include <QDate>
#include <QListView>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace kovena {
namespace {

QString accessible(QWidget *widget, QAccessible::Text what)
{
    QAccessibleInterface *face = QAccessible::queryAccessibleInterface(widget);
    return face ? face->text(what) : QString();
}

class Checkout
{
public:
    Checkout(const QString &mode, const QString &amount)
    {
        testing::inProcessBackend(); // the net banking screen asks it for the bank list
        window.resize(360, 640);
        merchant = new testing::TestMerchant;
        merchant->setParent(&window);
        window.show();
        static int serial = 0;
        KovenaSDK::instance().kovenaInit(merchant, u"Chai Point"_s, u"ORD-A11Y-%1"_s.arg(++serial),
            u"a11y-token"_s, u"COLL-1"_s, amount, u"9876543210"_s, u"asha@example.in"_s, QString(), mode);
        window.activateWindow();
        QApplication::setActiveWindow(&window);
    }

    NavigationController *nav() const
    {
        return qobject_cast<NavigationController *>(rootViewController(merchant));
    }
    ViewController *top() const { return nav() ? nav()->topViewController() : nullptr; }
    bool reached(const QString &scene) const
    {
        return QTest::qWaitFor(
            [&] { return top() && top()->storyboardIdentifier() == scene && top()->isVisible(); });
    }
    template<class T = QWidget> T *onTop(const QString &name) const { return top()->findChild<T *>(name); }

    testing::SwitchableNetwork network;
    QWidget window;
    testing::TestMerchant *merchant = nullptr;
};

// Chooses `entry` of the drop-down list that tapping `anchor` opens, with the keyboard.
void choose(Checkout &checkout, const QString &anchor, const QString &entry)
{
    QTest::mouseClick(checkout.onTop(anchor), Qt::LeftButton);
    QListView *list = nullptr;
    // Each list of the screen has its own view; the one that just opened is the visible one.
    ASSERT_TRUE(QTest::qWaitFor([&] {
        for (QListView *each : checkout.window.findChildren<QListView *>(u"dropDownList"_s))
            list = each->isVisible() ? each : list;
        return list != nullptr;
    }));
    for (int i = 0; i < 60 && list->currentIndex().data().toString() != entry; ++i)
        QTest::keyClick(list, Qt::Key_Down);
    ASSERT_EQ(list->currentIndex().data().toString(), entry);
    QTest::keyClick(list, Qt::Key_Return);
}

struct WalkRow
{
    const char *name;
    const char *mode;
    const char *amount;
    const char *scene;
    // Brings the screen to the state walked; the walk starts where the keyboard then is.
    std::function<void(Checkout &)> prepare;
    QStringList order; // the object names Tab visits, from the first control on
    bool wraps = false; // a presentation: Tab comes back to its first control
};

class TabOrderTest : public ::testing::TestWithParam<WalkRow>
{
};

TEST_P(TabOrderTest, TabVisitsEveryControlInTheFormsOrderAndEachIsNamedAndDescribed)
{
    const WalkRow &row = GetParam();
    Checkout checkout(QString::fromLatin1(row.mode), QString::fromLatin1(row.amount));
    ASSERT_TRUE(checkout.reached(QString::fromLatin1(row.scene)));
    // Start above the form: the screen itself holds the keyboard, so the first Tab finds the
    // first control.
    checkout.top()->setFocus(Qt::OtherFocusReason);
    if (row.prepare)
        row.prepare(checkout);
    if (HasFatalFailure())
        return;

    QWidget *walked = checkout.top();
    if (row.wraps) {
        // A presentation hands the keyboard to its first control once its controls show.
        walked = checkout.top()->presentedViewController();
        ASSERT_TRUE(walked);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !tabStopsOf(walked).isEmpty(); }));
        if (QApplication::focusWidget() == walked) // still on the presentation itself
            QTest::keyClick(walked, Qt::Key_Tab);
    } else {
        ASSERT_TRUE(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // enters the first control
    }
    // A presentation's walk ends back on its first control.
    const QStringList expected = row.wraps ? row.order + QStringList { row.order.first() } : row.order;
    QStringList visited;
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QWidget *focused = QApplication::focusWidget();
        ASSERT_TRUE(focused) << "the keyboard went nowhere after " << visited.join(u", "_s).toStdString();
        visited << focused->objectName();
        EXPECT_FALSE(accessible(focused, QAccessible::Name).isEmpty()) << focused->objectName().toStdString();
        EXPECT_FALSE(accessible(focused, QAccessible::Description).isEmpty())
            << focused->objectName().toStdString();
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    EXPECT_EQ(visited, expected);

    // Nothing that takes the keyboard on the screen is left out of the walk.
    for (QWidget *stop : tabStopsOf(walked))
        EXPECT_TRUE(row.order.contains(stop->objectName()))
            << stop->objectName().toStdString() << " was skipped";
}

void fillCard(Checkout &checkout)
{
    QTest::keyClicks(checkout.onTop(u"tfCardNumber"_s), u"4111111111111111"_s);
    QTest::keyClicks(checkout.onTop(u"tfCardName"_s), u"Asha Rao"_s);
    choose(checkout, u"btnMonth"_s, u"12"_s);
    choose(checkout, u"btnYear"_s, QString::number(QDate::currentDate().year() + 2));
    QTest::keyClicks(checkout.onTop(u"tfCvv"_s), u"123"_s);
    ASSERT_TRUE(checkout.onTop(u"btnProceed"_s)->isEnabled());
    checkout.top()->setFocus(Qt::OtherFocusReason);
}

void waitForBanks(Checkout &checkout)
{
    auto *screen = qobject_cast<NetBankingViewController *>(checkout.top());
    ASSERT_TRUE(screen);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !screen->bankList.isEmpty(); }));
}

const QStringList kPopularBanks = { u"btnSbiBank"_s, u"btnHdfcBank"_s, u"btnIciciBank"_s, u"btnAxixBank"_s,
    u"btnYesBank"_s, u"btnPnbBank"_s };

INSTANTIATE_TEST_SUITE_P(Screens, TabOrderTest,
    ::testing::Values(WalkRow { "payment_option_screen", "4", "1499", "PaymentOptionVC", {},
                          { u"lbAmount"_s, u"UPILabel"_s, u"cancelButton"_s } },
        // Over the UPI limit the UPI choice takes no interaction, the keyboard's included.
        WalkRow { "payment_option_screen_over_the_upi_limit", "4", "150000.50", "PaymentOptionVC", {},
            { u"lbAmount"_s, u"cancelButton"_s } },
        WalkRow { "payment_choice_screen", "4", "1499", "PaymentOptionVC",
            [](Checkout &checkout) {
                auto *chooser = testing::withCheckoutFields(
                    qobject_cast<PaymentOptionViewController *>(
                        mainKovenaStoryboard().instantiateViewController(u"PaymentOptionViewController"_s)),
                    checkout.merchant);
                checkout.nav()->pushViewController(chooser, false);
                ASSERT_TRUE(checkout.reached(u"PaymentOptionViewController"_s));
                chooser->setFocus(Qt::OtherFocusReason);
            },
            { u"lbAmount"_s, u"btnUPI"_s, u"btnCard"_s, u"btnNetBanking"_s, u"cancelButton"_s } },
        WalkRow { "upi", "1", "1499", "UPIViewController", {},
            { u"lbAmount"_s, u"tfUpiId"_s, u"btnProceed"_s, u"navRightButton"_s } },
        // Proceed is disabled until the form is complete, and is skipped until then.
        WalkRow { "card_empty", "2", "1499", "CardViewController", {},
            { u"lbAmount"_s, u"tfCardNumber"_s, u"tfCardName"_s, u"btnMonth"_s, u"btnYear"_s, u"tfCvv"_s,
                u"navRightButton"_s } },
        WalkRow { "card_complete", "2", "1499", "CardViewController", fillCard,
            { u"lbAmount"_s, u"tfCardNumber"_s, u"tfCardName"_s, u"btnMonth"_s, u"btnYear"_s, u"tfCvv"_s,
                u"btnProceed"_s, u"navRightButton"_s } },
        WalkRow { "net_banking", "3", "1499", "NetBankingViewController", waitForBanks,
            QStringList { u"lbAmount"_s } + kPopularBanks
                + QStringList { u"btnSelectBank"_s, u"navRightButton"_s } },
        WalkRow { "approval_notice", "1", "1499", "UPIViewController",
            [](Checkout &checkout) {
                checkout.top()->present(
                    mainKovenaStoryboard().instantiateViewController(u"PopUpViewController"_s), true);
            },
            { u"popUpText"_s, u"btnPopUpOk"_s }, true },
        WalkRow { "cancel_question", "1", "1499", "UPIViewController",
            [](Checkout &checkout) { QTest::mouseClick(checkout.nav()->rightButton(), Qt::LeftButton); },
            { u"alertAction0"_s, u"alertAction1"_s }, true }),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
} // namespace kovena
