// The checkout's validation rules and the helpers behind them.
#include "flow/CheckParams.h"
#include "flow/Utils.h"
#include "platform/Reachability.h"
#include "support/FatalDiagnostic.h"
#include "support/Scoped.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;
using kovena::Utils;

namespace {

using kovena::testing::fatalLine;
using Table = std::initializer_list<std::pair<QString, bool>>;

void expectTable(const std::function<bool(const QString &)> &check, Table rows)
{
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(check(text), expected) << '"' << text.toStdString() << '"';
}

TEST(Utils, IsValidAmountWantsDigitsWithAnOptionalFraction)
{
    expectTable(Utils::isValidAmount,
        { { u""_s, false }, { u"1"_s, true }, { u"0"_s, true }, { u"100.5"_s, true }, { u"100.505"_s, true },
            { u"100."_s, false }, { u".5"_s, false }, { u"-5"_s, false }, { u"+5"_s, false },
            { u" 5"_s, false }, { u"5 "_s, false }, { u"1,000"_s, false }, { u"1.2.3"_s, false },
            { u"abc"_s, false }, { u"1e5"_s, false },
            // Any Unicode decimal digit is a digit.
            { u"\u0967\u0968"_s, true } });
}

TEST(Utils, IsValidRangeRunsFromOneToBelowOneMillionInSinglePrecision)
{
    expectTable(Utils::isValidRange,
        { { u"1"_s, true }, { u"999999"_s, true }, { u"1e3"_s, true }, { u"0.99"_s, false },
            { u"0"_s, false }, { u"-5"_s, false }, { u"-1e30"_s, false }, { u"1000000"_s, false },
            // .96 is read as 999999.9375; .97 and .99 as one million.
            { u"999999.96"_s, true }, { u"999999.97"_s, false }, { u"999999.99"_s, false } });
}

TEST(Utils, IsValidVPAAppliesEveryRuleToTheHandle)
{
    expectTable(Utils::isValidVPA,
        { { u"name@okbank"_s, true }, { u""_s, false }, { u"nameokbank"_s, false }, { u"@okbank"_s, false },
            { u"name@"_s, false }, { u"name@gmail"_s, false }, { u"name@mygmailbank"_s, false },
            { u"name@hotmail"_s, false }, { u"name@yahoo"_s, false }, { u"name@bank.com"_s, false },
            { u"name@ok_bank"_s, false }, { u"name@ok.bank"_s, false },
            { u"first.last_1@okbank"_s, true }, // the first part may hold points and underscores
            { u"name@Gmail"_s, true }, { u"name@YAHOO"_s, true }, // provider tests are case-sensitive
            // Only the text between the first two at-signs is the handle.
            { u"a@bank@gmail.com"_s, true }, { u"a@@bank"_s, false }, { u"a@ok.bank@x"_s, false } });
}

TEST(Utils, AmountFormatCutsOrPadsToTwoDecimalsByText)
{
    const std::pair<QString, QString> rows[] = { { u"7.1"_s, u"7.10"_s }, { u"7.123"_s, u"7.12"_s },
        { u"7"_s, u"7"_s }, { u"12.50"_s, u"12.50"_s }, { u"12.999"_s, u"12.99"_s }, { u""_s, u""_s },
        { u"1.2.3"_s, u"1.2."_s }, { u"abc"_s, u"abc"_s },
        // Characters, not code units: a digit with a combining mark counts once.
        { u"1.2\u0301"_s, u"1.2\u03010"_s } };
    for (const auto &[in, out] : rows)
        EXPECT_EQ(Utils::amountFormat(in), out) << in.toStdString();
}

TEST(Utils, GetStatusDescriptionFollowsTheTable)
{
    const std::pair<std::int32_t, const char *> rows[] = { { 9, "Pending" }, { 14, "Pending" },
        { -1, "Cancelled" }, { 2, "Fail" }, { 1, "Success" }, { 3, "Success" }, { 11, "Success" },
        { -101, "Missing SDK params,amount nil " },
        { -102, "Missing SDK params,amount is empty or missing " },
        { -103, "Missing SDK params,amount is not valid" },
        { -104, "Missing SDK params,amount range is invalid" }, { -105, "Missing SDK params,orderId nil" },
        { -106, "Missing SDK params,orderId is empty or missing" },
        // Everything else: neighbours of the success bits, and statuses whose low bits would match
        // the success mask if the bit test shifted or wrapped.
        { 0, "Error" }, { 4, "Error" }, { 5, "Error" }, { 8, "Error" }, { 10, "Error" }, { 12, "Error" },
        { 13, "Error" }, { 15, "Error" }, { 33, "Error" }, { 35, "Error" }, { 43, "Error" },
        { 0x80B, "Error" }, { -2, "Error" }, { -31, "Error" }, { -100, "Error" }, { -107, "Error" },
        { -108, "Error" }, { INT32_MIN, "Error" }, { INT32_MIN + 1, "Error" }, { INT32_MAX, "Error" } };
    for (const auto &[status, text] : rows)
        EXPECT_EQ(Utils::getStatusDescription(status), QString::fromLatin1(text)) << status;
}

TEST(Utils, IsConnectedToNetworkWantsReachableWithoutConnectionRequired)
{
    using namespace kovena::reachability;
    const std::pair<std::optional<std::uint32_t>, bool> rows[] = { { std::nullopt, false }, { 0u, false },
        { Reachable, true }, { Reachable | ConnectionRequired, false }, { ConnectionRequired, false },
        { Reachable | 1u | (1u << 3) | (1u << 18), true }, { ~Reachable, false }, { 0xFFFFFFFFu, false } };
    for (const auto &[flags, expected] : rows) {
        const kovena::testing::ScopedReachability probe([flags] { return flags; });
        EXPECT_EQ(Utils::isConnectedToNetwork(), expected) << flags.value_or(0xDEAD);
    }
}

// The one guard behind every float-to-integer truncation: a value no 64-bit integer holds gives
// nothing, where a plain conversion would be undefined.
TEST(Utils, TruncatedInt64CutsTowardsZeroWithinTheRange)
{
    constexpr float twoTo63 = 9223372036854775808.0f;
    const std::pair<float, std::optional<std::int64_t>> rows[]
        = { { 0.0f, 0 }, { 1.99f, 1 }, { -1.99f, -1 }, { 999999.94f, 999999 }, { -twoTo63, INT64_MIN },
              { std::nextafter(twoTo63, 0.0f), 9223371487098961920 }, { twoTo63, std::nullopt },
              { std::nextafter(-twoTo63, -INFINITY), std::nullopt }, { INFINITY, std::nullopt },
              { -INFINITY, std::nullopt }, { NAN, std::nullopt } };
    for (const auto &[value, expected] : rows)
        EXPECT_EQ(Utils::truncatedInt64(value), expected) << value;
}

TEST(UtilsDeath, FatalInputs)
{
    EXPECT_DEATH(Utils::isValidAmount(std::nullopt), fatalLine("Utils::isValidAmount: amount is nil"));
    EXPECT_DEATH(Utils::isValidRange(std::nullopt), fatalLine("Utils::isValidRange: amount is nil"));
    // Texts that are not one number, and numbers that cannot be truncated to 64 bits.
    for (const QString &text : { u""_s, u"abc"_s, u" 5"_s, u"5 "_s, u"1,5"_s, u"12abc"_s })
        EXPECT_DEATH(Utils::isValidRange(text), fatalLine("Utils::isValidRange: amount is not a number"))
            << text.toStdString();
    for (const QString &text : { u"inf"_s, u"nan"_s, u"1e30"_s })
        EXPECT_DEATH(Utils::isValidRange(text), fatalLine("Utils::isValidRange: amount out of integer range"))
            << text.toStdString();
    for (const QString &text : { u"100."_s, u"."_s })
        EXPECT_DEATH(
            Utils::amountFormat(text), fatalLine("Utils::amountFormat: nothing after the decimal point"))
            << text.toStdString();
}

using Opt = std::optional<QString>;

// Records the reports in arrival order: a toast as its message, a merchant report as its
// status. With `echo` it also writes them to stderr, so a death test sees what came first.
struct RecordingTarget : kovena::CheckParamsTarget
{
    void showToast(const QString &message) override { record(message); }
    void btnBack(int status) override { record(QString::number(status)); }
    void record(const QString &event)
    {
        events << event;
        if (echo)
            std::fprintf(stderr, "[%s]\n", qPrintable(event));
    }
    bool echo = false;
    QStringList events;
};

struct Checkout
{
    Opt amount = u"100"_s;
    Opt orderNo = u"ORD-1"_s;
    Opt accessToken = u"token"_s;
    Opt collectorId = u"42"_s;
    Opt customerMobNum = u"9876543210"_s;
    Opt customerEmail = u"buyer@example.in"_s;
};

void run(kovena::CheckParamsTarget &target, const Checkout &c)
{
    kovena::checkParams(
        target, c.amount, c.orderNo, c.accessToken, c.collectorId, c.customerMobNum, c.customerEmail);
}

// Each rule's report through the facade is in the endings table and the range's bounds are the
// range rule's own; here each toast, in rule order, and the nil values the facade cannot pass.
TEST(CheckParams, ReportsEveryFailedRuleInRuleOrder)
{
    const QString range = u"Invalid amount range, -104"_s;
    const std::pair<Checkout, QString> rows[] = {
        { {}, {} },
        { { .amount = u"-5"_s }, u"No valid amount, -103, "_s + range },
        { { .accessToken = std::nullopt }, u"AccessToken Error, -105"_s },
        { { .collectorId = std::nullopt }, u"CollectorId Error, -106"_s },
        { { .customerMobNum = std::nullopt }, u"Customer Mobile Number Error, -107"_s },
        { { .customerEmail = std::nullopt }, u"Customer Email Error, -107"_s },
        { { u"0.5"_s, u""_s, u""_s, u""_s, u""_s, u""_s },
            range
                + u", OrderId missing, -106, AccessToken Error, -105, CollectorId Error, -106, "
                  "Customer Mobile Number Error, -107, Customer Email Error, -107"_s },
        // Only emptiness is checked, never the form.
        { { .orderNo = u" "_s, .customerMobNum = u"x"_s, .customerEmail = u"not an e-mail"_s }, {} },
    };
    for (const auto &[checkout, expected] : rows) {
        RecordingTarget target;
        run(target, checkout);
        EXPECT_EQ(target.events.join(u", "_s), expected) << checkout.amount.value_or(u"nil"_s).toStdString();
    }
}

TEST(CheckParamsDeath, EndsTheProcessAfterReporting)
{
    // stderr of the dying process: what was reported, in order, before it ended.
    const std::string amountNil = fatalLine("checkParams: amount is nil");
    const std::string orderNil = fatalLine("checkParams: order number is nil");
    const std::string notANumber = fatalLine("Utils::isValidRange: amount is not a number");
    // Each report is echoed as "[<what>]" on a line of its own.
    const auto reported = [](std::initializer_list<const char *> events) {
        std::string lines;
        for (const char *event : events)
            lines += std::string("\\[") + event + "\\]\n";
        return lines;
    };
    const std::pair<Checkout, std::string> rows[] = {
        { { .amount = std::nullopt }, reported({ "Amount nil", "-101" }) + amountNil },
        { { .amount = u""_s },
            reported({ "Amount missing", "-102", "No valid amount", "-103" }) + notANumber },
        { { .orderNo = std::nullopt }, reported({ "OrderId nil", "-105" }) + orderNil },
        { { .amount = u"0.99"_s, .orderNo = std::nullopt },
            reported({ "Invalid amount range", "-104", "OrderId nil", "-105" }) + orderNil },
        // Letters: the range rule cannot read them, so the process ends before its report.
        { { .amount = u"abc"_s }, reported({ "No valid amount", "-103" }) + notANumber },
    };
    for (const auto &[checkout, expected] : rows) {
        EXPECT_DEATH(
            {
                RecordingTarget target;
                target.echo = true;
                run(target, checkout);
            },
            expected);
    }
}

} // namespace
