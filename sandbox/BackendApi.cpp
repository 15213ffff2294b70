#include "sandbox/BackendApi.h"

#include "sandbox/BankCatalog.h"
#include "sandbox/Sandbox.h"
#include "sandbox/TransactionStore.h"
#include "sandbox/WireText.h"

#include <nlohmann/json.hpp>

namespace kovena::sandbox {

using json = nlohmann::ordered_json;

namespace {

constexpr std::int64_t kMerchantId = 1001;
constexpr const char *kStatusOk = "200TRANSRESPSUCC";
constexpr const char *kPaymentOk = "200MERSUCC";
constexpr const char *kNotFound = "404TXNNOTFOUND";
constexpr const char *kBadRequest = "400BADREQ";

std::string errorBody(const char *text)
{
    return json { { "error", text } }.dump();
}

// A member sent as text; whole numbers are taken as their decimal text.
std::string textOf(const json &body, const char *key)
{
    auto it = body.find(key);
    if (it == body.end())
        return {};
    if (it->is_string())
        return it->get<std::string>();
    if (it->is_number_integer())
        return std::to_string(it->get<std::int64_t>());
    return {};
}

bool isNonEmptyString(const json &body, const char *key)
{
    auto it = body.find(key);
    return it != body.end() && it->is_string() && !it->get<std::string>().empty();
}

std::string bankReference(std::int64_t id)
{
    return std::to_string(300000000000 + id % 100000000000);
}

// How the status enquiry describes each kind of payment.
const char *remarksFor(const std::string &transactionType)
{
    if (transactionType == "CARD")
        return "Card payment";
    if (transactionType == "NETBANKING")
        return "Net banking payment";
    return "UPI collect request";
}

} // namespace

BackendApi::BackendApi(TransactionStore &store, BankCatalog &banks, std::function<std::string()> origin)
    : m_store(store)
    , m_banks(banks)
    , m_bankPayments(store, banks, std::move(origin))
{
    addService("0", [this](const ApiCall &call) { return registerUpiCollect(call.body); });
    addService(BankPaymentService::kServiceType,
        [this](const ApiCall &call) { return m_bankPayments.registerPayment(call.body); });
}

void BackendApi::install(Router &router)
{
    router.add("POST", "v1/sdk/txn/1/false/2",
        jsonEndpoint([this](const ApiCall &call) { return transactionStatus(call.body); }));
    router.add("POST", "v1/sdk/payForService",
        jsonEndpoint([this](const ApiCall &call) { return payForService(call); }));
    router.add("POST", "v1/sdk/sendCollectOrSMS",
        jsonEndpoint([this](const ApiCall &call) { return sendCollect(call.body); }));
    router.add("POST", "v1/netbanking/listofbanks",
        jsonEndpoint([this](const ApiCall &call) { return bankList(call); }));
}

void BackendApi::addService(const std::string &serviceType, JsonHandler handler)
{
    m_services[serviceType] = std::move(handler);
}

Router::Handler BackendApi::jsonEndpoint(JsonHandler handler)
{
    return [handler = std::move(handler)](const RecordedRequest &request) -> Reply {
        static const std::string bearer = "Bearer ";
        std::string authorization = request.header("Authorization");
        if (authorization.compare(0, bearer.size(), bearer) != 0 || authorization.size() == bearer.size())
            return { 200, errorBody("Unauthorized") };
        std::string token = authorization.substr(bearer.size());
        if (token == "expired-token")
            return { 200, errorBody("Token expired") };
        json body = json::parse(request.body, nullptr, false);
        if (body.is_discarded() || !body.is_object())
            return { 200, errorBody("Bad request") };
        const ApiCall call { std::move(token), body };
        return { 200, handler(call).dump(-1, ' ', false, json::error_handler_t::replace) };
    };
}

json BackendApi::failure(const std::string &code, const std::string &message)
{
    return { { "success", "false" }, { "responseCode", code }, { "responseMessage", message } };
}

json BackendApi::statusReply(const Transaction &t)
{
    const bool final = t.paymentStatus != 0;
    json data = {
        { "merchantId", kMerchantId },
        { "customerMobNum", t.customerMobNum },
        { "customerVpa", t.customerVpa },
        { "requestedAmount", t.amount },
        { "remarks", remarksFor(t.transactionType) },
        { "transactionRefNumber", t.merchantReference },
        { "kovenaRefNumber", t.id },
        { "bankRefNumber", final ? bankReference(t.id) : std::string() },
        { "requestStatus", t.collectSent || final ? 1 : 0 },
        { "paymentStatus", t.paymentStatus },
        { "paymentGatewayReferenceNumber", 500000000000 + t.id % 100000000000 },
        { "transactionType", t.transactionType },
        { "kovenaTransactionId", t.id },
        { "kovenaServiceId", wire::parseDecimalId(t.serviceType).value_or(0) },
        { "transactionTime", t.transactionTime },
        { "customerEmail", t.customerEmail },
        { "status", t.paymentStatus },
        { "collectorId", t.collectorId },
    };
    return {
        { "success", "true" },
        { "responseCode", kStatusOk },
        { "responseMessage", "Transaction status fetched successfully" },
        { "secureHash", wire::hexDigest(std::to_string(t.id) + ':' + std::to_string(t.paymentStatus)) },
        { "data", std::move(data) },
    };
}

json BackendApi::transactionStatus(const json &body)
{
    std::string idText = textOf(body, "kovenaRefNumber");
    std::optional<Transaction> found;
    if (!idText.empty()) {
        if (auto id = wire::parseDecimalId(idText))
            found = m_store.answerStatus(id, {});
    } else {
        found = m_store.answerStatus(std::nullopt, textOf(body, "transactionRefNumber"));
    }
    if (!found)
        return failure(kNotFound, "Transaction not found");
    return statusReply(*found);
}

json BackendApi::payForService(const ApiCall &call)
{
    auto it = m_services.find(textOf(call.body, "serviceType"));
    if (it == m_services.end())
        return failure("400SERVICETYPE", "Service type not supported");
    return it->second(call);
}

std::optional<json> BackendApi::invalidPayment(const json &body)
{
    auto amount = body.find("requestedAmount");
    if (amount == body.end() || !amount->is_string() || !wire::isDecimalAmount(amount->get<std::string>()))
        return failure(kBadRequest, "Invalid requestedAmount");
    if (!isNonEmptyString(body, "merchantTransactionRefNumber"))
        return failure(kBadRequest, "Missing merchantTransactionRefNumber");
    if (!isNonEmptyString(body, "collectorId"))
        return failure(kBadRequest, "Missing collectorId");
    return std::nullopt;
}

json BackendApi::registerUpiCollect(const json &body)
{
    if (auto invalid = invalidPayment(body))
        return *invalid;

    Transaction t;
    t.merchantReference = body["merchantTransactionRefNumber"].get<std::string>();
    t.amount = body["requestedAmount"].get<std::string>();
    t.serviceType = "0";
    t.collectorId = body["collectorId"].get<std::string>();
    t.customerMobNum = textOf(body, "customerMobNum");
    t.customerEmail = textOf(body, "customerEmail");
    t.requestId = textOf(body, "requestId");
    t.transactionTime = wire::transactionTime();
    t = m_store.create(std::move(t));

    return {
        { "success", "true" },
        { "responseCode", kPaymentOk },
        { "responseMessage", "Request registered successfully" },
        { "secureHash", wire::hexDigest("reg:" + std::to_string(t.id)) },
        { "data",
            { { "kovenaTransactionId", t.id },
                { "getRequestRefNumResponse", { { "merchantTransactionRef", t.merchantReference } } } } },
    };
}

json BackendApi::sendCollect(const json &body)
{
    auto id = wire::parseDecimalId(textOf(body, "kovenaRefNumber"));
    if (!id || !m_store.find(*id))
        return failure(kNotFound, "Transaction not found");
    std::string vpa = textOf(body, "virtualAddress");
    if (vpa.empty())
        return failure(kBadRequest, "Missing virtualAddress");

    switch (m_store.startCollect(*id, vpa, CollectScenario::forVpa(vpa))) {
    case TransactionStore::CollectOutcome::NotFound:
        return failure(kNotFound, "Transaction not found");
    case TransactionStore::CollectOutcome::Closed:
        return failure("400TXNCLOSED", "Transaction already completed");
    case TransactionStore::CollectOutcome::NotUpi:
        return failure(kBadRequest, "Not a UPI transaction");
    case TransactionStore::CollectOutcome::Sent:
        break;
    }
    return {
        { "success", "true" },
        { "responseCode", kPaymentOk },
        { "responseMessage", "Collect request sent" },
        { "secureHash", wire::hexDigest("collect:" + std::to_string(*id) + ':' + vpa) },
        { "csrfToken", wire::hexDigest("csrf:" + std::to_string(*id), 32) },
    };
}

json BackendApi::bankList(const ApiCall &call)
{
    json data = json::array();
    for (const Bank &bank : m_banks.listFor(call.token))
        data.push_back({ { "netBankingId", bank.id }, { "netBankingName", bank.name },
            { "netbankingCodes", bank.code } });
    return {
        { "success", "true" },
        { "responseCode", "200NBLISTSUCC" },
        { "responseMessage", "Bank list fetched successfully" },
        { "secureHash", wire::hexDigest("banks:" + std::to_string(data.size())) },
        { "data", std::move(data) },
    };
}

} // namespace kovena::sandbox
