#include "payment/PopularBanks.h"

#include "api/Constants.h"
#include "model/BankNBData.h"

#include <QString>

#include <array>
#include <utility>

namespace kovena {

PopularBanks findPopularBanks(const QList<std::shared_ptr<BankNBData>> &bankList)
{
    PopularBanks found;
    const std::array<std::pair<const QString &, std::shared_ptr<BankNBData> PopularBanks::*>, 6> codes { {
        { Constants::BankCodes::YESB(), &PopularBanks::yesBank },
        { Constants::BankCodes::ICICI(), &PopularBanks::iciciBank },
        { Constants::BankCodes::PNBB(), &PopularBanks::pnbBank },
        { Constants::BankCodes::HDFB(), &PopularBanks::hdfc },
        { Constants::BankCodes::AXIB(), &PopularBanks::axisBank },
        { Constants::BankCodes::SBIB(), &PopularBanks::sbi },
    } };
    for (const std::shared_ptr<BankNBData> &bank : bankList) {
        if (!bank || !bank->netbankingCodes)
            continue;
        for (const auto &[code, slot] : codes) {
            if (*bank->netbankingCodes == code) {
                found.*slot = bank;
                break;
            }
        }
    }
    return found;
}

} // namespace kovena
