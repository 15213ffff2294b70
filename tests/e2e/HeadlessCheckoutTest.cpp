// Checkouts through the built demo against its in-process sandbox: the customer's part is
// played by the demo (typing a VPA, pressing Cancel), the merchant's callbacks are printed.
#include "DemoProcess.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kovena::e2e {
namespace {

// A checkout whose parameters fail validation: one callback and one toast per failed rule,
// in rule order; some failures end the process after their callbacks.
struct BadCheckout
{
    const char *name;
    QStringList arguments;
    std::vector<long long> statuses;
    QStringList toasts; // only checked for runs that end normally (toasts show after the callbacks)
    bool aborts;
};

// Keep test names readable in ctest.
void PrintTo(const BadCheckout &c, std::ostream *out)
{
    *out << c.name;
}

class CheckoutValidation : public ::testing::TestWithParam<BadCheckout>
{
};

TEST_P(CheckoutValidation, ReportsEachFailedRule)
{
    const BadCheckout &c = GetParam();
    // Mode 4 keeps the customer on the payment options, so nothing but validation reports.
    const DemoRun run = runHeadlessDemo(QStringList { "--mode", "4" } + c.arguments);
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.malformedLines.isEmpty());
    EXPECT_EQ(run.paymentStatuses(), c.statuses);
    if (c.aborts) {
        EXPECT_TRUE(run.failed());
        return;
    }
    EXPECT_TRUE(run.exitedWith(0));
    EXPECT_EQ(run.toasts(), c.toasts);
    EXPECT_TRUE(run.screens().contains("PaymentOptionVC"));
}

INSTANTIATE_TEST_SUITE_P(Rules, CheckoutValidation,
    ::testing::Values(BadCheckout { "LettersAmount", { "--amount", "abc" }, { -103 }, {}, true },
        BadCheckout { "EmptyAmount", { "--amount", "" }, { -102, -103 }, {}, true },
        BadCheckout {
            "AmountBelowOneRupee", { "--amount", "0.99" }, { -104 }, { "Invalid amount range" }, false },
        BadCheckout { "EmptyTokenAndEmail", { "--token", "", "--email", "" }, { -105, -107 },
            { "AccessToken Error", "Customer Email Error" }, false },
        BadCheckout { "EmptyOrderAndCollector", { "--order", "", "--collector", "" }, { -106, -106 },
            { "OrderId missing", "CollectorId Error" }, false },
        BadCheckout {
            "EmptyMobile", { "--mobile", "" }, { -107 }, { "Customer Mobile Number Error" }, false }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CheckoutUnknownMode, StaysOnThePaymentOptionsUntilTheTimeLimit)
{
    const DemoRun run = runHeadlessDemo({ "--mode", "4", "--timeout", "5" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.exitedWith(3));
    EXPECT_TRUE(run.callbacks().empty());
    EXPECT_TRUE(run.screens().contains("PaymentOptionVC"));
    for (const char *screen : { "UPIViewController", "CardViewController", "NetBankingViewController" })
        EXPECT_FALSE(run.screens().contains(screen)) << screen;
}

struct CancelCase
{
    const char *mode;
    const char *screenCancelledOn;
};

void PrintTo(const CancelCase &c, std::ostream *out)
{
    *out << "mode " << c.mode;
}

class CheckoutCancel : public ::testing::TestWithParam<CancelCase>
{
};

TEST_P(CheckoutCancel, ReportsCancelledOnce)
{
    const CancelCase &c = GetParam();
    const DemoRun run = runHeadlessDemo({ "--mode", c.mode, "--cancel", "--timeout", "30" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, -1, QStringLiteral("Cancelled")));
    ASSERT_FALSE(run.screens().isEmpty());
    EXPECT_EQ(run.screens().last(), c.screenCancelledOn);
    // A record the library decided itself carries nothing but the status and its text.
    const nlohmann::ordered_json record = run.callbacks().front();
    EXPECT_EQ(record,
        (nlohmann::ordered_json { { "data", { { "paymentStatus", -1 }, { "description", "Cancelled" } } } }));
}

// The payment option screen cancels at once; the UPI screen asks first and the demo confirms.
INSTANTIATE_TEST_SUITE_P(Screens, CheckoutCancel,
    ::testing::Values(CancelCase { "4", "PaymentOptionVC" }, CancelCase { "1", "UPIViewController" }));

TEST(CheckoutUpi, InvalidVpaShowsAToastAndReportsNothing)
{
    const DemoRun run = runHeadlessDemo({ "--mode", "1", "--vpa", "customer@gmail", "--timeout", "5" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.exitedWith(3));
    EXPECT_TRUE(run.callbacks().empty());
    EXPECT_EQ(run.toasts(), QStringList { "UPI id is not valid !!" });
}

struct UpiCase
{
    const char *vpa;
    long long paymentStatus;
    const char *description;
};

void PrintTo(const UpiCase &c, std::ostream *out)
{
    *out << c.vpa;
}

class CheckoutUpi : public ::testing::TestWithParam<UpiCase>
{
};

// The collect request is approved or declined after two pending polls (about 19 s).
TEST_P(CheckoutUpi, ReportsTheFinalStatusAfterPolling)
{
    const UpiCase &c = GetParam();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString record = dir.filePath("requests.jsonl");
    const DemoRun run = runHeadlessDemo(
        { "--mode", "1", "--amount", "250.50", "--order", "ORD-E2E", "--vpa", c.vpa, "--record", record });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, c.paymentStatus, QString::fromLatin1(c.description)));
    EXPECT_TRUE(run.toasts().isEmpty());
    EXPECT_TRUE(run.screens().contains("UPIViewController"));
    const nlohmann::ordered_json data = run.callbacks().front().at("data");
    EXPECT_EQ(data.value("transactionRefNumber", ""), "ORD-E2E");
    EXPECT_EQ(data.value("customerVpa", ""), c.vpa);

    // What reached the backend: register, collect, then status polls until the final one.
    QFile file(record);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<std::string> paths;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        const auto request = nlohmann::json::parse(line.constBegin(), line.constEnd(), nullptr, false);
        ASSERT_TRUE(request.is_object()) << line.toStdString();
        paths.push_back(request.value("path", ""));
    }
    ASSERT_GE(paths.size(), 3u);
    EXPECT_EQ(paths[0], "/KoVena/v1/sdk/payForService");
    EXPECT_EQ(paths[1], "/KoVena/v1/sdk/sendCollectOrSMS");
    for (std::size_t i = 2; i < paths.size(); ++i)
        EXPECT_EQ(paths[i], "/KoVena/v1/sdk/txn/1/false/2") << "request " << i;
}

INSTANTIATE_TEST_SUITE_P(Vpas, CheckoutUpi,
    ::testing::Values(UpiCase { "success@kovena", 1, "Success" }, UpiCase { "failure@kovena", 2, "Fail" }));

} // namespace
} // namespace kovena::e2e
