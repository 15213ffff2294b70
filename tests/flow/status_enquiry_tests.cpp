// The status enquiry end to end: kovenaStatusInit, the request on the wire, the reply from the
// in-process backend, and the one merchant report on the main thread.
#include "flow/InitialViewController.h"
#include "flow/NavigatorController.h"
#include "flow/flow_root_support.h"
#include "flow/status_enquiry_backend.h"
#include "platform/ManualScheduler.h"
#include "platform/NavigationController.h"
#include "platform/UserDefaults.h"
#include "sdk/KovenaSDK.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdio>

using namespace kovena;
using namespace kovena::testing;

namespace {

class StatusEnquiryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        statusBackend().clearRequests();
        statusBackend().clearScriptedReplies();
        UserDefaults::resetStandardUserDefaults();
    }

    // Starts the enquiry and lets the flow load; returns its first screen.
    InitialViewController *enquire(MerchantWindow &host, const char *id, const char *orderId)
    {
        KovenaSDK::instance().kovenaStatusInit(
            host.merchant, QLatin1String(id), QLatin1String(orderId), QStringLiteral("status-token"));
        clock.runDue();
        auto *navigator = qobject_cast<NavigatorController *>(rootViewController(&host.window));
        return navigator ? qobject_cast<InitialViewController *>(navigator->topViewController()) : nullptr;
    }

    // The reply was handled on the session thread once it queued its two blocks on the main queue.
    bool waitForQueuedReply()
    {
        return QTest::qWaitFor([&] { return clock.pendingCount() >= 2; }, 10000);
    }

    ManualScheduler clock;
    ScopedScheduler scoped { clock };
};

TEST_F(StatusEnquiryTest, ReportsTheBackendsRecordOnceOnTheMainThread)
{
    const struct
    {
        const char *id, *order;
        qint64 paymentStatus;
        const char *description;
    } rows[] = { { "42", "ORD-1", 1, "Success" }, { "43", "ORD-2", 2, "Fail" },
        { "44", "ORD-3", 14, "Pending" }, { "45", "ORD-4", 11, "Success" }, { "46", "ORD-5", 5, "Error" } };

    for (const auto &row : rows) {
        SCOPED_TRACE(row.id);
        statusBackend().clearRequests();
        MerchantWindow host;
        InitialViewController *initial = enquire(host, row.id, row.order);
        ASSERT_NE(initial, nullptr);
        EXPECT_EQ(initial->loader().container()->parentWidget(), initial);
        EXPECT_TRUE(initial->loader().isAnimating());

        bool overlayGoneAtReport = false;
        host.merchant->onCall = [&](const std::shared_ptr<TransactionStatus> &) {
            overlayGoneAtReport = !initial->loader().container()->parentWidget();
        };
        ASSERT_TRUE(waitForQueuedReply());
        EXPECT_EQ(host.merchant->callCount(), 0u); // nothing reaches the merchant off the main queue
        clock.runDue();

        const auto requests = statusBackend().requests();
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_EQ(requests[0].method, "POST");
        EXPECT_EQ(requests[0].path, "/KoVena/v1/sdk/txn/1/false/2");
        EXPECT_EQ(requests[0].header("Content-Type"), "application/json;charset=UTF-8");
        EXPECT_EQ(requests[0].header("Authorization"), "Bearer status-token");
        EXPECT_EQ(JsonValue::parse(requests[0].body),
            JsonValue(
                { { "kovenaRefNumber", row.id }, { "transactionRefNumber", row.order }, { "txnOtp", "" } }));

        const auto calls = host.merchant->calls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_TRUE(calls[0].onMainThread);
        EXPECT_TRUE(overlayGoneAtReport);
        const auto &record = calls[0].record;
        ASSERT_TRUE(record && record->data);
        EXPECT_EQ(record->responseCode, QStringLiteral("200TRANSRESPSUCC"));
        EXPECT_EQ(record->data->paymentStatus, row.paymentStatus);
        EXPECT_EQ(record->data->description, QString::fromLatin1(row.description));
        EXPECT_EQ(record->data->transactionRefNumber, QString::fromLatin1(row.order));
        EXPECT_EQ(initial->navigationController()->topViewController(), initial); // the screens stay
    }
}

TEST_F(StatusEnquiryTest, AReplyForAFlowThatWasReplacedReachesNoOne)
{
    // The backend answers slowly; meanwhile the merchant starts a checkout in the same window.
    statusBackend().enqueueReply("v1/sdk/txn/1/false/2",
        sandbox::ScriptedReply { 200, {}, false, std::chrono::milliseconds(300), true });
    MerchantWindow host;
    QPointer<InitialViewController> enquiring = enquire(host, "42", "ORD-1");
    ASSERT_FALSE(enquiring.isNull());
    ASSERT_TRUE(statusBackend().waitForRequests(1, std::chrono::seconds(10)));

    KovenaSDK::instance().kovenaInit(host.merchant, QStringLiteral("Shop"), QStringLiteral("ORD-9"),
        QStringLiteral("token"), QStringLiteral("COL"), QStringLiteral("10"), QStringLiteral("9876543210"),
        QStringLiteral("a@b.in"), QString(), QStringLiteral("9"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(enquiring.isNull());

    QTest::qWait(600); // longer than the backend's delay: a late reply would be queued by now
    clock.runDue();
    EXPECT_EQ(host.merchant->callCount(), 0u);
}

using StatusEnquiryDeathTest = StatusEnquiryTest;

TEST_F(StatusEnquiryDeathTest, AFailedEnquiryStopsTheProcessWithoutAReport)
{
    // An unknown transaction is a failed request: there is no record to hand over.
    MerchantWindow host;
    EXPECT_DEATH(
        {
            enquire(host, "999", "NOPE");
            if (waitForQueuedReply())
                clock.runDue();
            std::fprintf(stderr, "merchant calls: %zu\n", host.merchant->callCount());
        },
        "no transaction status");
}

} // namespace
