// Card and net-banking payments through the built demo against its in-process sandbox: the demo
// types the card or picks the bank as a customer would, then acts on the bank's page in the
// embedded browser; the merchant's callbacks and the requests the sandbox recorded are checked.
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

QString nextYear()
{
    return QString::number(QDate::currentDate().year() + 1);
}

// The requests in a --record file, in order.
std::vector<nlohmann::json> recorded(const QString &path)
{
    std::vector<nlohmann::json> out;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return out;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (!line.isEmpty())
            out.push_back(nlohmann::json::parse(line.constBegin(), line.constEnd(), nullptr, false));
    }
    return out;
}

// The JSON bodies sent to one endpoint.
std::vector<nlohmann::json> bodiesTo(const QString &recordFile, const std::string &path)
{
    std::vector<nlohmann::json> out;
    for (const auto &request : recorded(recordFile))
        if (request.value("path", "") == path)
            out.push_back(nlohmann::json::parse(request.value("body", ""), nullptr, false));
    return out;
}

const std::string kPayForService = "/KoVena/v1/sdk/payForService";

QStringList cardArguments(const char *bankPage)
{
    return { "--mode", "2", "--card", "4111111111111111", "--card-name", "A B", "--month", "12", "--year",
        nextYear(), "--cvv", "123", "--bank-page", bankPage, "--timeout", "60" };
}

struct PageCase
{
    const char *name;
    QStringList arguments;
    long long paymentStatus;
    const char *description;
};

void PrintTo(const PageCase &c, std::ostream *out)
{
    *out << c.name;
}

class BankPagePayment : public ::testing::TestWithParam<PageCase>
{
};

TEST_P(BankPagePayment, ReportsTheBankPagesOutcomeOnce)
{
    const PageCase &c = GetParam();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    const DemoRun run = runHeadlessDemo(c.arguments + QStringList { "--record", record });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.screens().contains("PaymentViewController"));
    ASSERT_TRUE(endedWithOneReport(run, c.paymentStatus, QString::fromLatin1(c.description)));
    if (c.paymentStatus == -1) {
        EXPECT_EQ(run.callbacks().front(),
            (nlohmann::ordered_json {
                { "data", { { "paymentStatus", -1 }, { "description", "Cancelled" } } } }));
    }

    // The page the customer saw, and what reached the bank: the rewritten form.
    bool bankPageShown = false;
    for (const auto &event : run.events)
        bankPageShown |= event.value("event", "") == "bankPage"
            && event.value("url", "").find("/bank/pay") != std::string::npos;
    EXPECT_TRUE(bankPageShown);
    for (const auto &request : recorded(record)) {
        if (request.value("path", "") == "/bank/pay") {
            EXPECT_NE(request.value("body", "").find("device_type=0"), std::string::npos);
        }
    }
    EXPECT_EQ(bodiesTo(record, kPayForService).size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Flows, BankPagePayment,
    ::testing::Values(PageCase { "CardApproved", cardArguments("approve"), 1, "Success" },
        PageCase { "CardDeclined", cardArguments("decline"), 2, "Fail" },
        PageCase { "CardLeftEarly", cardArguments("leave"), -1, "Cancelled" },
        PageCase { "PopularBankApproved", { "--mode", "3", "--bank", "SBIB", "--bank-page", "approve" }, 1,
            "Success" },
        PageCase { "ListedBankDeclined", { "--mode", "3", "--bank-index", "0", "--bank-page", "decline" }, 2,
            "Fail" }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(CardPayment, SendsTheCardAsTypedAndChosen)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    // A 17th digit is refused by the number field; the expiry comes from the lists.
    const DemoRun run = runHeadlessDemo(
        { "--mode", "2", "--card", "41111111111111119", "--card-name", "Asha Rao", "--month", "7", "--year",
            nextYear(), "--cvv", "4321", "--bank-page", "approve", "--record", record });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_EQ(run.paymentStatuses(), std::vector<long long> { 1 });
    const auto bodies = bodiesTo(record, kPayForService);
    ASSERT_EQ(bodies.size(), 1u);
    const nlohmann::json &account = bodies[0]["bankAccount"];
    // The record file keeps only the last four digits; the CVV (cut to three digits) is masked.
    EXPECT_EQ(account.value("cardNumber", "").substr(account.value("cardNumber", "").size() - 4), "1111");
    EXPECT_EQ(account.value("cardName", ""), "Asha Rao");
    EXPECT_EQ(account.value("cardExpiryMonth", ""), "7");
    EXPECT_EQ(account.value("cardExpiryYear", ""), nextYear().toStdString());
    EXPECT_EQ(bodies[0].value("serviceType", ""), "28");
}

TEST(CardPayment, LeavesTheCardNumberAndCvvNowhere)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString settings = dir.filePath(QStringLiteral("settings"));
    ASSERT_TRUE(QDir().mkpath(settings));
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    QProcessEnvironment verbose;
    verbose.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.debug=true"));
    const DemoRun run = runHeadlessDemo(
        cardArguments("approve") + QStringList { "--settings", settings, "--record", record }, 90000,
        verbose);
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);
    ASSERT_EQ(run.paymentStatuses(), std::vector<long long> { 1 });
    ASSERT_TRUE(run.standardError.contains(QStringLiteral("kovena")));

    // The number in any grouping, and the CVV as a number of its own.
    const QRegularExpression number(QStringLiteral("4111[- ]?1111[- ]?1111[- ]?1111"));
    // Not inside a hex checksum; record lines' receipt times and lengths are left out of the search.
    const QRegularExpression cvv(QStringLiteral("(?<![0-9A-Za-z])123(?![0-9A-Za-z])"));
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
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    const DemoRun run = runHeadlessDemo(
        { "--mode", "3", "--bank-index", "2", "--bank-page", "approve", "--record", record });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    ASSERT_EQ(run.paymentStatuses(), std::vector<long long> { 1 });
    const auto bodies = bodiesTo(record, kPayForService);
    ASSERT_EQ(bodies.size(), 1u);
    const sandbox::Sandbox reference;
    const auto banks = reference.bankList();
    ASSERT_GT(banks.size(), 2u);
    EXPECT_EQ(bodies[0].value("netbankingId", ""), std::to_string(banks[2].id));
}

TEST(NetBankingPayment, APopularBankMissingFromTheListSendsNothing)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString record = dir.filePath(QStringLiteral("requests.jsonl"));
    const DemoRun run = runHeadlessDemo({ "--mode", "3", "--token", "banks-no-popular", "--bank", "SBIB",
        "--timeout", "8", "--record", record });
    SCOPED_TRACE(run.transcript());
    expectTokenOnlyInTheFacadeLine(run);

    EXPECT_TRUE(run.exitedWith(3));
    EXPECT_TRUE(run.callbacks().empty());
    EXPECT_EQ(run.toasts(), QStringList { "Error occured" });
    EXPECT_TRUE(bodiesTo(record, kPayForService).empty());
}

} // namespace
} // namespace kovena::e2e
