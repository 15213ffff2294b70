// The net-banking bank list and the test tokens that choose other lists.
#include "SandboxClient.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace kovena::sandbox::test {
namespace {

using nlohmann::json;

const std::vector<std::pair<std::string, std::string>> kPopular = {
    { "SBIB", "State Bank of India" },
    { "AXIB", "Axis Bank" },
    { "HDFB", "HDFC Bank" },
    { "YESB", "Yes Bank" },
    { "PNBB", "Punjab National Bank" },
    { "ICIB", "ICICI Bank" },
};

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

class BankListTest : public SandboxTest
{
protected:
    // The list request as the library sends it: one empty-string member, pretty-printed.
    json banks(const std::string &token)
    {
        auto result = post(kBankList, "{\n  \"\" : \"\"\n}", "Bearer " + token);
        EXPECT_TRUE(result);
        if (!result)
            return nullptr;
        json reply = json::parse(result->body, nullptr, false);
        EXPECT_EQ(reply["success"], "true") << result->body;
        EXPECT_EQ(reply["responseCode"], "200NBLISTSUCC");
        EXPECT_TRUE(reply["responseMessage"].is_string());
        EXPECT_TRUE(reply["data"].is_array());
        return reply["data"];
    }

    static std::vector<std::string> codesOf(const json &list)
    {
        std::vector<std::string> codes;
        for (const json &bank : list)
            codes.push_back(bank["netbankingCodes"]);
        return codes;
    }

    static void expectAlphabetical(const json &list)
    {
        for (std::size_t i = 1; i < list.size(); ++i)
            EXPECT_LT(lower(list[i - 1]["netBankingName"]), lower(list[i]["netBankingName"])) << "at " << i;
    }
};

TEST_F(BankListTest, OrdinaryListIsAlphabeticalWithEveryPopularBankOnce)
{
    const json list = banks("MERCHANT_ACCESS_TOKEN");
    ASSERT_GE(list.size(), 30u);
    std::set<std::int64_t> ids;
    std::set<std::string> codes;
    for (const json &bank : list) {
        ASSERT_EQ(bank.size(), 3u) << bank.dump();
        ASSERT_TRUE(bank["netBankingId"].is_number_integer()) << bank.dump();
        EXPECT_FALSE(bank["netBankingName"].get<std::string>().empty());
        EXPECT_TRUE(ids.insert(bank["netBankingId"].get<std::int64_t>()).second) << bank.dump();
        EXPECT_TRUE(codes.insert(bank["netbankingCodes"].get<std::string>()).second) << bank.dump();
    }
    expectAlphabetical(list);
    for (const auto &[code, name] : kPopular) {
        auto it = std::find_if(
            list.begin(), list.end(), [&](const json &b) { return b["netbankingCodes"] == code; });
        ASSERT_NE(it, list.end()) << code;
        EXPECT_EQ((*it)["netBankingName"], name);
    }

    std::vector<Bank> expected;
    for (const json &bank : list)
        expected.push_back({ bank["netBankingId"].get<std::int64_t>(),
            bank["netBankingName"].get<std::string>(), bank["netbankingCodes"].get<std::string>() });
    EXPECT_EQ(sandbox.bankList(), expected);
}

TEST_F(BankListTest, TestTokensChooseTheListsOfTheOddPaths)
{
    const json ordinary = banks("t");
    const json duplicate = banks("banks-duplicate-code");
    const json noPopular = banks("banks-no-popular");
    EXPECT_EQ(banks("banks-empty"), json::array());

    // A second State Bank of India code, later in the list, under its own id and name.
    auto sbi = codesOf(duplicate);
    ASSERT_EQ(std::count(sbi.begin(), sbi.end(), "SBIB"), 2);
    auto first = std::find(sbi.begin(), sbi.end(), "SBIB") - sbi.begin();
    auto second = std::find(sbi.begin() + first + 1, sbi.end(), "SBIB") - sbi.begin();
    EXPECT_EQ(duplicate[first]["netBankingName"], "State Bank of India");
    EXPECT_NE(duplicate[second]["netBankingName"], duplicate[first]["netBankingName"]);
    EXPECT_NE(duplicate[second]["netBankingId"], duplicate[first]["netBankingId"]);
    EXPECT_EQ(duplicate.size(), ordinary.size() + 1);
    expectAlphabetical(duplicate);
    EXPECT_EQ(
        call(kPay, netBankingBody(duplicate[second]["netBankingId"].dump()))["responseCode"], "200MERSUCC")
        << "its banks can be paid with any token";

    ASSERT_FALSE(noPopular.empty());
    for (const std::string &code : codesOf(noPopular))
        EXPECT_TRUE(std::none_of(kPopular.begin(), kPopular.end(), [&](const auto &p) {
            return p.first == code;
        })) << code;
    expectAlphabetical(noPopular);

    for (const char *token : { "banks-empty-x", "Banks-Empty", "banks" })
        EXPECT_EQ(banks(token).size(), ordinary.size()) << token;
}

TEST_F(BankListTest, SetBankListReplacesTheOrdinaryListOnly)
{
    const std::vector<Bank> custom = { { 7, "Zeta Bank", "ZETB" }, { 3, "Alpha Bank", "ALPB" } };
    sandbox.setBankList(custom);
    EXPECT_EQ(
        banks("t"), json::parse(R"([{"netBankingId":7,"netBankingName":"Zeta Bank","netbankingCodes":"ZETB"},
                        {"netBankingId":3,"netBankingName":"Alpha Bank","netbankingCodes":"ALPB"}])"));
    EXPECT_EQ(banks("banks-empty"), json::array());
    EXPECT_FALSE(banks("banks-duplicate-code").empty());

    EXPECT_EQ(call(kPay, netBankingBody("3"))["responseCode"], "200MERSUCC");
    EXPECT_EQ(call(kPay, netBankingBody("4"))["responseCode"], "404BANKNOTFOUND");
}

} // namespace
} // namespace kovena::sandbox::test
