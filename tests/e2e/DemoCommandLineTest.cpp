// The demo's command line: defaults a sandbox accepts, values given explicitly (even empty)
// passed on as given, and clear refusals of what cannot run.
#include "DemoOptions.h"
#include "DemoProcess.h"

#include <gtest/gtest.h>

namespace kovena::demo {
namespace {

ParseOutcome parse(QStringList arguments)
{
    arguments.prepend("kovena-demo");
    return parseDemoOptions(arguments);
}

TEST(DemoCommandLine, CheckoutDefaultsSuitTheSandbox)
{
    const ParseOutcome outcome = parse({ "--headless" });
    ASSERT_EQ(outcome.kind, ParseOutcome::Kind::Run) << outcome.error.toStdString();
    const DemoOptions &o = outcome.options;
    EXPECT_TRUE(o.headless);
    EXPECT_EQ(o.flow, DemoOptions::Flow::Checkout);
    EXPECT_EQ(o.amount, "100");
    EXPECT_TRUE(o.orderNo.startsWith("ORD-")) << o.orderNo.toStdString();
    EXPECT_GT(o.orderNo.size(), 4);
    EXPECT_EQ(o.accessToken, "demo-token");
    EXPECT_EQ(o.collectorId, "COLL-1");
    EXPECT_EQ(o.customerMobNum, "9876543210");
    EXPECT_EQ(o.customerEmail, "customer@example.com");
    EXPECT_EQ(o.requestId, "");
    EXPECT_EQ(o.appName, "Demo Store");
    EXPECT_EQ(o.paymentMode, "1");
    EXPECT_FALSE(o.vpa.has_value());
    EXPECT_FALSE(o.cancel);
    EXPECT_EQ(o.timeoutSeconds, 60);
    EXPECT_TRUE(o.serverUrl.isEmpty());
}

TEST(DemoCommandLine, ExplicitValuesEvenEmptyAreKept)
{
    const ParseOutcome outcome
        = parse({ "--headless", "--amount", "", "--order=", "--token", "", "--collector", "C-9", "--mobile",
            "", "--email", "", "--request-id", " ", "--app-name", "", "--mode", "1", "--vpa", "", "--cancel",
            "--timeout", "2.5", "--server", "https://pay.example.test/api/KoVena/" });
    ASSERT_EQ(outcome.kind, ParseOutcome::Kind::Run) << outcome.error.toStdString();
    const DemoOptions &o = outcome.options;
    EXPECT_EQ(o.amount, "");
    EXPECT_EQ(o.orderNo, "");
    EXPECT_EQ(o.accessToken, "");
    EXPECT_EQ(o.collectorId, "C-9");
    EXPECT_EQ(o.customerMobNum, "");
    EXPECT_EQ(o.customerEmail, "");
    EXPECT_EQ(o.requestId, " ");
    EXPECT_EQ(o.appName, "");
    ASSERT_TRUE(o.vpa.has_value());
    EXPECT_EQ(*o.vpa, "");
    EXPECT_TRUE(o.cancel);
    EXPECT_EQ(o.timeoutSeconds, 2.5);
    EXPECT_EQ(o.serverUrl, "https://pay.example.test/api/KoVena/");
}

TEST(DemoCommandLine, StatusEnquiryTakesTransactionAndOrder)
{
    const ParseOutcome outcome
        = parse({ "--headless", "--flow", "status", "--txn", "42", "--order", "ORD-1" });
    ASSERT_EQ(outcome.kind, ParseOutcome::Kind::Run) << outcome.error.toStdString();
    EXPECT_EQ(outcome.options.flow, DemoOptions::Flow::Status);
    EXPECT_EQ(outcome.options.kovenaTransactionId, "42");
    EXPECT_EQ(outcome.options.orderNo, "ORD-1");
}

struct Refusal
{
    const char *name;
    QStringList arguments;
    const char *mentions; // a word the one-line error must contain
};

// Keeps test names readable in ctest.
void PrintTo(const Refusal &r, std::ostream *out)
{
    *out << r.name;
}

class DemoCommandLineRefusal : public ::testing::TestWithParam<Refusal>
{
};

TEST_P(DemoCommandLineRefusal, SaysWhatIsWrong)
{
    const ParseOutcome outcome = parse(GetParam().arguments);
    EXPECT_EQ(outcome.kind, ParseOutcome::Kind::Error);
    EXPECT_TRUE(outcome.error.contains(GetParam().mentions)) << outcome.error.toStdString();
    EXPECT_FALSE(outcome.helpText.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Cases, DemoCommandLineRefusal,
    ::testing::Values(Refusal { "UnknownOption", { "--headless", "--bogus" }, "bogus" },
        Refusal { "MissingValue", { "--headless", "--amount" }, "amount" },
        Refusal { "StrayArgument", { "--headless", "extra" }, "extra" },
        Refusal { "UnknownFlow", { "--headless", "--flow", "refund" }, "refund" },
        Refusal { "ZeroTimeout", { "--headless", "--timeout", "0" }, "--timeout" },
        Refusal { "TextTimeout", { "--headless", "--timeout", "soon" }, "--timeout" },
        Refusal { "ServerWithoutBasePath", { "--headless", "--server", "http://127.0.0.1:1/" }, "/KoVena/" },
        Refusal { "ServerNotHttp", { "--headless", "--server", "ftp://host/KoVena/" }, "--server" },
        Refusal { "RecordWithServer",
            { "--headless", "--server", "http://127.0.0.1:1/KoVena/", "--record", "x" }, "--record" },
        Refusal { "VpaOutsideUpi", { "--headless", "--mode", "2", "--vpa", "a@b" }, "--mode 1" },
        Refusal { "ScriptWithoutHeadless", { "--cancel" }, "--headless" },
        Refusal { "StatusWithoutTransaction", { "--headless", "--flow", "status", "--order", "O" }, "--txn" },
        Refusal { "StatusWithCheckoutOption",
            { "--headless", "--flow", "status", "--txn", "1", "--order", "O", "--amount", "5" }, "--amount" },
        Refusal { "CheckoutWithTransaction", { "--headless", "--txn", "42" }, "--txn" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(DemoCommandLineProcess, RefusalExitsWithUsageOnStderrAndNothingOnStdout)
{
    const e2e::DemoRun run = e2e::runHeadlessDemo({ "--flow", "refund" }, 30000);
    SCOPED_TRACE(run.transcript());
    EXPECT_TRUE(run.exitedWith(2));
    EXPECT_TRUE(run.events.empty());
    EXPECT_TRUE(run.malformedLines.isEmpty());
    EXPECT_TRUE(run.standardError.contains("refund"));
    EXPECT_TRUE(run.standardError.contains("Usage:"));
}

} // namespace
} // namespace kovena::demo
