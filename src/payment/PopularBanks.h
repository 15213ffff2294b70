#pragma once

#include <QList>

#include <memory>

namespace kovena {

class BankNBData;

// The six banks the net banking screen offers as one-tap buttons, each as found in the bank
// list, or null when the backend does not offer it.
struct PopularBanks
{
    std::shared_ptr<BankNBData> yesBank, iciciBank, pnbBank, hdfc, axisBank, sbi;
};

// Finds each popular bank by an exact, case-sensitive match of its netbankingCodes with the
// bank's code; where several banks carry one code, the last of them in `bankList` is kept.
PopularBanks findPopularBanks(const QList<std::shared_ptr<BankNBData>> &bankList);

} // namespace kovena
