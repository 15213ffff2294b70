#include "sandbox/BankCatalog.h"

#include <algorithm>
#include <array>

namespace kovena::sandbox {

namespace {

// A second bank with State Bank of India's code, listed after it: the net banking screen's
// SBI button must then pay with this one.
const Bank kCorporateSbi { 1041, "State Bank of India - Corporate", "SBIB" };

// The codes behind the net banking screen's six popular-bank buttons.
constexpr std::array<const char *, 6> kPopularCodes { "SBIB", "AXIB", "HDFB", "YESB", "PNBB", "ICIB" };

bool isPopular(const Bank &bank)
{
    return std::find(kPopularCodes.begin(), kPopularCodes.end(), bank.code) != kPopularCodes.end();
}

std::vector<Bank> withDuplicateCode()
{
    std::vector<Bank> banks = BankCatalog::indianBanks();
    auto sbi = std::find_if(banks.begin(), banks.end(), [](const Bank &b) { return b.code == "SBIB"; });
    banks.insert(sbi == banks.end() ? banks.end() : sbi + 1, kCorporateSbi);
    return banks;
}

std::vector<Bank> withoutPopular()
{
    std::vector<Bank> banks = BankCatalog::indianBanks();
    std::erase_if(banks, isPopular);
    return banks;
}

// Documented access tokens that choose another list, so that both odd paths of the net
// banking screen can be seen: a code given twice, and none of the popular codes at all.
struct TestToken
{
    const char *token;
    std::vector<Bank> (*list)();
};
const TestToken kTestTokens[] = {
    { "banks-duplicate-code", withDuplicateCode },
    { "banks-no-popular", withoutPopular },
    { "banks-empty", [] { return std::vector<Bank> {}; } },
};

} // namespace

BankCatalog::BankCatalog()
    : m_banks(indianBanks())
{ }

const std::vector<Bank> &BankCatalog::indianBanks()
{
    // Ids follow the order in which the banks joined, so they say nothing about list positions.
    // Never destroyed, like every table the server threads read: a host may end the process
    // while a server thread still runs.
    static const std::vector<Bank> &banks = *new std::vector<Bank> {
        { 1031, "Airtel Payments Bank", "AIRB" },
        { 1027, "AU Small Finance Bank", "AUSB" },
        { 1004, "Axis Bank", "AXIB" },
        { 1024, "Bandhan Bank", "BDNB" },
        { 1008, "Bank of Baroda", "BOBB" },
        { 1012, "Bank of India", "BOIB" },
        { 1019, "Bank of Maharashtra", "BOMB" },
        { 1009, "Canara Bank", "CNRB" },
        { 1014, "Central Bank of India", "CBIB" },
        { 1022, "City Union Bank", "CUBB" },
        { 1030, "CSB Bank", "CSBB" },
        { 1034, "DBS Bank India", "DBSB" },
        { 1029, "DCB Bank", "DCBB" },
        { 1033, "Dhanlaxmi Bank", "DLXB" },
        { 1035, "Equitas Small Finance Bank", "EQSB" },
        { 1016, "Federal Bank", "FDRB" },
        { 1002, "HDFC Bank", "HDFB" },
        { 1003, "ICICI Bank", "ICIB" },
        { 1011, "IDBI Bank", "IDBB" },
        { 1017, "IDFC FIRST Bank", "IDFB" },
        { 1013, "Indian Bank", "INDB" },
        { 1015, "Indian Overseas Bank", "IOBB" },
        { 1010, "IndusInd Bank", "INIB" },
        { 1021, "Jammu & Kashmir Bank", "JAKB" },
        { 1023, "Karnataka Bank", "KBLB" },
        { 1025, "Karur Vysya Bank", "KVBB" },
        { 1007, "Kotak Mahindra Bank", "KTKB" },
        { 1026, "Punjab & Sind Bank", "PSBB" },
        { 1005, "Punjab National Bank", "PNBB" },
        { 1018, "RBL Bank", "RBLB" },
        { 1036, "Saraswat Co-operative Bank", "SRCB" },
        { 1020, "South Indian Bank", "SIBB" },
        { 1028, "Standard Chartered Bank", "SCBB" },
        { 1001, "State Bank of India", "SBIB" },
        { 1032, "Tamilnad Mercantile Bank", "TMBB" },
        { 1037, "UCO Bank", "UCOB" },
        { 1006, "Union Bank of India", "UBIB" },
        { 1038, "Yes Bank", "YESB" },
    };
    return banks;
}

std::vector<Bank> BankCatalog::listFor(const std::string &token) const
{
    for (const TestToken &test : kTestTokens) {
        if (token == test.token)
            return test.list();
    }
    return list();
}

void BankCatalog::setList(std::vector<Bank> banks)
{
    std::lock_guard lock(m_mutex);
    m_banks = std::move(banks);
}

std::vector<Bank> BankCatalog::list() const
{
    std::lock_guard lock(m_mutex);
    return m_banks;
}

std::optional<Bank> BankCatalog::find(std::int64_t id) const
{
    auto byId = [id](const Bank &bank) { return bank.id == id; };
    {
        std::lock_guard lock(m_mutex);
        if (auto it = std::find_if(m_banks.begin(), m_banks.end(), byId); it != m_banks.end())
            return *it;
    }
    for (const TestToken &test : kTestTokens) {
        const std::vector<Bank> banks = test.list();
        if (auto it = std::find_if(banks.begin(), banks.end(), byId); it != banks.end())
            return *it;
    }
    return std::nullopt;
}

} // namespace kovena::sandbox
