// The UPI screen driven through its widgets, against the in-process sandbox backend, on the
// manual clock. Backend answers arrive on the session thread and are queued into the manual
// clock; the tests wait for them with bounded loops, then move the clock. The enquiry spacing
// itself is pinned down in the polling tests.
#include "payment/UPIViewController.h"
#include "ScreenFixture.h"
#include "model/TransactionStatus.h"
#include "platform/AlertController.h"
#include "support/FatalDiagnostic.h"

#include <QApplication>
#include <QClipboard>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace kovena {
namespace {

using testing::bodiesSentTo;
using testing::kCollectEndpoint;
using testing::kPayEndpoint;
using testing::kStatusEndpoint;
using testing::toastsOn;

class UpiScreenTest : public testing::ScreenFixture
{
protected:
    void SetUp() override
    {
        testing::resetBackendForCheckout(u"upi-test-token"_s);
        static int serial = 0;
        reference = u"ORD-UPI-%1"_s.arg(++serial);
        screen = new UPIViewController;
        prepare(*screen, u"249.50"_s, reference, u"COL-77"_s);
        show(screen);
        ASSERT_TRUE(screen->isViewLoaded());
    }

    void proceed(const QString &vpa)
    {
        QTest::keyClicks(screen->tfUpiId, vpa);
        QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
        clock.runDue();
    }

    // From proceed to the accepted collect request; the clock then stands where polling starts.
    // A second proceed meanwhile would register a second payment, so it is ignored.
    void acceptCollect(const QString &vpa)
    {
        proceed(vpa);
        const DataTaskPtr registration = screen->task;
        ASSERT_TRUE(registration);
        QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
        ASSERT_EQ(screen->task, registration);
        ASSERT_TRUE(answer(1));
        ASSERT_TRUE(answer(2));
        ASSERT_EQ(screen->pollingState(), UpiPolling::State::Polling);
    }

    QPointer<UPIViewController> screen;
    QString reference;
};

// A table of rows, each walked on its own screen.
template<class Row> class UpiRowTest : public UpiScreenTest, public ::testing::WithParamInterface<Row>
{
};

struct TypingRow
{
    const char *name;
    const char *typed;
    const char *pasted;
    const char *shown;
};

using UpiTypingTest = UpiRowTest<TypingRow>;

TEST_P(UpiTypingTest, TheFieldTakesOnlyVpaCharactersInLowerCase)
{
    const TypingRow &row = GetParam();
    QTest::keyClicks(screen->tfUpiId, QString::fromUtf8(row.typed));
    if (row.pasted) {
        QApplication::clipboard()->setText(QString::fromUtf8(row.pasted));
        QTest::keySequence(screen->tfUpiId, QKeySequence::Paste);
    }
    EXPECT_EQ(screen->tfUpiId->text().toStdString(), row.shown);
}

INSTANTIATE_TEST_SUITE_P(Edits, UpiTypingTest,
    ::testing::Values(TypingRow { "typed", "Ravi #-+!$.Kumar@OkBank_1", nullptr, "ravi.kumar@okbank_1" },
        TypingRow { "paste_mixed_case", "", "MiXeD_Name.01@UPI", "mixed_name.01@upi" },
        TypingRow { "paste_with_space_refused_whole", "ravi", " @bank", "ravi" },
        TypingRow { "paste_non_ascii_refused", "ravi", "\u00e4@bank", "ravi" }),
    [](const auto &info) { return std::string(info.param.name); });

// How the screen drives the polling: the enquiries name the merchant's order, then the backend's
// transaction. The outcomes themselves are rows of the endings table.
TEST_F(UpiScreenTest, PollsAfterTheAcceptedCollectUntilAFinalStatusAndReportsItOnce)
{
    acceptCollect(u"success@kovena"_s);
    const auto collect = bodiesSentTo(kCollectEndpoint);
    ASSERT_EQ(collect.size(), 1u);
    EXPECT_EQ(collect[0]["virtualAddress"], "success@kovena");
    const auto transactionId = collect[0]["kovenaRefNumber"].get<std::string>();
    ASSERT_TRUE(screen->presentedViewController());
    EXPECT_EQ(screen->presentedViewController()->storyboardIdentifier(), u"PopUpViewController"_s);
    EXPECT_TRUE(screen->loader().isAnimating());

    // Still ignored while the customer is asked to approve; nothing goes out before 11 s.
    const DataTaskPtr collectTask = screen->task;
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    clock.advance(10999ms);
    EXPECT_EQ(screen->task, collectTask);

    for (std::size_t k = 0; k < 3; ++k) { // two pending answers, then the success
        clock.advance(k == 0 ? 1ms : 4000ms);
        ASSERT_TRUE(testing::inProcessBackend().waitForRequests(3 + k, 5000ms));
        const auto enquiries = bodiesSentTo(kStatusEndpoint);
        ASSERT_EQ(enquiries.size(), k + 1);
        // The first enquiry goes by the merchant reference alone, later ones by the backend's id.
        EXPECT_EQ(enquiries[k]["kovenaRefNumber"], k == 0 ? std::string() : transactionId) << k;
        EXPECT_EQ(enquiries[k]["transactionRefNumber"], reference.toStdString());
        EXPECT_EQ(enquiries[k]["txnOtp"], "");
        ASSERT_TRUE(answer(static_cast<int>(3 + k)));
    }

    EXPECT_EQ(merchant->statuses(), QStringList { u"1 Success"_s });

    const DataTaskPtr last = screen->task;
    clock.advance(120000ms);
    EXPECT_EQ(screen->task, last) << "polling went on after the final status";
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_EQ(merchant->callCount(), 1u);
    EXPECT_EQ(bodiesSentTo(kPayEndpoint).size(), 1u);
    EXPECT_TRUE(toastsOn(screen).isEmpty());
}

struct RejectRow
{
    const char *name;
    const char *vpa;
    std::vector<std::pair<std::string, sandbox::ScriptedReply>> script;
    int answers; // backend answers before the customer is back at the form
    int offlineAt; // the network is gone from this answer on (0: before proceeding, -1: never)
    const char *toast;
};

using UpiRejectTest = UpiRowTest<RejectRow>;

TEST_P(UpiRejectTest, TheCustomerIsToldAndIsBackAtTheFormIntact)
{
    const RejectRow &row = GetParam();
    for (const auto &[endpoint, reply] : row.script)
        testing::inProcessBackend().enqueueReply(endpoint, reply);
    network.online = row.offlineAt != 0;
    proceed(QString::fromUtf8(row.vpa));
    if (row.answers == 0) {
        EXPECT_FALSE(screen->task) << "a request was started";
    }
    for (int n = 1; n <= row.answers; ++n) {
        ASSERT_TRUE(arrived(n));
        if (n == row.offlineAt)
            network.online = false;
        clock.runDue();
    }

    EXPECT_EQ(toastsOn(screen), QStringList { QString::fromUtf8(row.toast) });
    EXPECT_FALSE(screen->presentedViewController());
    EXPECT_FALSE(screen->loader().isAnimating());
    EXPECT_EQ(screen->pollingState(), UpiPolling::State::Idle);
    EXPECT_EQ(screen->tfUpiId->text(), QString::fromUtf8(row.vpa));
    EXPECT_EQ(screen->virtualAddress, QString::fromUtf8(row.vpa));
    EXPECT_EQ(merchant->callCount(), 0u);
    EXPECT_EQ(bodiesSentTo(kCollectEndpoint).size(), row.answers == 2 ? 1u : 0u);
    if (row.answers == 0)
        return;

    // Back at the form: proceeding again registers the payment again.
    network.online = true;
    testing::inProcessBackend().clearScriptedReplies();
    const std::size_t registered = bodiesSentTo(kPayEndpoint).size();
    const DataTaskPtr failed = screen->task;
    QTest::mouseClick(screen->btnProceed, Qt::LeftButton);
    EXPECT_NE(screen->task, failed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return bodiesSentTo(kPayEndpoint).size() == registered + 1; }));
}

// Two drops: the network stack may resend a request once when a kept-alive connection closes
// before answering.
INSTANTIATE_TEST_SUITE_P(Rejected, UpiRejectTest,
    ::testing::Values(RejectRow { "empty", "", {}, 0, -1, "UPI id is not valid !!" },
        RejectRow { "offline", "ravi@okbank", {}, 0, 0, "No Network" },
        RejectRow { "invalid_and_offline", "ravi@", {}, 0, 0, "UPI id is not valid !!" },
        RejectRow { "registration_refused", "ravi@okbank",
            { { kPayEndpoint, { 200, R"({"success":"false","responseCode":"400BADREQ"})" } } }, 1, -1,
            "Error in payUPICollect" },
        RejectRow { "registration_connection_dropped", "ravi@okbank",
            { { kPayEndpoint, { 200, "", true } }, { kPayEndpoint, { 200, "", true } } }, 1, -1,
            "Error in payUPICollect" },
        RejectRow { "collect_answered_with_status_code", "ravi@okbank",
            { { kCollectEndpoint, { 200, R"({"responseCode":"200TRANSRESPSUCC"})" } } }, 2, -1,
            "Error in payUPICollectByVPA" },
        RejectRow { "network_lost_before_collect", "ravi@okbank", {}, 1, 1, "No Network" },
        RejectRow { "network_lost_before_polling", "ravi@okbank", {}, 2, 2, "No Network" }),
    [](const auto &info) { return std::string(info.param.name); });

using UpiLeftWhilePollingTest = UpiRowTest<std::chrono::milliseconds>;

// Leaving the screen releases it at the event loop's next turn, before any enquiry it scheduled
// is due: whether the next enquiry still waited on the background queue or already on the main
// one, it never goes out. (Polling that ends by a lost network is pinned down in the polling tests.)
TEST_P(UpiLeftWhilePollingTest, PollingEndsWithoutAnotherEnquiryOrAReport)
{
    acceptCollect(u"pending@kovena"_s);
    clock.advance(11000ms);
    ASSERT_TRUE(testing::inProcessBackend().waitForRequests(3, 5000ms));
    ASSERT_TRUE(answer(3));
    clock.advance(GetParam()); // this long after the pending answer
    nav->popViewController(false);
    ASSERT_TRUE(screen) << "the popped screen is released by the event loop, not at once";

    clock.advance(120000ms);
    ASSERT_TRUE(testing::roundTrip());
    clock.advance(120000ms);
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_EQ(merchant->callCount(), 0u);
    EXPECT_EQ(bodiesSentTo(kStatusEndpoint).size(), 1u);
    EXPECT_FALSE(screen);
}

// Before the background step, and after its hand-over to the main queue.
INSTANTIATE_TEST_SUITE_P(Moments, UpiLeftWhilePollingTest, ::testing::Values(500ms, 2000ms));

enum class CancelAt { Form, Registration, Polling };

using UpiCancelInFlightTest = UpiRowTest<CancelAt>;

TEST_P(UpiCancelInFlightTest, CancelAsksFirstAndProceedEndsThePaymentWithOneReport)
{
    const CancelAt at = GetParam();
    if (at == CancelAt::Polling) {
        acceptCollect(u"success@kovena"_s);
        // The approval notice covers the screen until the customer taps it away.
        ASSERT_TRUE(screen->presentedViewController());
        QTest::mouseClick(screen->presentedViewController(), Qt::LeftButton);
        clock.runDue();
        ASSERT_FALSE(screen->presentedViewController());
    } else if (at == CancelAt::Registration) {
        proceed(u"success@kovena"_s);
        ASSERT_TRUE(screen->task);
    }
    EXPECT_TRUE(nav->backButton()->isHidden());
    EXPECT_EQ(nav->rightButton()->text(), u"Cancel"_s);

    testing::answerCancelQuestion(nav, screen, u"Cancel"_s);
    EXPECT_EQ(merchant->callCount(), 0u);
    EXPECT_EQ(nav->topViewController(), screen.data());

    testing::answerCancelQuestion(nav, screen, u"Proceed"_s);
    // A registration in flight answers with its cancellation, and nothing follows it.
    if (at == CancelAt::Registration) {
        ASSERT_TRUE(arrived(1));
    }
    clock.runDue();
    clock.advance(120000ms);

    EXPECT_EQ(merchant->statuses(), QStringList { u"-1 Cancelled"_s });
    EXPECT_TRUE(bodiesSentTo(kStatusEndpoint).empty());
    EXPECT_TRUE(toastsOn(screen).isEmpty());
    EXPECT_EQ(clock.pendingCount(), 0);
    if (at == CancelAt::Form) {
        EXPECT_TRUE(testing::inProcessBackend().requests().empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Moments, UpiCancelInFlightTest,
    ::testing::Values(CancelAt::Form, CancelAt::Registration, CancelAt::Polling), [](const auto &info) {
        return std::string(
            std::array { "before_proceeding", "during_registration", "while_polling" }[int(info.param)]);
    });

// The cancel question can be open when the collect request is accepted. Only one screen is
// presented at a time, so the approval notice must wait for the answer: shown once the customer
// keeps paying, never made (and nothing left behind) once they cancel.
struct NoticeRow
{
    const char *name;
    const char *answer;
    bool noticeShown;
    const char *reports;
};

int popUpsAlive()
{
    int count = 0;
    for (QWidget *widget : QApplication::allWidgets())
        count += widget->inherits("kovena::PopUpViewController") ? 1 : 0;
    return count;
}

using UpiNoticeBehindCancelTest = UpiRowTest<NoticeRow>;

TEST_P(UpiNoticeBehindCancelTest, TheApprovalNoticeWaitsForTheAnswerAndNeverLeaks)
{
    const NoticeRow &row = GetParam();
    proceed(u"success@kovena"_s);
    ASSERT_TRUE(answer(1)); // registered; the collect request is on its way
    QTest::mouseClick(nav->rightButton(), Qt::LeftButton);
    ASSERT_TRUE(qobject_cast<AlertController *>(screen->presentedViewController()));
    ASSERT_TRUE(answer(2)); // accepted while the question is open
    auto *alert = qobject_cast<AlertController *>(screen->presentedViewController());
    ASSERT_TRUE(alert);
    EXPECT_EQ(popUpsAlive(), 0);
    ASSERT_TRUE(alert->trigger(QString::fromLatin1(row.answer)));
    clock.runDue();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    ViewController *shown = screen->presentedViewController();
    EXPECT_EQ(shown && shown->storyboardIdentifier() == u"PopUpViewController"_s, row.noticeShown);
    EXPECT_EQ(popUpsAlive(), row.noticeShown ? 1 : 0);
    EXPECT_EQ(merchant->statuses().join(u';'), QString::fromLatin1(row.reports));
}

INSTANTIATE_TEST_SUITE_P(Answers, UpiNoticeBehindCancelTest,
    ::testing::Values(NoticeRow { "keep_paying", "Cancel", true, "" },
        NoticeRow { "cancel_the_payment", "Proceed", false, "-1 Cancelled" }),
    [](const auto &info) { return std::string(info.param.name); });

using UpiScreenDeathTest = UpiScreenTest;

TEST_F(UpiScreenDeathTest, ACollectRequestWithoutCollectorIdIsFatal)
{
    screen->collectorId.reset();
    screen->virtualAddress = u"ravi@okbank"_s;
    screen->upiCallback1(u"1700000000001"_s, reference);
    EXPECT_DEATH(
        clock.runDue(), testing::fatalLine("UPIViewController: no collectorId for the collect request"));
}

} // namespace
} // namespace kovena
