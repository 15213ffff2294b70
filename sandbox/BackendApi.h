#pragma once

#include "sandbox/Router.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <map>
#include <string>

namespace kovena::sandbox {

class TransactionStore;
struct Transaction;

// The backend's JSON endpoints: the checks every request passes first (bearer token, object
// body), the status enquiry, payment registration by service type and the UPI collect request.
class BackendApi
{
public:
    using JsonHandler = std::function<nlohmann::ordered_json(const nlohmann::ordered_json &body)>;

    explicit BackendApi(TransactionStore &store);

    void install(Router &router);
    // Registers the handler of one "serviceType" of "v1/sdk/payForService".
    void addService(const std::string &serviceType, JsonHandler handler);

    // Wraps a JSON handler with the authorisation and body checks.
    static Router::Handler jsonEndpoint(JsonHandler handler);
    // The status enquiry's answer for one transaction.
    static nlohmann::ordered_json statusReply(const Transaction &transaction);
    static nlohmann::ordered_json failure(const std::string &code, const std::string &message);

private:
    nlohmann::ordered_json transactionStatus(const nlohmann::ordered_json &body);
    nlohmann::ordered_json payForService(const nlohmann::ordered_json &body);
    nlohmann::ordered_json registerUpiCollect(const nlohmann::ordered_json &body);
    nlohmann::ordered_json sendCollect(const nlohmann::ordered_json &body);

    TransactionStore &m_store;
    std::map<std::string, JsonHandler> m_services;
};

} // namespace kovena::sandbox
