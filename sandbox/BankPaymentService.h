#pragma once

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>

namespace kovena::sandbox {

class BankCatalog;
class TransactionStore;
struct Transaction;

// Service type "28" of the payment registration: a card payment (a "bankAccount" object and a
// top-level "cvv") or a net-banking payment (a "netbankingId"). A valid one becomes a pending
// transaction and is answered with the bank page's address and its form body. Every answer
// carries a "data" object, as the backend's card answers always do.
class BankPaymentService
{
public:
    static constexpr const char *kServiceType = "28";

    BankPaymentService(
        TransactionStore &store, const BankCatalog &banks, std::function<std::string()> origin);

    nlohmann::ordered_json registerPayment(const nlohmann::ordered_json &body);

private:
    nlohmann::ordered_json registerCard(const nlohmann::ordered_json &body);
    nlohmann::ordered_json registerNetBanking(const nlohmann::ordered_json &body);
    // Stores the pending transaction and answers with the bank page's address and form.
    nlohmann::ordered_json registered(const nlohmann::ordered_json &body, Transaction transaction);

    TransactionStore &m_store;
    const BankCatalog &m_banks;
    std::function<std::string()> m_origin;
};

} // namespace kovena::sandbox
