#pragma once

#include "sandbox/BankPaymentService.h"
#include "sandbox/Router.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace kovena::sandbox {

class BankCatalog;
class TransactionStore;
struct Transaction;

// One API request that passed the common checks: its bearer token and its JSON object body.
// These are all the per-request inputs by which test values choose a scenario.
struct ApiCall
{
    std::string token;
    const nlohmann::ordered_json &body;
};

// The backend's JSON endpoints: the checks every request passes first (bearer token, object
// body), the status enquiry, payment registration by service type, the UPI collect request
// and the net-banking bank list.
class BackendApi
{
public:
    using JsonHandler = std::function<nlohmann::ordered_json(const ApiCall &call)>;

    // `origin` gives "http://127.0.0.1:<port>" of the running sandbox.
    BackendApi(TransactionStore &store, BankCatalog &banks, std::function<std::string()> origin);

    void install(Router &router);
    // Registers the handler of one "serviceType" of "v1/sdk/payForService".
    void addService(const std::string &serviceType, JsonHandler handler);

    // Wraps a JSON handler with the authorisation and body checks.
    static Router::Handler jsonEndpoint(JsonHandler handler);
    // The status enquiry's answer for one transaction.
    static nlohmann::ordered_json statusReply(const Transaction &transaction);
    static nlohmann::ordered_json failure(const std::string &code, const std::string &message);
    // The failure answer when the members every payment registration shares are not valid
    // (amount, merchant reference, collector id); nullopt when they are.
    static std::optional<nlohmann::ordered_json> invalidPayment(const nlohmann::ordered_json &body);

private:
    nlohmann::ordered_json transactionStatus(const nlohmann::ordered_json &body);
    nlohmann::ordered_json payForService(const ApiCall &call);
    nlohmann::ordered_json registerUpiCollect(const nlohmann::ordered_json &body);
    nlohmann::ordered_json sendCollect(const nlohmann::ordered_json &body);
    nlohmann::ordered_json bankList(const ApiCall &call);

    TransactionStore &m_store;
    BankCatalog &m_banks;
    BankPaymentService m_bankPayments;
    std::map<std::string, JsonHandler> m_services;
};

} // namespace kovena::sandbox
