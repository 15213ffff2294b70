// The demo's command line: defaults a sandbox accepts, values given explicitly (even empty)
// passed on as given, and clear refusals of what cannot run.
#include "DemoOptions.h"
#include "DemoProcess.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace kovena::demo {
namespace {

ParseOutcome parse(QStringList arguments)
{
    arguments.prepend("kovena-demo");
    return parseDemoOptions(arguments);
}

// What a flow is started with, as text: "-" for no VPA, the generated order number (a time in ms)
// as "ORD-<n>".
QStringList startedWith(const DemoOptions &o)
{
    QString order = o.orderNo;
    order.replace(QRegularExpression("^ORD-[0-9]{10,}$"), "ORD-<n>");
    return { o.flow == DemoOptions::Flow::Status ? "status" : "checkout", o.amount, order, o.accessToken,
        o.collectorId, o.customerMobNum, o.customerEmail, o.requestId, o.appName, o.paymentMode,
        o.vpa.value_or("-"), o.cancel ? "cancel" : "", QString::number(o.timeoutSeconds), o.serverUrl,
        o.kovenaTransactionId };
}

TEST(DemoCommandLine, DefaultsSuitTheSandboxAndGivenValuesEvenEmptyAreKept)
{
    const std::pair<QStringList, QStringList> rows[] = {
        { {},
            { "checkout", "100", "ORD-<n>", "demo-token", "COLL-1", "9876543210", "customer@example.com", "",
                "Demo Store", "1", "-", "", "60", "", "" } },
        { { "--amount", "", "--order=", "--token", "", "--collector", "C-9", "--mobile", "", "--email", "",
              "--request-id", " ", "--app-name", "", "--mode", "1", "--vpa", "", "--cancel", "--timeout",
              "2.5", "--server", "https://pay.example.test/api/KoVena/" },
            { "checkout", "", "", "", "C-9", "", "", " ", "", "1", "", "cancel", "2.5",
                "https://pay.example.test/api/KoVena/", "" } },
        { { "--flow", "status", "--txn", "42", "--order", "ORD-1" },
            { "status", "100", "ORD-1", "demo-token", "COLL-1", "9876543210", "customer@example.com", "",
                "Demo Store", "1", "-", "", "60", "", "42" } },
    };
    for (const auto &[arguments, expected] : rows) {
        const ParseOutcome outcome = parse(QStringList { "--headless" } + arguments);
        ASSERT_EQ(outcome.kind, ParseOutcome::Kind::Run) << outcome.error.toStdString();
        EXPECT_TRUE(outcome.options.headless);
        EXPECT_EQ(startedWith(outcome.options).join('|').toStdString(), expected.join('|').toStdString())
            << arguments.join(' ').toStdString();
    }
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

using DemoCommandLineRefusal = ::testing::TestWithParam<Refusal>;

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
