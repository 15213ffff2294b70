// The demo's own pieces that decide what a tester reads: the callback rows, the bank list it
// loads, the tour's one-line outcomes and its command line.
#include "CallbackRows.h"
#include "DemoOptions.h"
#include "Tour.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

nlohmann::ordered_json completion(const nlohmann::ordered_json &status)
{
    return { { "event", "onTransactionComplete" }, { "transactionStatus", status } };
}

struct RowCase
{
    const char *name;
    nlohmann::ordered_json event;
    bool onGuiThread;
    const char *threadName;
    const char *status, *description, *transactionId, *thread;
};

void PrintTo(const RowCase &c, std::ostream *out)
{
    *out << c.name;
}

using CallbackRowCase = testing::TestWithParam<RowCase>;

TEST_P(CallbackRowCase, ShowsTheRecordsOutcomeAndTheCallingThread)
{
    const RowCase &c = GetParam();
    const CallbackRow row
        = callbackRow(c.event, u"12:00:00.000"_s, c.onGuiThread, QString::fromLatin1(c.threadName));
    EXPECT_EQ(row.status, QString::fromLatin1(c.status));
    EXPECT_EQ(row.description, QString::fromLatin1(c.description));
    EXPECT_EQ(row.transactionId, QString::fromLatin1(c.transactionId));
    EXPECT_EQ(row.thread, QString::fromLatin1(c.thread));
    EXPECT_EQ(row.time, u"12:00:00.000"_s);
    // The whole record, every field of it, is one click away.
    EXPECT_EQ(nlohmann::ordered_json::parse(row.record.toStdString()), c.event);
}

INSTANTIATE_TEST_SUITE_P(Records, CallbackRowCase,
    testing::Values(RowCase { "StatusFromTheBackend",
                        completion({ { "success", "true" },
                            { "data",
                                { { "paymentStatus", 1 }, { "description", "Success" },
                                    { "kovenaTransactionId", 42 } } } }),
                        true, "", "1", "Success", "42", "GUI thread" },
        RowCase { "BankPageOnTheNetworkThread",
            completion({ { "data",
                { { "paymentStatus", 2 }, { "description", "Fail" }, { "kovenaTransactionId", 7 } } } }),
            false, "kovena-url-session", "2", "Fail", "7", "kovena-url-session (not GUI)" },
        RowCase { "CancelledWithoutTransaction",
            completion({ { "data", { { "paymentStatus", -1 }, { "description", "Cancelled" } } } }), true, "",
            "-1", "Cancelled", "", "GUI thread" },
        RowCase { "UnnamedOtherThread", completion({ { "data", { { "paymentStatus", 9 } } } }), false, "",
            "9", "", "", "another thread" },
        RowCase { "NoData", completion({ { "success", "false" } }), true, "", "", "", "", "GUI thread" },
        RowCase { "NullRecord", completion(nullptr), true, "", "", "(no record)", "", "GUI thread" },
        RowCase { "WrongKinds",
            completion({ { "data",
                { { "paymentStatus", "one" }, { "description", 5 }, { "kovenaTransactionId", true } } } }),
            true, "", "one", "5", "", "GUI thread" }),
    [](const testing::TestParamInfo<RowCase> &info) { return std::string(info.param.name); });

TEST(BankList, KeepsTheRepliesOrderSkipsEntriesWithoutIdOrNameAndRefusesNonLists)
{
    const auto banks = parseBankList(R"({"success":"true","data":[
        {"netBankingId":1031,"netBankingName":"Airtel Payments Bank","netbankingCodes":"AIRB"},
        {"netBankingId":"1","netBankingName":"Id as text"},
        {"netBankingName":"No id"},
        7,
        {"netBankingId":1001,"netBankingName":"State Bank of India"}]})");
    ASSERT_TRUE(banks.has_value());
    ASSERT_EQ(banks->size(), 2);
    EXPECT_EQ(banks->at(0).id, 1031);
    EXPECT_EQ(banks->at(0).name, u"Airtel Payments Bank"_s);
    EXPECT_EQ(banks->at(0).code, u"AIRB"_s);
    EXPECT_EQ(banks->at(1).id, 1001);
    EXPECT_TRUE(banks->at(1).code.isEmpty());

    for (const char *reply : { "", "not json", "[]", R"({"data":{}})", R"({"success":"true"})" })
        EXPECT_FALSE(parseBankList(reply).has_value()) << reply;
    EXPECT_TRUE(parseBankList(R"({"data":[]})")->isEmpty());
}

struct RunCase
{
    const char *name;
    int exitCode;
    QByteArray lines;
    bool asExpected;
    const char *line;
};

void PrintTo(const RunCase &c, std::ostream *out)
{
    *out << c.name;
}

using TourRunCase = testing::TestWithParam<RunCase>;

const TourStep kUpiStep { u"UPI payment (success@kovena)"_s, {}, 1 };

QByteArray outcomeLine(int status, const char *description)
{
    return QByteArray::fromStdString(
        completion({ { "data", { { "paymentStatus", status }, { "description", description } } } }).dump()
        + "\n");
}

TEST_P(TourRunCase, DescribesTheOutcomeInOneLine)
{
    const RunCase &c = GetParam();
    const TourOutcome outcome = describeRun(kUpiStep, c.exitCode, c.lines, 21.44);
    EXPECT_EQ(outcome.line, QString::fromUtf8(c.line));
    EXPECT_EQ(outcome.asExpected, c.asExpected);
}

INSTANTIATE_TEST_SUITE_P(Runs, TourRunCase,
    testing::Values(RunCase { "Expected", 0,
                        QByteArray(R"({"event":"screen","name":"UPIViewController"})"
                                   "\n")
                            + outcomeLine(1, "Success"),
                        true, "UPI payment (success@kovena): Success (1) in 21.4 s" },
        RunCase { "OtherStatus", 0, outcomeLine(2, "Fail"), false,
            "UPI payment (success@kovena): Fail (2) in 21.4 s  -- expected status 1" },
        RunCase { "TwoReports", 0, outcomeLine(-1, "Cancelled") + outcomeLine(1, "Success"), false,
            "UPI payment (success@kovena): Cancelled (-1), then Success (1) in 21.4 s  -- expected status "
            "1" },
        RunCase { "TimedOut", 3, QByteArray(R"({"event":"toast","message":"x"})"), false,
            "UPI payment (success@kovena): no outcome (gave up waiting) in 21.4 s  -- expected status 1" },
        RunCase { "Crashed", -1, outcomeLine(1, "Success"), false,
            "UPI payment (success@kovena): Success (1) (the demo exited with -1) in 21.4 s  -- expected "
            "status 1" },
        RunCase { "NotJsonIgnored", 0, QByteArray("garbage\n{\n") + outcomeLine(1, "Success"), true,
            "UPI payment (success@kovena): Success (1) in 21.4 s" }),
    [](const testing::TestParamInfo<RunCase> &info) { return std::string(info.param.name); });

TEST(Tour, CoversEveryWayToPayACancellationAndAStatusEnquiry)
{
    const QList<TourStep> steps = tourSteps();
    QStringList modes;
    for (const TourStep &step : steps) {
        // Every step is a valid headless command line.
        const ParseOutcome parsed
            = parseDemoOptions(QStringList { u"kovena-demo"_s, u"--headless"_s } + step.arguments);
        ASSERT_EQ(parsed.kind, ParseOutcome::Kind::Run) << parsed.error.toStdString();
        modes << (parsed.options.flow == DemoOptions::Flow::Status ? u"status"_s : parsed.options.paymentMode)
                + (parsed.options.cancel ? u" cancel"_s : QString());
        EXPECT_FALSE(step.title.contains(u"4111"_s)) << "a card number in a printed line";
    }
    EXPECT_EQ(modes, (QStringList { u"1"_s, u"2"_s, u"3"_s, u"4 cancel"_s, u"status"_s }));
}

TEST(Tour, TakesOnlyTheBackendOnItsCommandLine)
{
    const auto parse = [](const QStringList &arguments) {
        return parseDemoOptions(QStringList { u"kovena-demo"_s } + arguments);
    };
    EXPECT_TRUE(parse({ u"--tour"_s }).options.tour);
    const ParseOutcome withServer = parse({ u"--tour"_s, u"--server"_s, u"http://127.0.0.1:1/KoVena/"_s });
    EXPECT_EQ(withServer.kind, ParseOutcome::Kind::Run);
    EXPECT_EQ(withServer.options.serverUrl, u"http://127.0.0.1:1/KoVena/"_s);
    for (const QStringList &arguments :
        { QStringList { u"--tour"_s, u"--mode"_s, u"2"_s }, QStringList { u"--tour"_s, u"--headless"_s },
            QStringList { u"--tour"_s, u"--record"_s, u"f"_s } }) {
        const ParseOutcome parsed = parse(arguments);
        EXPECT_EQ(parsed.kind, ParseOutcome::Kind::Error) << arguments.join(u' ').toStdString();
        EXPECT_TRUE(parsed.error.startsWith(u"--tour takes no"_s)) << parsed.error.toStdString();
    }
}

} // namespace
} // namespace kovena::demo
