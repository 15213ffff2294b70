#include "flow/Utils.h"
#include "platform/Reachability.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;
using kovena::Utils;

namespace {

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
        { -106, "Missing SDK params,orderId is empty or missing" }, { -107, "Error" }, { 0, "Error" },
        { 4, "Error" }, { 8, "Error" }, { 10, "Error" }, { 12, "Error" }, { 13, "Error" }, { 15, "Error" },
        // Outside the mask on both sides: a shift must not wrap around onto a success bit.
        { 33, "Error" }, { 43, "Error" }, { -31, "Error" }, { -2, "Error" }, { INT32_MIN, "Error" },
        { INT32_MAX, "Error" } };
    for (const auto &[status, text] : rows)
        EXPECT_EQ(Utils::getStatusDescription(status), QString::fromUtf8(text)) << status;
}

TEST(Utils, IsConnectedToNetworkWantsReachableWithoutConnectionRequired)
{
    using namespace kovena::reachability;
    const std::pair<std::optional<std::uint32_t>, bool> rows[] = { { std::nullopt, false }, { 0u, false },
        { Reachable, true }, { Reachable | ConnectionRequired, false }, { ConnectionRequired, false },
        { Reachable | 1u | (1u << 3) | (1u << 18), true }, { ~Reachable, false }, { 0xFFFFFFFFu, false } };
    for (const auto &[flags, expected] : rows) {
        setProbe([flags] { return flags; });
        EXPECT_EQ(Utils::isConnectedToNetwork(), expected) << flags.value_or(0xDEAD);
    }
    setProbe({});
}

TEST(UtilsDeath, FatalInputs)
{
    EXPECT_DEATH(Utils::isValidAmount(std::nullopt), "");
    EXPECT_DEATH(Utils::isValidRange(std::nullopt), "");
    // Texts that are not one number, and numbers that cannot be truncated to 64 bits.
    for (const QString &text :
        { u""_s, u"abc"_s, u" 5"_s, u"5 "_s, u"1,5"_s, u"12abc"_s, u"inf"_s, u"nan"_s, u"1e30"_s })
        EXPECT_DEATH(Utils::isValidRange(text), "") << text.toStdString();
    EXPECT_DEATH(Utils::amountFormat(u"100."_s), "");
    EXPECT_DEATH(Utils::amountFormat(u"."_s), "");
}

} // namespace
