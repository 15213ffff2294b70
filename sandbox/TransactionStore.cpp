#include "sandbox/TransactionStore.h"

namespace kovena::sandbox {

void TransactionStore::put(Transaction transaction)
{
    std::lock_guard lock(m_mutex);
    transaction.sequence = ++m_sequence;
    m_transactions[transaction.id] = std::move(transaction);
}

Transaction TransactionStore::create(Transaction transaction)
{
    std::lock_guard lock(m_mutex);
    while (m_transactions.count(m_nextId))
        ++m_nextId;
    transaction.id = m_nextId++;
    transaction.sequence = ++m_sequence;
    m_transactions[transaction.id] = transaction;
    return transaction;
}

std::optional<Transaction> TransactionStore::answerStatus(
    std::optional<std::int64_t> id, const std::string &reference)
{
    std::lock_guard lock(m_mutex);
    Transaction *found = nullptr;
    if (id) {
        if (auto it = m_transactions.find(*id); it != m_transactions.end())
            found = &it->second;
    } else if (!reference.empty()) {
        for (auto &[key, transaction] : m_transactions) {
            if (transaction.merchantReference == reference
                && (!found || transaction.sequence > found->sequence))
                found = &transaction;
        }
    }
    if (!found)
        return std::nullopt;

    if (found->collectSent && found->paymentStatus == 0 && found->finalStatus) {
        if (found->pendingAnswersLeft > 0)
            --found->pendingAnswersLeft;
        else
            found->paymentStatus = *found->finalStatus;
    }
    return *found;
}

TransactionStore::CollectOutcome TransactionStore::startCollect(
    std::int64_t id, const std::string &vpa, const CollectScenario &scenario)
{
    std::lock_guard lock(m_mutex);
    auto it = m_transactions.find(id);
    if (it == m_transactions.end())
        return CollectOutcome::NotFound;
    Transaction &transaction = it->second;
    if (transaction.paymentStatus != 0)
        return CollectOutcome::Closed;
    if (transaction.transactionType != "COLLECT")
        return CollectOutcome::NotUpi;
    transaction.customerVpa = vpa;
    transaction.collectSent = true;
    transaction.pendingAnswersLeft = scenario.pendingAnswers;
    transaction.finalStatus = scenario.finalStatus;
    return CollectOutcome::Sent;
}

TransactionStore::DecideOutcome TransactionStore::decide(std::int64_t id, int paymentStatus)
{
    std::lock_guard lock(m_mutex);
    auto it = m_transactions.find(id);
    if (it == m_transactions.end() || it->second.transactionType == "COLLECT")
        return DecideOutcome::NotFound;
    if (it->second.paymentStatus != 0)
        return DecideOutcome::Closed;
    it->second.paymentStatus = paymentStatus;
    return DecideOutcome::Decided;
}

std::optional<Transaction> TransactionStore::find(std::int64_t id) const
{
    std::lock_guard lock(m_mutex);
    if (auto it = m_transactions.find(id); it != m_transactions.end())
        return it->second;
    return std::nullopt;
}

} // namespace kovena::sandbox
