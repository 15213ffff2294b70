// The built demo run headless against its in-process sandbox: the customer's part played by the
// demo, the merchant's callbacks printed as JSON lines. The outcome of every flow is the endings
// table's (tests/sdk/endings_tests.cpp); here: the demo's exit codes, its lines, what it sends as
// typed, and what a whole process prints (the token, the card).
#include "DemoProcess.h"

#include "sandbox/Sandbox.h"

#include <QDate>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kovena::e2e {
namespace {

const std::string kPayForService = "/KoVena/v1/sdk/payForService";

// The JSON bodies a --record file shows sent to one endpoint (none if nothing was sent); each of
// its lines must be a JSON object.
std::vector<nlohmann::json> bodiesTo(const QString &recordFile, const std::string &path)
{
    std::vector<nlohmann::json> out;
    QFile file(recordFile);
    if (!file.open(QIODevice::ReadOnly))
        return out;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.isEmpty())
            continue;
        const auto request = nlohmann::json::parse(line.constBegin(), line.constEnd(), nullptr, false);
        EXPECT_TRUE(request.is_object()) << line.toStdString();
        if (request.is_object() && request.value("path", "") == path)
            out.push_back(nlohmann::json::parse(request.value("body", ""), nullptr, false));
    }
    return out;
}

// A run with a --record file in a directory of its own.
struct RecordedRun
{
    QTemporaryDir dir;
    QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    DemoRun run;

    explicit RecordedRun(const QStringList &arguments)
        : run(runHeadlessDemo(arguments + QStringList { "--record", record }))
    { }
};

// The demo printed the bank's page it showed. (The sandbox's page offers its buttons only to a
// form posted with device_type=0, so a success also proves the rewritten form reached it.)
void expectBankPageShown(const DemoRun &run)
{
    bool bankPageShown = false;
    for (const auto &event : run.events)
        bankPageShown |= event.value("event", "") == "bankPage"
            && event.value("url", "").find("/bank/pay") != std::string::npos;
    EXPECT_TRUE(bankPageShown);
}

TEST(HeadlessStatus, PrintsTheRecordWithTheBackendsIdsAsExactIntegers)
{
    const DemoRun run = runHeadlessDemo({ "--flow", "status", "--txn", "42", "--order", "ORD-1" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, 1, QStringLiteral("Success")));
    EXPECT_TRUE(run.toasts().isEmpty());
    const nlohmann::ordered_json record = run.callbacks().front();
    EXPECT_EQ(record.value("responseCode", ""), "200TRANSRESPSUCC");
    const nlohmann::ordered_json &data = record.at("data");
    ASSERT_TRUE(data.at("kovenaTransactionId").is_number_integer());
    EXPECT_EQ(data.at("kovenaTransactionId").get<long long>(), 42);
    EXPECT_EQ(data.value("transactionRefNumber", ""), "ORD-1");
    for (const char *key : { "merchantId", "kovenaRefNumber", "requestStatus",
             "paymentGatewayReferenceNumber", "kovenaServiceId", "status" }) {
        if (data.contains(key)) {
            EXPECT_TRUE(data.at(key).is_number_integer()) << key << " = " << data.at(key).dump();
        }
    }
}

// Runs that end without a payment: the callbacks they make (in rule order for validation), then
// either an abort (a failure the library treats as fatal), a normal exit with the toasts printed
// after the callbacks, or exit code 3 at --timeout with nothing paid.
struct NoPayment
{
    const char *name;
    QStringList arguments;
    int exitCode; // -1: ends by a fatal error
    std::vector<long long> statuses;
    QStringList toasts;
    const char *lastScreenReached;
};

void PrintTo(const NoPayment &c, std::ostream *out)
{
    *out << c.name;
}

using HeadlessNoPayment = ::testing::TestWithParam<NoPayment>;

TEST_P(HeadlessNoPayment, ReportsThenEndsWithItsExitCode)
{
    const NoPayment &c = GetParam();
    const RecordedRun r(c.arguments);
    SCOPED_TRACE(r.run.transcript());
    expectTokenOnlyInTheFacadeLine(r.run);

    EXPECT_TRUE(r.run.malformedLines.isEmpty());
    EXPECT_EQ(r.run.paymentStatuses(), c.statuses);
    EXPECT_TRUE(bodiesTo(r.record, kPayForService).empty());
    if (c.exitCode < 0) {
        EXPECT_TRUE(r.run.failed());
        return;
    }
    EXPECT_TRUE(r.run.exitedWith(c.exitCode));
    EXPECT_EQ(r.run.toasts(), c.toasts);
    EXPECT_TRUE(r.run.screens().contains(c.lastScreenReached));
    const QStringList later = { "UPIViewController", "CardViewController", "NetBankingViewController" };
    for (const QString &screen : later.mid(later.indexOf(QString::fromLatin1(c.lastScreenReached)) + 1))
        EXPECT_FALSE(r.run.screens().contains(screen)) << screen.toStdString();
}

// Mode 4 keeps the customer on the payment options, so nothing but validation reports.
INSTANTIATE_TEST_SUITE_P(Runs, HeadlessNoPayment,
    ::testing::Values(
        NoPayment { "LettersAmount", { "--mode", "4", "--amount", "abc" }, -1, { -103 }, {}, nullptr },
        NoPayment { "EmptyTokenAndEmail", { "--mode", "4", "--token", "", "--email", "" }, 0, { -105, -107 },
            { "AccessToken Error", "Customer Email Error" }, "PaymentOptionVC" },
        NoPayment { "InvalidVpa", { "--mode", "1", "--vpa", "customer@gmail", "--timeout", "5" }, 3, {},
            { "UPI id is not valid !!" }, "UPIViewController" }),
    [](const auto &info) { return std::string(info.param.name); });

// The collect request is approved after two pending polls (about 19 s); the order of the requests
// that takes is the UPI screen's tests'. Here: the demo passes its order and VPA on as given.
TEST(HeadlessUpi, PaysWithTheOrderAndVpaAsGiven)
{
    const DemoRun run = runHeadlessDemo(
        { "--mode", "1", "--amount", "250.50", "--order", "ORD-E2E", "--vpa", "success@kovena" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, 1, QStringLiteral("Success")));
    EXPECT_TRUE(run.toasts().isEmpty());
    EXPECT_TRUE(run.screens().contains("UPIViewController"));
    const nlohmann::ordered_json data = run.callbacks().front().at("data");
    EXPECT_EQ(data.value("transactionRefNumber", ""), "ORD-E2E");
    EXPECT_EQ(data.value("customerVpa", ""), "success@kovena");
}

// One card payment, every category logging at debug level: what it sends as typed and chosen, and
// that neither the card number nor the CVV shows in anything it printed, recorded or stored.
TEST(CardPayment, SendsTheCardAsTypedAndLeavesItNowhere)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString nextYear = QString::number(QDate::currentDate().year() + 1);
    const QString settings = dir.filePath(QStringLiteral("settings"));
    ASSERT_TRUE(QDir().mkpath(settings));
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    QProcessEnvironment verbose;
    verbose.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.debug=true"));
    // A 17th digit is refused by the number field, and a fourth CVV digit by its field; the expiry
    // comes from the lists.
    const DemoRun run = runHeadlessDemo(
        { "--mode", "2", "--card", "41111111111111119", "--card-name", "Asha Rao", "--month", "7", "--year",
            nextYear, "--cvv", "7391", "--bank-page", "approve", "--settings", settings, "--record", record },
        90000, verbose);
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_TRUE(endedWithOneReport(run, 1, QStringLiteral("Success")));
    ASSERT_TRUE(run.standardError.contains(QStringLiteral("kovena")));
    EXPECT_TRUE(run.screens().contains("PaymentViewController"));
    expectBankPageShown(run);
    const auto bodies = bodiesTo(record, kPayForService);
    ASSERT_EQ(bodies.size(), 1u);
    const nlohmann::json &account = bodies[0]["bankAccount"];
    // The record file keeps only the last four digits; the CVV is masked.
    EXPECT_EQ(account.value("cardNumber", "").substr(account.value("cardNumber", "").size() - 4), "1111");
    EXPECT_EQ(account.value("cardName", ""), "Asha Rao");
    EXPECT_EQ(account.value("cardExpiryMonth", ""), "7");
    EXPECT_EQ(account.value("cardExpiryYear", ""), nextYear.toStdString());
    EXPECT_EQ(bodies[0].value("serviceType", ""), "28");

    // The number in any grouping, and the CVV as a number of its own.
    const QRegularExpression number(QStringLiteral("4111[- ]?1111[- ]?1111[- ]?1111"));
    // Not inside a hex checksum; record lines' receipt times and lengths are left out of the search.
    const QRegularExpression cvv(QStringLiteral("(?<![0-9A-Za-z])7391?(?![0-9A-Za-z])"));
    const QRegularExpression measures(QStringLiteral(R"re("time":"[^"]*"|\["Content-Length","[0-9]+"\])re"));
    QStringList places { run.standardOutput, run.standardError };
    QDirIterator files(dir.path(), QDir::Files, QDirIterator::Subdirectories);
    int stored = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        places << QString::fromUtf8(file.readAll()).remove(measures);
        stored += file.fileName().startsWith(settings) ? 1 : 0;
    }
    EXPECT_GT(stored, 0) << "the user defaults were not written where the test looks";
    for (const QString &text : places) {
        EXPECT_FALSE(number.match(text).hasMatch()) << number.match(text).capturedStart();
        EXPECT_FALSE(cvv.match(text).hasMatch())
            << text.mid(cvv.match(text).capturedStart() - 40, 80).toStdString();
    }
}

// A fatal error in the middle of a card payment: its diagnostic, and every line logged before it,
// still show no part of the card.
TEST(CardPayment, AFatalErrorMidPaymentShowsNoCardDetails)
{
    // Issuer LASER, type Maestro: once a month is chosen with no year, the year check lets the
    // placeholder through to the month check, which cannot read it as a number.
    const DemoRun run = runHeadlessDemo({ "--mode", "2", "--card", "6304123456789012", "--card-name", "A B",
        "--month", "6", "--timeout", "30" });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.finished && run.exitStatus == QProcess::CrashExit);
    EXPECT_TRUE(run.callbacks().empty());
    EXPECT_TRUE(run.screens().contains("CardViewController"));
    EXPECT_TRUE(run.standardError.endsWith(
        QStringLiteral("kovena: fatal error: CardUtils::isValidMonth: year is not a number\n")));
    const QRegularExpression card(QStringLiteral("6304[- ]?1234|1234[- ]?5678|5678[- ]?9012"));
    for (const QString &text : { run.standardOutput, run.standardError })
        EXPECT_FALSE(card.match(text).hasMatch())
            << text.mid(card.match(text).capturedStart() - 40, 80).toStdString();
}

TEST(NetBankingPayment, PaysWithTheBankChosenFromTheList)
{
    const RecordedRun r({ "--mode", "3", "--bank-index", "2", "--bank-page", "approve" });
    SCOPED_TRACE(r.run.transcript());
    expectTokenOnlyInTheFacadeLine(r.run);

    ASSERT_TRUE(endedWithOneReport(r.run, 1, QStringLiteral("Success")));
    expectBankPageShown(r.run);
    const auto bodies = bodiesTo(r.record, kPayForService);
    ASSERT_EQ(bodies.size(), 1u);
    const sandbox::Sandbox reference;
    const auto banks = reference.bankList();
    ASSERT_GT(banks.size(), 2u);
    EXPECT_EQ(bodies[0].value("netbankingId", ""), std::to_string(banks[2].id));
}

} // namespace
} // namespace kovena::e2e
