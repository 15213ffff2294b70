// The UPI status polling on the manual clock, with a recording stand-in for the screen. This is
// where the enquiry timing is pinned down; the screen tests only check how the screen drives it.
#include "payment/UpiPolling.h"
#include "model/TransactionStatus.h"
#include "platform/ManualScheduler.h"
#include "support/FatalDiagnostic.h"
#include "support/Scoped.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace kovena {
namespace {

using Status = std::optional<qint64>;

std::shared_ptr<TransactionStatus> answer(Status paymentStatus, Status kovenaRefNumber = 1700000000001)
{
    auto status = std::make_shared<TransactionStatus>();
    status->data = std::make_shared<TransactionStatus::Data>();
    status->data->paymentStatus = paymentStatus;
    status->data->kovenaRefNumber = kovenaRefNumber;
    return status;
}

// What the poller did, kept outside it so that it can be read after the poller is gone.
struct Journal
{
    struct Enquiry
    {
        QString id, reference;
        std::chrono::milliseconds at;
    };
    std::vector<Enquiry> enquiries;
    std::vector<std::shared_ptr<TransactionStatus>> reports;
    int noNetwork = 0;
};

class RecordingPoller : public UpiPolling
{
public:
    RecordingPoller(ManualScheduler &clock, Journal &journal)
        : m_clock(clock)
        , m_journal(journal)
    { }

    // When set, every enquiry is answered at once with this record, as an instant backend would.
    std::shared_ptr<TransactionStatus> autoAnswer;

protected:
    QString firstEnquiryTransactionId() const override { return QString(); }
    QString enquiryReference() const override { return QStringLiteral("ORD-7"); }
    DataTaskPtr sendStatusEnquiry(const QString &id, const QString &reference) override
    {
        m_journal.enquiries.push_back({ id, reference, m_clock.now() });
        if (autoAnswer)
            getTransactionStatus(autoAnswer);
        return nullptr;
    }
    void reportFinalStatus(std::shared_ptr<TransactionStatus> status) override
    {
        m_journal.reports.push_back(std::move(status));
    }
    void reportNoNetwork() override { ++m_journal.noNetwork; }

private:
    ManualScheduler &m_clock;
    Journal &m_journal;
};

class UpiPollingTest : public ::testing::Test
{
protected:
    void reachFirstEnquiry()
    {
        poller->startPolling();
        clock.advance(11000ms);
        ASSERT_EQ(journal.enquiries.size(), 1u);
    }

    testing::SwitchableNetwork network;
    ManualScheduler clock;
    ScopedScheduler scoped { clock };
    Journal journal;
    std::unique_ptr<RecordingPoller> poller = std::make_unique<RecordingPoller>(clock, journal);
};

TEST_F(UpiPollingTest, EnquiriesGoOutElevenSecondsAfterStartThenFourAfterEachAnswer)
{
    poller->startPolling();
    EXPECT_EQ(clock.pendingQueues(), std::vector<QueueKind> { QueueKind::Global });
    EXPECT_EQ(clock.nextDueIn(), 1000ms);
    clock.advance(500ms);
    poller->startPolling(); // a second start must not start a second chain
    clock.advance(500ms);
    EXPECT_EQ(clock.pendingQueues(), std::vector<QueueKind> { QueueKind::Main });
    clock.advance(9999ms);
    EXPECT_TRUE(journal.enquiries.empty()) << "nothing may go out at 10.999 s";
    clock.advance(1ms);
    ASSERT_EQ(journal.enquiries.size(), 1u);
    EXPECT_EQ(journal.enquiries[0].at, 11000ms);
    EXPECT_EQ(journal.enquiries[0].id, QString());
    EXPECT_EQ(journal.enquiries[0].reference, QStringLiteral("ORD-7"));

    // Each next enquiry names the transaction by the previous answer's reference number.
    for (qint64 ref : { 1700000000001LL, 1700000000002LL, 9007199254740993LL }) {
        const auto answeredAt = clock.now();
        poller->getTransactionStatus(answer(0, ref));
        clock.runDue();
        EXPECT_EQ(clock.pendingQueues(), std::vector<QueueKind> { QueueKind::Global });
        const auto before = journal.enquiries.size();
        clock.advance(3999ms);
        EXPECT_EQ(journal.enquiries.size(), before);
        clock.advance(1ms);
        ASSERT_EQ(journal.enquiries.size(), before + 1);
        EXPECT_EQ(journal.enquiries.back().at - answeredAt, 4000ms);
        EXPECT_EQ(journal.enquiries.back().id, QString::number(ref));
        EXPECT_EQ(journal.enquiries.back().reference, QStringLiteral("ORD-7"));
    }
    EXPECT_TRUE(journal.reports.empty());
}

template<class Row> class UpiPollingRowTest : public UpiPollingTest, public ::testing::WithParamInterface<Row>
{
};

using UpiPollingStatusTest = UpiPollingRowTest<std::pair<Status, bool>>;

TEST_P(UpiPollingStatusTest, OnlyOneTwoAndThreeEndThePollingAndAreReportedOnce)
{
    const auto [paymentStatus, final] = GetParam();
    reachFirstEnquiry();
    const auto reply = answer(paymentStatus, 55);
    poller->getTransactionStatus(reply);
    EXPECT_TRUE(journal.reports.empty()) << "answers are judged on the main queue, not at once";
    if (final) {
        // Whatever arrives after the outcome changes nothing.
        for (const auto &late : { answer(1), answer(2), answer(0), std::shared_ptr<TransactionStatus>() })
            poller->getTransactionStatus(late);
    }
    clock.advance(60000ms - clock.now());

    if (final) {
        ASSERT_EQ(journal.reports.size(), 1u);
        EXPECT_EQ(journal.reports[0], reply);
        EXPECT_EQ(journal.enquiries.size(), 1u);
        EXPECT_EQ(clock.pendingCount(), 0);
    } else {
        EXPECT_TRUE(journal.reports.empty());
        ASSERT_EQ(journal.enquiries.size(), 2u) << "one answer, one more enquiry";
        EXPECT_EQ(journal.enquiries[1].id, QStringLiteral("55"));
    }
}

// 11 is a success to the merchant yet polls on; 2^32 + 1 must not pass for 1 through truncation.
INSTANTIATE_TEST_SUITE_P(Statuses, UpiPollingStatusTest,
    ::testing::Values(std::pair { Status(0), false }, std::pair { Status(), false },
        std::pair { Status(1), true }, std::pair { Status(2), true }, std::pair { Status(3), true },
        std::pair { Status(4), false }, std::pair { Status(11), false }, std::pair { Status(-1), false },
        std::pair { Status(4294967297LL), false }));

struct StopRow
{
    const char *moment;
    std::chrono::milliseconds stopAt;
    std::size_t enquiries;
};

using UpiPollingStopTest = UpiPollingRowTest<StopRow>;

// With an instant backend that always answers "pending", enquiries go out at 11 s, 15 s, 19 s...
TEST_P(UpiPollingStopTest, StoppingEndsThePollingAfterAtMostOneMoreAnswer)
{
    poller->autoAnswer = answer(0, 77);
    poller->startPolling();
    clock.advance(GetParam().stopAt);
    poller->stopPolling();
    clock.advance(120000ms);

    EXPECT_EQ(journal.enquiries.size(), GetParam().enquiries) << GetParam().moment;
    EXPECT_EQ(clock.pendingCount(), 0);
    EXPECT_TRUE(journal.reports.empty());
}

INSTANTIATE_TEST_SUITE_P(Moments, UpiPollingStopTest,
    ::testing::Values(StopRow { "before the first background step", 500ms, 0 },
        StopRow { "first enquiry already on the main queue", 5000ms, 1 },
        StopRow { "during a re-poll's background step", 11500ms, 1 },
        StopRow { "re-poll already on the main queue", 13000ms, 2 },
        StopRow { "after several polls", 27500ms, 5 }));

TEST_F(UpiPollingTest, LosingTheNetworkStopsThePollingForGoodWithOneNotice)
{
    reachFirstEnquiry();
    network.online = false;
    poller->getTransactionStatus(answer(0));
    clock.advance(30000ms);
    EXPECT_EQ(journal.noNetwork, 1);

    // The network comes back and late answers arrive, a final one too: nothing changes.
    network.online = true;
    poller->getTransactionStatus(answer(0));
    poller->getTransactionStatus(answer(1));
    clock.advance(30000ms);
    EXPECT_EQ(journal.noNetwork, 1);
    EXPECT_EQ(journal.enquiries.size(), 1u);
    EXPECT_TRUE(journal.reports.empty());
    EXPECT_EQ(clock.pendingCount(), 0);
}

TEST_F(UpiPollingTest, ADestroyedPollerIsNeverTouched)
{
    reachFirstEnquiry();
    poller->getTransactionStatus(answer(0));
    clock.advance(2000ms); // the next enquiry now waits on the main queue
    poller->getTransactionStatus(answer(1));
    poller.reset();
    EXPECT_GT(clock.pendingCount(), 0);
    clock.advance(60000ms);
    EXPECT_EQ(journal.enquiries.size(), 1u);
    EXPECT_TRUE(journal.reports.empty());
}

// A non-final answer that cannot name the transaction for the next enquiry is a programming
// error: the process stops when that enquiry is due, not before. The enquiry left pending in
// this process finds its poller gone and does nothing.
using UpiPollingDeathTest = UpiPollingTest;

TEST_F(UpiPollingDeathTest, NextEnquiryWithoutAReferenceNumberIsFatal)
{
    for (const auto &broken : { std::shared_ptr<TransactionStatus>(), std::make_shared<TransactionStatus>(),
             answer(0, std::nullopt) }) {
        Journal log;
        RecordingPoller p(clock, log);
        p.startPolling();
        clock.advance(11000ms);
        p.getTransactionStatus(broken);
        clock.advance(3999ms);
        EXPECT_EQ(log.enquiries.size(), 1u);
        EXPECT_DEATH(clock.advance(1ms),
            testing::fatalLine("UPI status polling: the previous answer has no kovenaRefNumber"));
    }
}

} // namespace
} // namespace kovena
