// The net banking screen driven through its widgets, against the in-process sandbox backend, on
// the manual clock. Every bank list and payment answer is scripted; answers arrive on the
// session thread and are queued into the manual clock, which the tests run while they wait.
// The bank page is a stand-in scene, so the hand-over is checked without an embedded browser.
#include "payment/NetBankingViewController.h"
#include "ScreenFixture.h"
#include "flow/MainKovena.h"
#include "model/BankNBData.h"
#include "payment/BankPageOpener.h"
#include "payment/BankPageScreen.h"
#include "payment/PopularBanks.h"
#include "platform/Storyboard.h"
#include "support/FatalDiagnostic.h"

#include <QListView>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <optional>
#include <string_view>
#include <vector>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace kovena {
namespace {

const std::string kListEndpoint = testing::kBankListEndpoint;
const std::string kPayEndpoint = testing::kPayEndpoint;

const sandbox::ScriptedReply kDeclined { 200, R"({"responseCode":"404BANKNOTFOUND","data":{}})" };
const sandbox::ScriptedReply kAccepted { 200,
    R"({"responseCode":"200MERSUCC","data":{"kovenaTransactionId":1700000000001,"paymentData":)"
    R"({"url":"http://127.0.0.1:1/bank/pay","data":"kovenaTransactionId=1700000000001&device_type=1"}}})" };

// The second bank has no name; the third has an id beyond 32 bits.
const char *const kFullList = R"({"responseCode":"200","data":[
    {"netBankingId":11,"netBankingName":"Andhra Bank","netbankingCodes":"ANDB"},
    {"netBankingId":12,"netbankingCodes":"AXIB"},
    {"netBankingId":4000000001,"netBankingName":"Bank of Baroda","netbankingCodes":"BARB"},
    {"netBankingId":14,"netBankingName":"HDFC Bank","netbankingCodes":"HDFB"},
    {"netBankingId":15,"netBankingName":"ICICI Bank","netbankingCodes":"ICIB"},
    {"netBankingId":16,"netBankingName":"Punjab National Bank","netbankingCodes":"PNBB"},
    {"netBankingId":17,"netBankingName":"State Bank of India","netbankingCodes":"SBIB"},
    {"netBankingId":18,"netBankingName":"Yes Bank","netbankingCodes":"YESB"}]})";
const char *const kDuplicateSbi = R"({"data":[
    {"netBankingId":21,"netBankingName":"State Bank of India","netbankingCodes":"SBIB"},
    {"netBankingId":22,"netBankingName":"Canara Bank","netbankingCodes":"CNRB"},
    {"netBankingId":23,"netBankingName":"SBI Net Banking","netbankingCodes":"SBIB"}]})";
const char *const kNoneOfTheSix = R"({"data":[
    {"netBankingId":31,"netBankingName":"ICICI Bank","netbankingCodes":"ICICI"},
    {"netBankingId":32,"netBankingName":"State Bank of India","netbankingCodes":"sbib"},
    {"netBankingId":33,"netBankingName":"Kotak Mahindra Bank","netbankingCodes":"KKBK"}]})";
const char *const kEmptyList = R"({"responseCode":"200","data":[]})";
const char *const kFailedList = R"({"error":"Internal Server Error"})";

// The popular buttons, in the order of the tables below.
const std::array<const char *, 6> kPopularButtons
    = { "btnSbiBank", "btnAxixBank", "btnHdfcBank", "btnYesBank", "btnPnbBank", "btnIciciBank" };

// The bank page as the screens see it; only what was handed over matters here.
class FakeBankPage : public BankPageScreen
{
};

class NetBankingScreenTest : public testing::ScreenFixture
{
protected:
    void SetUp() override
    {
        sandbox = &testing::inProcessBackend();
        testing::resetBackendForCheckout(u"nb-test-token"_s);

        Storyboard &storyboard = mainKovenaStoryboard();
        storyboard.registerScene(BankPageOpener::bankPageSegue(), [] { return new FakeBankPage; });
        storyboard.registerSegue(BankPageOpener::bankPageSegue(), BankPageOpener::bankPageSegue());

        static int serial = 0;
        reference = u"ORD-NB-%1"_s.arg(++serial);
        screen = qobject_cast<NetBankingViewController *>(
            storyboard.instantiateViewController(u"NetBankingViewController"_s));
        ASSERT_TRUE(screen);
        prepare(*screen, u"249.50"_s, reference, u"COL-77"_s);
    }

    // Shows the screen with `list` scripted as the bank list answer.
    void open(const sandbox::ScriptedReply &list)
    {
        sandbox->enqueueReply(kListEndpoint, list);
        show(screen);
        ASSERT_TRUE(screen->isViewLoaded());
    }
    // Shows the screen and waits for its bank list.
    void openWithList(const char *listBody)
    {
        open({ 200, listBody });
        ASSERT_TRUE(settle([&] { return screen->amountDropDown.anchorView() && !loading(); }));
    }

    bool loading() { return screen->loader().isAnimating(); }

    QPushButton *button(const char *name) const
    {
        auto *found = screen->findChild<QPushButton *>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return found;
    }
    void tap(const char *name)
    {
        QTest::mouseClick(button(name), Qt::LeftButton);
        clock.runDue();
    }
    // Opens the list with `opener` and presses `keys` on it (a letter key types the letter).
    void chooseWithKeyboard(const char *opener, std::initializer_list<Qt::Key> keys)
    {
        tap(opener);
        QListView *list = screen->amountDropDown.listView();
        ASSERT_TRUE(list && list->isVisible());
        for (const Qt::Key key : keys)
            QTest::keyClick(list, key);
        ASSERT_FALSE(screen->amountDropDown.isVisible());
        clock.runDue();
    }

    static std::vector<nlohmann::json> payments() { return testing::bodiesSentTo(kPayEndpoint); }

    sandbox::Sandbox *sandbox = nullptr;
    QPointer<NetBankingViewController> screen;
    QString reference;
};

// A table of rows, each walked on its own screen.
template<class Row>
class NetBankingRowTest : public NetBankingScreenTest, public ::testing::WithParamInterface<Row>
{
};

// Expected netbankingId per popular button (in kPopularButtons order); 0: "Error occured".
using PopularIds = std::array<qint64, 6>;

struct PopularRow
{
    const char *name;
    const char *list;
    PopularIds ids;
    qint64 firstListed; // paid with the list's first entry; 0: the list offers nothing
};

using NetBankingPopularTest = NetBankingRowTest<PopularRow>;

TEST_P(NetBankingPopularTest, EachButtonPaysWithItsBankOrSaysErrorOccured)
{
    const PopularRow &row = GetParam();
    openWithList(row.list);

    QStringList expectedToasts;
    std::vector<std::string> expectedIds;
    for (std::size_t i = 0; i < kPopularButtons.size(); ++i) {
        SCOPED_TRACE(kPopularButtons[i]);
        if (row.ids[i] == 0) {
            tap(kPopularButtons[i]);
            expectedToasts << u"Error occured"_s;
            EXPECT_FALSE(loading());
            continue;
        }
        // Declined, so the customer is back on the screen and can try the next bank.
        sandbox->enqueueReply(kPayEndpoint, kDeclined);
        tap(kPopularButtons[i]);
        expectedIds.push_back(std::to_string(row.ids[i]));
        ASSERT_TRUE(settle([&] { return payments().size() == expectedIds.size() && !loading(); }));
    }
    // The list is on its own: whatever the buttons found, its first entry pays with the first bank.
    if (row.firstListed != 0) {
        sandbox->enqueueReply(kPayEndpoint, kDeclined);
        chooseWithKeyboard("btnSelectBank", { Qt::Key_Return });
        tap("btnProceed1");
        expectedIds.push_back(std::to_string(row.firstListed));
        ASSERT_TRUE(settle([&] { return payments().size() == expectedIds.size() && !loading(); }));
    } else {
        tap("btnSelectBank");
        EXPECT_FALSE(screen->amountDropDown.isVisible());
        EXPECT_FALSE(screen->btnProceed1->isEnabled());
    }

    std::vector<std::string> sentIds;
    for (const auto &body : payments())
        sentIds.push_back(body["netbankingId"].get<std::string>());
    EXPECT_EQ(sentIds, expectedIds);
    EXPECT_EQ(testing::toastsOn(screen), expectedToasts);
    EXPECT_EQ(nav->topViewController(), screen.data());
    EXPECT_EQ(merchant->callCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Lists, NetBankingPopularTest,
    ::testing::Values(PopularRow { "all_six", kFullList, { 17, 12, 14, 18, 16, 15 }, 11 },
        PopularRow { "sbi_twice_the_later_pays", kDuplicateSbi, { 23, 0, 0, 0, 0, 0 }, 21 },
        PopularRow { "none_of_the_six", kNoneOfTheSix, {}, 31 }, PopularRow { "empty", kEmptyList, {}, 0 },
        PopularRow { "failed", kFailedList, {}, 0 }),
    [](const auto &info) { return std::string(info.param.name); });

using NetBankingChoiceTest = NetBankingRowTest<const char *>;

TEST_P(NetBankingChoiceTest, TheThirdNameInTheListPaysWithTheThirdBankAndOpensItsPage)
{
    openWithList(kFullList);
    EXPECT_EQ(screen->amountDropDown.dataSource(),
        (QStringList { u"Andhra Bank"_s, QString(), u"Bank of Baroda"_s, u"HDFC Bank"_s, u"ICICI Bank"_s,
            u"Punjab National Bank"_s, u"State Bank of India"_s, u"Yes Bank"_s }));

    // Disabled and grey until a bank is chosen, then in its own colour.
    ASSERT_TRUE(screen->currentButtonBg);
    EXPECT_NE(*screen->currentButtonBg, QColor(Qt::lightGray));
    EXPECT_FALSE(screen->btnProceed1->isEnabled());
    EXPECT_EQ(screen->btnProceed1->palette().color(QPalette::Button), QColor(Qt::lightGray));

    // By arrows from the first entry, or by typing the start of its name.
    const bool byArrows = QLatin1String(GetParam()) == "btnSelectBank"_L1;
    chooseWithKeyboard(GetParam(),
        byArrows ? std::initializer_list { Qt::Key_Down, Qt::Key_Down, Qt::Key_Return }
                 : std::initializer_list { Qt::Key_B, Qt::Key_Return });
    EXPECT_EQ(screen->amountDropDown.listView()->accessibleName(), u"Bank"_s);
    EXPECT_EQ(screen->btnSelectBank->text(), u"Bank of Baroda"_s);
    ASSERT_EQ(screen->bank, screen->bankList.at(2));
    EXPECT_TRUE(screen->btnProceed1->isEnabled());
    EXPECT_EQ(screen->btnProceed1->palette().color(QPalette::Button), *screen->currentButtonBg);

    sandbox->enqueueReply(kPayEndpoint, kAccepted);
    tap("btnProceed1");
    ASSERT_TRUE(settle([&] { return dynamic_cast<FakeBankPage *>(nav->topViewController()); }));
    const auto sent = payments();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0]["netbankingId"], "4000000001");
    EXPECT_EQ(sent[0]["requestedAmount"], "249.50");
    EXPECT_EQ(sent[0]["merchantTransactionRefNumber"], reference.toStdString());
    EXPECT_EQ(sent[0]["collectorId"], "COL-77");

    auto *page = dynamic_cast<FakeBankPage *>(nav->topViewController());
    EXPECT_EQ(page->url, u"http://127.0.0.1:1/bank/pay"_s);
    EXPECT_EQ(page->postData, u"kovenaTransactionId=1700000000001&device_type=1"_s);
    EXPECT_EQ(page->kovenaTransactionId, u"1700000000001"_s);
    EXPECT_EQ(page->merchantVC, merchant.data());
    EXPECT_FALSE(loading());
    EXPECT_TRUE(testing::toastsOn(screen).isEmpty());
    EXPECT_EQ(merchant->callCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Openers, NetBankingChoiceTest, ::testing::Values("btnSelectBank", "btnDropDownList"));

// Taps while the backend has not answered yet register nothing more, and its refusal frees the
// screen again; without the network nothing is sent, and "No Network" is said first.
TEST_F(NetBankingScreenTest, TapsWhileAPaymentRegistersOrOfflineSendNothing)
{
    openWithList(kDuplicateSbi);
    chooseWithKeyboard("btnDropDownList", { Qt::Key_Down, Qt::Key_Return });
    sandbox->enqueueReply(kPayEndpoint, kDeclined);
    sandbox->enqueueReply(kPayEndpoint, kDeclined);
    QTest::mouseClick(button("btnSbiBank"), Qt::LeftButton);
    const DataTaskPtr first = screen->task;
    ASSERT_TRUE(first);
    for (const char *again : { "btnSbiBank", "btnHdfcBank", "btnProceed1" })
        QTest::mouseClick(button(again), Qt::LeftButton);
    EXPECT_EQ(screen->task, first) << "a second tap while the first registers";
    ASSERT_TRUE(settle([&] { return payments().size() == 1 && !loading(); }));
    EXPECT_EQ(payments()[0]["netbankingId"], "23");
    tap("btnProceed1");
    ASSERT_TRUE(settle([&] { return payments().size() == 2 && !loading(); }));
    EXPECT_EQ(payments()[1]["netbankingId"], "22");
    EXPECT_TRUE(testing::toastsOn(screen).isEmpty()) << "while registering";

    network.online = false;
    tap("btnProceed1");
    tap("btnSbiBank");
    tap("btnHdfcBank"); // not offered: the network is still the first thing said
    EXPECT_EQ(testing::toastsOn(screen), QStringList(3, u"No Network"_s)) << "offline";
    EXPECT_FALSE(loading()) << "offline";
    EXPECT_EQ(payments().size(), 2u) << "offline";
}

struct LeaveRow
{
    const char *name;
    bool duringPayment; // else while the bank list loads
    bool popped; // else covered by another screen, which keeps it alive
};

using NetBankingLeaveTest = NetBankingRowTest<LeaveRow>;

TEST_P(NetBankingLeaveTest, LeavingCancelsTheRequestInFlight)
{
    const LeaveRow &row = GetParam();
    // An answer that would come long after the test: only a cancelled request ends sooner.
    const sandbox::ScriptedReply late { .status = 200, .body = {}, .dropConnection = false, .delay = 600s };
    if (row.duringPayment) {
        openWithList(kFullList);
        sandbox->enqueueReply(kPayEndpoint, late);
        tap("btnYesBank");
    } else {
        open(late);
    }
    const std::size_t sent = row.duringPayment ? 2 : 1;
    ASSERT_TRUE(sandbox->waitForRequests(sent, std::chrono::milliseconds(testing::kWaitMs)));
    const DataTaskPtr inFlight = screen->task;
    ASSERT_TRUE(inFlight);
    EXPECT_TRUE(loading());
    EXPECT_FALSE(inFlight->isFinished());

    auto *cover = new ViewController;
    if (row.popped)
        nav->popViewController(false);
    else
        nav->pushViewController(cover, false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return inFlight->isFinished(); }, testing::kWaitMs));
    ASSERT_TRUE(testing::roundTrip()); // the cancellation's answer has been handed over
    clock.runDue();
    EXPECT_EQ(merchant->callCount(), 0u);
    EXPECT_EQ(testing::bodiesSentTo(kListEndpoint).size() + payments().size(), sent);
    if (row.popped) {
        delete cover;
        EXPECT_EQ(nav->viewControllers(), QList<ViewController *> { root.data() });
        return;
    }
    ASSERT_TRUE(screen);
    EXPECT_EQ(nav->viewControllers(), (QList<ViewController *> { root.data(), screen.data(), cover }));
    EXPECT_FALSE(loading());
    if (!row.duringPayment)
        return;
    // Back on the screen, the customer can pay again: the cancelled payment holds nothing up.
    nav->popViewController(false);
    sandbox->enqueueReply(kPayEndpoint, kDeclined);
    tap("btnYesBank");
    ASSERT_TRUE(settle([&] { return payments().size() == 2 && !loading(); }));
}

INSTANTIATE_TEST_SUITE_P(Moments, NetBankingLeaveTest,
    ::testing::Values(LeaveRow { "list_loading_popped", false, true },
        LeaveRow { "list_loading_covered", false, false }, LeaveRow { "payment_popped", true, true },
        LeaveRow { "payment_covered", true, false }),
    [](const auto &info) { return std::string(info.param.name); });

struct CancelRow
{
    const char *name;
    bool modeChosen; // else the payment option screen lies behind, and Cancel is not offered
    bool duringPayment;
};

using NetBankingCancelTest = NetBankingRowTest<CancelRow>;

TEST_P(NetBankingCancelTest, CancelAsksFirstAndProceedReportsCancelledOnce)
{
    const CancelRow &row = GetParam();
    screen->isPaymentModeAvail = row.modeChosen;
    openWithList(kFullList);
    EXPECT_EQ(nav->backButton()->isHidden(), row.modeChosen);
    ASSERT_EQ(screen->navigationItem().rightBarButtonItem.has_value(), row.modeChosen);
    if (!row.modeChosen)
        return;
    EXPECT_EQ(nav->rightButton()->text(), u"Cancel"_s);
    if (row.duringPayment) {
        // Accepted, but long after the customer has cancelled.
        sandbox->enqueueReply(kPayEndpoint, { .status = 200, .body = kAccepted.body, .delay = 600s });
        tap("btnPnbBank");
        ASSERT_TRUE(sandbox->waitForRequests(2, std::chrono::milliseconds(testing::kWaitMs)));
    }
    const DataTaskPtr payment = screen->task;

    const auto answer = [&](const QString &button) {
        testing::answerCancelQuestion(nav, screen, button);
        clock.runDue();
    };
    answer(u"Cancel"_s);
    EXPECT_EQ(merchant->callCount(), 0u);
    EXPECT_EQ(nav->topViewController(), screen.data());
    answer(u"Proceed"_s);
    EXPECT_TRUE(QTest::qWaitFor([&] { return payment->isFinished(); }, testing::kWaitMs));
    ASSERT_TRUE(testing::roundTrip()); // the cancellation's answer has been handed over
    clock.runDue();
    EXPECT_EQ(merchant->statuses(), QStringList { u"-1 Cancelled"_s });
    EXPECT_EQ(nav->topViewController(), screen.data()) << "no bank page after the cancellation";
    EXPECT_FALSE(loading());
    EXPECT_EQ(payments().size(), row.duringPayment ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Moments, NetBankingCancelTest,
    ::testing::Values(CancelRow { "option_screen_behind", false, false },
        CancelRow { "before_paying", true, false }, CancelRow { "while_the_payment_registers", true, true }),
    [](const auto &info) { return std::string(info.param.name); });

struct DeathRow
{
    const char *name;
    const char *list;
    bool withCollectorId;
    const char *tapped; // a popular button, or "btnProceed1" after choosing the first listed bank
    const char *diagnostic;
};

using NetBankingDeathTest = NetBankingRowTest<DeathRow>;

TEST_P(NetBankingDeathTest, APaymentWithoutItsRequiredValuesIsFatal)
{
    const DeathRow &row = GetParam();
    if (!row.withCollectorId)
        screen->collectorId.reset();
    openWithList(row.list);
    if (std::string_view(row.tapped) == "btnProceed1")
        chooseWithKeyboard("btnSelectBank", { Qt::Key_Return });
    EXPECT_DEATH(tap(row.tapped), testing::fatalLine(row.diagnostic));
}

const char *const kNoIds = R"({"data":[
    {"netBankingName":"State Bank of India","netbankingCodes":"SBIB"},
    {"netBankingId":null,"netBankingName":"Yes Bank","netbankingCodes":"YESB"}]})";

INSTANTIATE_TEST_SUITE_P(Rows, NetBankingDeathTest,
    ::testing::Values(DeathRow { "popular_bank_without_id", kNoIds, true, "btnSbiBank",
                          "NetBankingViewController: the chosen bank has no netBankingId" },
        DeathRow { "listed_bank_without_id", kNoIds, true, "btnProceed1",
            "NetBankingViewController: the chosen bank has no netBankingId" },
        DeathRow { "no_collector_id", kFullList, false, "btnHdfcBank",
            "NetBankingViewController: no collectorId for the net-banking payment" }),
    [](const auto &info) { return std::string(info.param.name); });

// The matching itself, on lists the screen tests do not reach (each code to its bank, and the
// later of two banks with one code, is there).
struct MatchRow
{
    const char *name;
    std::vector<std::pair<qint64, std::optional<QString>>> banks; // id and code; id 0: a null entry
    PopularIds ids; // found per popular bank, in kPopularButtons order; 0: not found
};

using PopularBanksTest = ::testing::TestWithParam<MatchRow>;

TEST_P(PopularBanksTest, FindsTheLastBankWithEachExactCode)
{
    QList<std::shared_ptr<BankNBData>> list;
    for (const auto &[id, code] : GetParam().banks) {
        if (id == 0) {
            list << nullptr;
            continue;
        }
        auto bank = std::make_shared<BankNBData>();
        bank->netBankingId = id;
        bank->netbankingCodes = code;
        list << bank;
    }
    const PopularBanks found = findPopularBanks(list);
    const auto idOf = [](const std::shared_ptr<BankNBData> &bank) { return bank ? *bank->netBankingId : 0; };
    EXPECT_EQ((PopularIds { idOf(found.sbi), idOf(found.axisBank), idOf(found.hdfc), idOf(found.yesBank),
                  idOf(found.pnbBank), idOf(found.iciciBank) }),
        GetParam().ids);
}

INSTANTIATE_TEST_SUITE_P(Lists, PopularBanksTest,
    ::testing::Values(
        MatchRow { "codes_match_exactly",
            { { 1, u"sbib"_s }, { 2, u"ICICI"_s }, { 3, u" YESB"_s }, { 4, u"HDFB "_s }, { 5, u""_s } }, {} },
        MatchRow { "no_code_or_no_bank_is_skipped",
            { { 0, std::nullopt }, { 1, std::nullopt }, { 2, u"AXIB"_s } }, { 0, 2, 0, 0, 0, 0 } }),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
} // namespace kovena
