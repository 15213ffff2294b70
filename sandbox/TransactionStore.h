#pragma once

#include "sandbox/CollectScenario.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace kovena::sandbox {

// One transaction as the backend keeps it.
struct Transaction
{
    std::int64_t id = 0;
    std::string merchantReference;
    std::string amount;
    std::string serviceType = "0";
    std::string collectorId;
    std::string customerMobNum;
    std::string customerEmail;
    std::string customerVpa;
    std::string requestId;
    std::string transactionTime;
    std::string transactionType = "COLLECT"; // "COLLECT", "CARD" or "NETBANKING"
    std::string cardLastFour; // all that is kept of a card
    std::string bankName; // net banking: the chosen bank
    std::string bankCode;
    int paymentStatus = 0;
    bool collectSent = false;
    // While a collect plays out: status answers still pending, and the status that follows.
    int pendingAnswersLeft = 0;
    std::optional<int> finalStatus;
    std::uint64_t sequence = 0;
};

// The sandbox's transactions, safe to use from the server's threads.
class TransactionStore
{
public:
    static constexpr std::int64_t kFirstNewId = 1700000000001;

    // Adds or replaces a transaction under its own id.
    void put(Transaction transaction);
    // Stores a new pending transaction under the next free id and returns it.
    Transaction create(Transaction transaction);

    // The transaction as one status answer reports it: by id when given, else the latest with
    // the merchant reference. Each answer moves a running collect one step towards its end.
    std::optional<Transaction> answerStatus(std::optional<std::int64_t> id, const std::string &reference);

    enum class CollectOutcome { Sent, NotFound, Closed, NotUpi };
    // Attaches the VPA and starts the scenario; only a pending UPI transaction takes a collect.
    CollectOutcome startCollect(std::int64_t id, const std::string &vpa, const CollectScenario &scenario);

    enum class DecideOutcome { Decided, NotFound, Closed };
    // The customer's answer on the bank's page: sets the final status of a pending card or
    // net-banking payment.
    DecideOutcome decide(std::int64_t id, int paymentStatus);

    std::optional<Transaction> find(std::int64_t id) const;

private:
    mutable std::mutex m_mutex;
    std::map<std::int64_t, Transaction> m_transactions;
    std::int64_t m_nextId = kFirstNewId;
    std::uint64_t m_sequence = 0;
};

} // namespace kovena::sandbox
