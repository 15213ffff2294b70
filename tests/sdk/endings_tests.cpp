// Every way a flow ends, counted at the merchant: each row starts a checkout or a status enquiry
// through the facade, in a shown merchant window, against the in-process backend, plays the
// customer's part and states the reports the merchant receives, in order. Then the manual clock
// runs far past every timer and the backend is drained: nothing more may arrive. Bank pages run in
// the real embedded browser. Rows that end the process state the reports before the abort.
//
// While each row runs, every kovena* category logs at debug level: no line, stored default or
// backend record shows the card, and the token shows only in the facade's own line.
#include "flow/NavigatorController.h"
#include "flow/PaymentOptionVC.h"
#include "flow/flow_root_support.h"
#include "model/TransactionStatus.h"
#include "payment/CardViewController.h"
#include "payment/NetBankingViewController.h"
#include "payment/PaymentViewController.h"
#include "payment/UPIViewController.h"
#include "support/CountingScheduler.h"
#include "support/FatalDiagnostic.h"
#include "support/InProcessBackend.h"
#include "support/LogCapture.h"
#include "support/Scoped.h"
#include "support/ScreenDriving.h"

#include <QFile>
#include <QListView>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>

#include <cstdio>
#include <functional>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using namespace kovena;
using namespace kovena::testing;

namespace {

const QString kToken = u"endings-token"_s;
const QString kCardNumber = u"4111111111111111"_s;
const QString kCardName = u"Ravindra Kulkarni"_s;
const QString kCvv = u"739"_s;
// The card number in any grouping, and the CVV as a number of its own (not inside a hex checksum).
const QRegularExpression kCardDetails(
    u"4111[- ]?1111[- ]?1111[- ]?1111|(?<![0-9A-Za-z])739(?![0-9A-Za-z])"_s);
// What a record line carries that is not the library's: when it was received, and how long it was.
const QRegularExpression kRecordedMeasures(u"\"time\":\"[^\"]*\"|\\[\"Content-Length\",\"[0-9]+\"\\]"_s);

// What the merchant passes to kovenaInit; every value valid unless a row says otherwise.
struct Checkout
{
    QString mode = u"1"_s;
    QString amount = u"249.50"_s;
    QString orderNo = u"ORD-END"_s;
    QString token = kToken;
    QString collectorId = u"COL-1"_s;
    QString mobile = u"9876543210"_s;
    QString email = u"buyer@example.in"_s;
};

class EndingsTest;
using Step = std::function<void(EndingsTest &)>;

struct Ending
{
    const char *name;
    Step play; // starts the flow and plays the customer's part
    QStringList reports; // "<paymentStatus> <description>", in order
    const char *fatal = nullptr; // the diagnostic the process ends with, after the reports
    bool bankPageReports = false; // a completed bank page reports off the main thread
};

void PrintTo(const Ending &row, std::ostream *out)
{
    *out << row.name;
}

class EndingsTest : public ::testing::TestWithParam<Ending>
{
public:
    void SetUp() override
    {
        UserDefaults::resetStandardUserDefaults();
        inProcessBackend().clearRequests();
        inProcessBackend().clearScriptedReplies();
        ASSERT_TRUE(records.isValid());
        inProcessBackend().setRecordFile(recordFile().toStdString());
    }
    void TearDown() override { inProcessBackend().setRecordFile({}); }

    void checkout(const Checkout &c)
    {
        flowsWithTheToken += c.token == kToken ? 1 : 0;
        KovenaSDK::instance().kovenaInit(host.merchant, u"Shop"_s, c.orderNo, c.token, c.collectorId,
            c.amount, c.mobile, c.email, QString(), c.mode);
        clock.runDue();
    }
    void enquire(const char *txn, const char *order)
    {
        ++flowsWithTheToken;
        KovenaSDK::instance().kovenaStatusInit(
            host.merchant, QString::fromLatin1(txn), QString::fromLatin1(order), kToken);
        clock.runDue();
    }

    NavigatorController *navigator()
    {
        return qobject_cast<NavigatorController *>(rootViewController(&host.window));
    }
    ViewController *top() { return navigator() ? navigator()->topViewController() : nullptr; }

    // Runs the main queue, moving the clock by `step` each turn, until `done` holds.
    bool runUntil(const std::function<bool()> &done, std::chrono::milliseconds step = 0ms)
    {
        return QTest::qWaitFor(
            [&] {
                clock.advance(step);
                return done();
            },
            kWaitMs);
    }
    bool reported(std::size_t count)
    {
        return runUntil([&] { return host.merchant->callCount() >= count; }, 1s);
    }
    template<class Screen> Screen *screen()
    {
        Screen *found = nullptr;
        runUntil([&] {
            found = qobject_cast<Screen *>(top());
            return found && found->isViewLoaded();
        });
        EXPECT_TRUE(found) << "the screen " << Screen::staticMetaObject.className() << " did not open";
        return found;
    }
    void tap(QWidget *widget)
    {
        ASSERT_TRUE(widget);
        QTest::mouseClick(widget, Qt::LeftButton);
        clock.runDue();
    }
    void leave()
    {
        ASSERT_TRUE(navigator());
        navigator()->popViewController(true);
        clock.runDue();
    }
    void answerCancel(const char *button)
    {
        answerCancelQuestion(navigator(), top(), QString::fromLatin1(button));
        clock.runDue();
    }

    // UPI: proceed with `vpa`; with `polls`, run until that many status enquiries were answered.
    void payUpi(const char *vpa, std::size_t polls = 0)
    {
        auto *upi = screen<UPIViewController>();
        ASSERT_TRUE(upi);
        QTest::keyClicks(upi->tfUpiId, QString::fromLatin1(vpa));
        tap(upi->btnProceed);
        if (polls == 0)
            return;
        ASSERT_TRUE(runUntil([&] { return upi->pollingState() == UpiPolling::State::Polling; }));
        // The approval notice covers the screen until the customer taps it away.
        if (upi->presentedViewController())
            tap(upi->presentedViewController());
        ASSERT_TRUE(runUntil([&] { return bodiesSentTo(kStatusEndpoint).size() >= polls; }, 1s));
    }
    bool toastShown(const char *message)
    {
        return runUntil([&] { return toastsOn(top()).contains(QString::fromLatin1(message)); }, 1s);
    }

    void payByCard(const QString &number = kCardNumber)
    {
        auto *card = screen<CardViewController>();
        ASSERT_TRUE(card);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&host.window));
        type(card->tfCardNumber, number);
        type(card->tfCardName, kCardName);
        choose(card->mmDropDown, card->btnMonth, 7);
        choose(card->yyyyDropDown, card->btnYear, 2); // next year
        type(card->tfCvv, kCvv);
        ASSERT_TRUE(card->btnProceed->isEnabled());
        tap(card->btnProceed);
    }
    void type(TextField *field, const QString &text)
    {
        field->setFocus(Qt::OtherFocusReason);
        QTest::keyClicks(field, text);
    }
    void choose(DropDown &list, QPushButton *opener, int row)
    {
        tap(opener);
        QListView *view = list.listView();
        ASSERT_TRUE(view && view->isVisible());
        QTest::keyClick(view, Qt::Key_Home);
        for (int i = 0; i < row; ++i)
            QTest::keyClick(view, Qt::Key_Down);
        QTest::keyClick(view, Qt::Key_Return);
        clock.runDue();
    }

    // Net banking: once the list is in, a popular bank's button, or a listed bank and proceed.
    NetBankingViewController *bankList()
    {
        auto *nb = screen<NetBankingViewController>();
        if (nb) {
            EXPECT_TRUE(runUntil([&] { return !nb->loader().isAnimating(); }));
        }
        return nb;
    }
    void payWithPopularBank(const char *button)
    {
        NetBankingViewController *nb = bankList();
        ASSERT_TRUE(nb);
        tap(nb->findChild<QPushButton *>(QLatin1String(button)));
    }
    void payWithListedBank(int row)
    {
        NetBankingViewController *nb = bankList();
        ASSERT_TRUE(nb);
        choose(nb->amountDropDown, nb->btnSelectBank, row);
        tap(nb->btnProceed1);
    }

    // The bank's page, in the embedded browser, once it offers its buttons.
    PaymentViewController *bankPage()
    {
        PaymentViewController *page = screen<PaymentViewController>();
        if (!page)
            return nullptr;
        // Answers arrive after the wait may have given up: they go to shared state.
        struct Probe
        {
            bool asking = false, found = false;
        };
        auto probe = std::make_shared<Probe>();
        EXPECT_TRUE(runUntil([&] {
            if (!probe->asking && !probe->found) {
                probe->asking = true;
                page->webView->page()->runJavaScript(
                    u"document.getElementById('approve') !== null"_s, [probe](const QVariant &v) {
                        probe->found = v.toBool();
                        probe->asking = false;
                    });
            }
            return probe->found;
        }));
        return page;
    }
    void press(const char *button)
    {
        PaymentViewController *page = bankPage();
        ASSERT_TRUE(page);
        page->webView->page()->runJavaScript(
            u"document.getElementById('%1').click()"_s.arg(QLatin1StringView(button)));
    }

    // Moves the clock far past every timer, and waits out every request the flow has started.
    void drain()
    {
        for (int round = 0; round < 3; ++round) {
            clock.advance(1h);
            ASSERT_TRUE(roundTrip());
        }
        clock.runDue();
    }

    QString recordFile() const { return records.filePath(u"requests.jsonl"_s); }

    int flowsWithTheToken = 0;
    SwitchableNetwork network;
    ManualScheduler clock;
    CountingScheduler counting { clock };
    ScopedScheduler scoped { counting };
    MerchantWindow host;
    QTemporaryDir records;
};

// Each step plays one part of a row; those with arguments are made by the factories below.
auto checkout = [](Checkout c = {}) -> Step { return [c](EndingsTest &t) { t.checkout(c); }; };
auto enquire = [](const char *txn, const char *order) -> Step {
    return [=](EndingsTest &t) { t.enquire(txn, order); };
};
auto upi = [](const char *vpa, std::size_t polls = 0) -> Step {
    return [=](EndingsTest &t) { t.payUpi(vpa, polls); };
};
auto script = [](const char *endpoint, sandbox::ScriptedReply reply) -> Step {
    return [=](EndingsTest &) { inProcessBackend().enqueueReply(endpoint, reply); };
};
auto card = [](QString number = kCardNumber) -> Step { return [=](EndingsTest &t) { t.payByCard(number); }; };
auto popularBank
    = [](const char *button) -> Step { return [=](EndingsTest &t) { t.payWithPopularBank(button); }; };
auto listedBank = [](int row) -> Step { return [=](EndingsTest &t) { t.payWithListedBank(row); }; };
auto onBankPage = [](const char *button) -> Step { return [=](EndingsTest &t) { t.press(button); }; };
auto waitForReports
    = [](std::size_t count) -> Step { return [=](EndingsTest &t) { EXPECT_TRUE(t.reported(count)); }; };
auto toast
    = [](const char *message) -> Step { return [=](EndingsTest &t) { EXPECT_TRUE(t.toastShown(message)); }; };
Step leave = [](EndingsTest &t) { t.leave(); };
Step confirmCancel = [](EndingsTest &t) { t.answerCancel("Proceed"); };
Step declineCancel = [](EndingsTest &t) { t.answerCancel("Cancel"); };
Step cardForm = [](EndingsTest &t) { t.screen<CardViewController>(); };
Step bankListShown = [](EndingsTest &t) { t.bankList(); };
Step bankPageShown = [](EndingsTest &t) { t.bankPage(); };
// Runs until the status enquiry that follows the bank page has reached the backend.
Step enquiryOut = [](EndingsTest &t) {
    ASSERT_TRUE(t.runUntil([] { return bodiesSentTo(kStatusEndpoint).size() == 1; }));
};
Step offline = [](EndingsTest &t) { t.network.online = false; };
Step untilPolling = [](EndingsTest &t) {
    auto *upi = t.screen<UPIViewController>();
    ASSERT_TRUE(upi);
    ASSERT_TRUE(t.runUntil([&] { return upi->pollingState() == UpiPolling::State::Polling; }));
};
Step untilPaymentSent
    = [](EndingsTest &t) { ASSERT_TRUE(t.runUntil([] { return bodiesSentTo(kPayEndpoint).size() == 1; })); };

Step steps(std::initializer_list<Step> list)
{
    return [all = std::vector<Step>(list)](EndingsTest &t) {
        for (const Step &step : all) {
            step(t);
            if (::testing::Test::HasFatalFailure())
                return;
        }
    };
}

const sandbox::ScriptedReply kServerError { 200, R"({"error":"Internal Server Error"})" };
const sandbox::ScriptedReply kSlowButNormal { 200, {}, false, 1500ms, true };

const QString kSuccess = u"1 Success"_s, kFail = u"2 Fail"_s, kCancelled = u"-1 Cancelled"_s;

TEST_P(EndingsTest, TheMerchantHearsExactlyTheseReportsAndNothingMore)
{
    const Ending &row = GetParam();
    if (row.fatal) {
        // The dying process writes each report on a line of its own before the diagnostic.
        std::string pattern = "^[^@]*";
        for (const QString &report : row.reports)
            pattern += "@merchant " + report.section(u' ', 0, 0).toStdString() + "@\n[^@]*";
        EXPECT_DEATH(
            {
                const ScopedLogCapture quiet; // only the reports and the diagnostic are printed
                host.merchant->onCall = [](const std::shared_ptr<TransactionStatus> &record) {
                    std::fprintf(stderr, "@merchant %lld@\n",
                        static_cast<long long>(record->data->paymentStatus.value_or(0)));
                };
                row.play(*this);
                drain();
            },
            pattern + fatalLine(row.fatal));
        return;
    }

    const ScopedLogCapture logs;
    row.play(*this);
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_TRUE(reported(std::size_t(row.reports.size())));
    drain();
    EXPECT_EQ(host.merchant->statuses(), row.reports);
    EXPECT_EQ(clock.pendingCount(), 0);

    for (const auto &call : host.merchant->calls()) {
        const qint64 status = call.record->data->paymentStatus.value_or(0);
        // A completed bank page reports on the thread its status arrived on; all else on the main one.
        EXPECT_EQ(call.onMainThread, !(row.bankPageReports && status >= 0)) << status;
        // What the library decides itself carries nothing but the status and its text.
        if (status < 0) {
            EXPECT_EQ(call.record->dictionaryRepresentation(),
                JsonValue({ { "data",
                    { { "paymentStatus", status },
                        { "description",
                            call.record->data->description.value_or(QString()).toStdString() } } } }));
        }
    }

    // Nothing shows the card; the token shows in the facade's line alone.
    ASSERT_TRUE(UserDefaults::standard().synchronize());
    QStringList places = logs.lines();
    for (const QString &path : { UserDefaults::standard().filePath(), recordFile() }) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            places << QString::fromUtf8(file.readAll()).remove(kRecordedMeasures);
    }
    for (const QString &text : places) {
        const QRegularExpressionMatch shown = kCardDetails.match(text);
        EXPECT_FALSE(shown.hasMatch()) << text.mid(shown.capturedStart() - 60, 120).toStdString();
    }
    QStringList tokenLines;
    for (const QString &line : logs.lines())
        if (line.contains(kToken))
            tokenLines << line;
    EXPECT_EQ(tokenLines, QStringList(flowsWithTheToken, u"kovena: ---Merchant Access Token"_s + kToken));
}

const Ending kEndings[] = {
    // Status enquiry: the backend's record, described (each status's text: the report tests).
    { "status_success", enquire("42", "ORD-1"), { kSuccess } },
    { "status_enquiry_failed", enquire("999", "NO-SUCH-ORDER"), {},
        "finish: no transaction status to report" },

    // Validation: one report per failed rule, in rule order; the flow goes on (mode 4 routes
    // nowhere, so only validation reports).
    { "amount_empty", checkout({ .mode = u"4"_s, .amount = u""_s }),
        { u"-102 Missing SDK params,amount is empty or missing "_s,
            u"-103 Missing SDK params,amount is not valid"_s },
        "Utils::isValidRange: amount is not a number" },
    { "amount_letters", checkout({ .mode = u"4"_s, .amount = u"abc"_s }),
        { u"-103 Missing SDK params,amount is not valid"_s }, "Utils::isValidRange: amount is not a number" },
    { "amount_not_valid", checkout({ .mode = u"4"_s, .amount = u"1e3"_s }),
        { u"-103 Missing SDK params,amount is not valid"_s } },
    { "amount_negative", checkout({ .mode = u"4"_s, .amount = u"-5"_s }),
        { u"-103 Missing SDK params,amount is not valid"_s,
            u"-104 Missing SDK params,amount range is invalid"_s } },
    { "order_empty", checkout({ .mode = u"4"_s, .orderNo = u""_s }),
        { u"-106 Missing SDK params,orderId is empty or missing"_s } },
    { "token_empty", checkout({ .mode = u"4"_s, .token = u""_s }),
        { u"-105 Missing SDK params,orderId nil"_s } },
    { "collector_empty", checkout({ .mode = u"4"_s, .collectorId = u""_s }),
        { u"-106 Missing SDK params,orderId is empty or missing"_s } },
    { "mobile_empty", checkout({ .mode = u"4"_s, .mobile = u""_s }), { u"-107 Error"_s } },
    { "every_rule_after_the_amount", checkout({ u"4"_s, u"0.5"_s, u""_s, u""_s, u""_s, u""_s, u""_s }),
        { u"-104 Missing SDK params,amount range is invalid"_s,
            u"-106 Missing SDK params,orderId is empty or missing"_s,
            u"-105 Missing SDK params,orderId nil"_s,
            u"-106 Missing SDK params,orderId is empty or missing"_s, u"-107 Error"_s, u"-107 Error"_s } },
    { "email_empty_then_upi_paid", steps({ checkout({ .email = u""_s }), upi("success0@kovena", 1) }),
        { u"-107 Error"_s, kSuccess } },
    { "option_screen_cancelled",
        steps({ checkout({ .mode = u"4"_s }),
            [](EndingsTest &t) {
                auto *options = t.screen<PaymentOptionVC>();
                ASSERT_TRUE(options);
                t.tap(options->findChild<QPushButton *>(u"cancelButton"_s));
            } }),
        { kCancelled } },

    // UPI.
    { "upi_success", steps({ checkout(), upi("success@kovena", 3) }), { kSuccess } },
    { "upi_failure", steps({ checkout(), upi("failure@kovena", 3) }), { kFail } },
    { "upi_pending_then_left", steps({ checkout(), upi("pending@kovena", 3), leave }), {} },
    { "upi_cancel_confirmed", steps({ checkout(), upi("pending@kovena", 1), confirmCancel }),
        { kCancelled } },
    { "upi_cancel_declined_then_paid", steps({ checkout(), upi("success@kovena", 1), declineCancel }),
        { kSuccess } },
    { "upi_left_before_paying",
        steps({ checkout(), [](EndingsTest &t) { t.screen<UPIViewController>(); }, leave }), {} },
    { "upi_registration_refused",
        steps(
            { checkout(), script(kPayEndpoint, { 200, R"({"success":"false","responseCode":"400BADREQ"})" }),
                upi("success@kovena"), toast("Error in payUPICollect") }),
        {} },
    { "upi_collect_refused",
        steps({ checkout(), script(kCollectEndpoint, { 200, R"({"responseCode":"400TXNCLOSED"})" }),
            upi("success@kovena"), toast("Error in payUPICollectByVPA") }),
        {} },
    // A failed enquiry with the network gone: "No Network", and the polling stops.
    { "upi_enquiry_failed_offline",
        steps({ checkout(), script(kStatusEndpoint, kServerError), upi("success@kovena"), untilPolling,
            offline, toast("No Network") }),
        {} },
    // Online, the next enquiry needs the failed answer's reference number.
    { "upi_enquiry_failed",
        steps({ checkout(), script(kStatusEndpoint, kServerError), upi("success@kovena", 2) }), {},
        "UPI status polling: the previous answer has no kovenaRefNumber" },

    // Card.
    { "card_approved", steps({ checkout({ .mode = u"2"_s }), card(), onBankPage("approve") }), { kSuccess },
        nullptr, true },
    { "card_declined", steps({ checkout({ .mode = u"2"_s }), card(), onBankPage("decline") }), { kFail },
        nullptr, true },
    { "card_cancel_confirmed", steps({ checkout({ .mode = u"2"_s }), cardForm, confirmCancel }),
        { kCancelled } },
    { "card_left_form", steps({ checkout({ .mode = u"2"_s }), cardForm, leave }), {} },
    { "card_left_bank_page", steps({ checkout({ .mode = u"2"_s }), card(), bankPageShown, leave }),
        { kCancelled }, nullptr, true },
    { "card_registration_refused",
        steps({ checkout({ .mode = u"2"_s }), card(u"4000000000000002"_s), untilPaymentSent }), {} },
    { "card_enquiry_failed",
        steps({ checkout({ .mode = u"2"_s }), script(kStatusEndpoint, kServerError), card(),
            onBankPage("approve"), [](EndingsTest &t) { t.runUntil([] { return false; }); } }),
        {}, "bank page: the status enquiry answered no status" },

    // Net banking.
    { "nb_popular_bank_approved",
        steps({ checkout({ .mode = u"3"_s }), popularBank("btnSbiBank"), onBankPage("approve") }),
        { kSuccess }, nullptr, true },
    { "nb_listed_bank_declined",
        steps({ checkout({ .mode = u"3"_s }), listedBank(2), onBankPage("decline") }), { kFail }, nullptr,
        true },
    { "nb_cancel_confirmed", steps({ checkout({ .mode = u"3"_s }), bankListShown, confirmCancel }),
        { kCancelled } },
    { "nb_left_form", steps({ checkout({ .mode = u"3"_s }), bankListShown, leave }), {} },
    // The one checkout that reports twice: the page is left while its status enquiry is out.
    { "nb_left_bank_page_during_its_enquiry",
        steps({ checkout({ .mode = u"3"_s }), script(kStatusEndpoint, kSlowButNormal),
            popularBank("btnSbiBank"), onBankPage("approve"), enquiryOut, leave, waitForReports(2) }),
        { kCancelled, kSuccess }, nullptr, true },
    { "nb_registration_refused",
        steps({ checkout({ .mode = u"3"_s }),
            script(kPayEndpoint, { 200, R"({"responseCode":"404BANKNOTFOUND","data":{}})" }),
            popularBank("btnSbiBank"), untilPaymentSent }),
        {} },
    { "nb_bank_list_failed",
        steps({ script(kBankListEndpoint, kServerError), checkout({ .mode = u"3"_s }),
            popularBank("btnSbiBank"), toast("Error occured") }),
        {} },
};

INSTANTIATE_TEST_SUITE_P(Flows, EndingsTest, ::testing::ValuesIn(kEndings),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace
