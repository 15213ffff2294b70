#pragma once

#include "sandbox/Sandbox.h"

#include <mutex>
#include <optional>

namespace kovena::sandbox {

// The banks that offer net banking: the list the bank list request answers, the lists that
// documented access tokens choose instead, and the lookup of a payment's bank by its id.
class BankCatalog
{
public:
    BankCatalog();

    // A few dozen Indian banks in alphabetical order, with the sandbox's own ids and codes.
    static const std::vector<Bank> &indianBanks();

    // The list answered to a request with this access token.
    std::vector<Bank> listFor(const std::string &token) const;
    void setList(std::vector<Bank> banks);
    std::vector<Bank> list() const;

    // A bank a payment may name: one of the current list or of a test token's list.
    std::optional<Bank> find(std::int64_t id) const;

private:
    mutable std::mutex m_mutex;
    std::vector<Bank> m_banks;
};

} // namespace kovena::sandbox
