#include "sandbox/BankPaymentService.h"

#include "sandbox/BackendApi.h"
#include "sandbox/BankCatalog.h"
#include "sandbox/BankForm.h"
#include "sandbox/CardCheck.h"
#include "sandbox/TransactionStore.h"
#include "sandbox/WireText.h"

#include <nlohmann/json.hpp>

namespace kovena::sandbox {

using json = nlohmann::ordered_json;

namespace {

constexpr const char *kBadRequest = "400BADREQ";

json withData(json reply)
{
    reply["data"] = json::object();
    return reply;
}

json failure(const std::string &code, const std::string &message)
{
    return withData(BackendApi::failure(code, message));
}

std::string stringMember(const json &object, const char *key)
{
    auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get<std::string>() : std::string();
}

} // namespace

BankPaymentService::BankPaymentService(
    TransactionStore &store, const BankCatalog &banks, std::function<std::string()> origin)
    : m_store(store)
    , m_banks(banks)
    , m_origin(std::move(origin))
{ }

json BankPaymentService::registerPayment(const json &body)
{
    if (auto invalid = BackendApi::invalidPayment(body))
        return withData(*invalid);
    const bool card = body.contains("bankAccount");
    const bool netBanking = body.contains("netbankingId");
    if (card == netBanking)
        return failure(kBadRequest,
            card ? "Give either bankAccount or netbankingId, not both"
                 : "Missing bankAccount or netbankingId");
    return card ? registerCard(body) : registerNetBanking(body);
}

json BankPaymentService::registerCard(const json &body)
{
    const json &account = body["bankAccount"];
    if (!account.is_object())
        return failure(kBadRequest, "Invalid bankAccount");
    // The card lives in these locals for the length of the request only.
    const CardDetails card { stringMember(account, "cardNumber"), stringMember(account, "cardName"),
        stringMember(account, "cardExpiryMonth"), stringMember(account, "cardExpiryYear"),
        stringMember(body, "cvv") };
    if (auto refusal = CardCheck::refusal(card, CardCheck::currentMonth()))
        return failure(refusal->code, refusal->message);

    Transaction t;
    t.transactionType = "CARD";
    t.cardLastFour = card.number.substr(card.number.size() - 4);
    return registered(body, std::move(t));
}

json BankPaymentService::registerNetBanking(const json &body)
{
    const json &member = body["netbankingId"];
    auto id = member.is_string()     ? wire::parseDecimalId(member.get<std::string>())
        : member.is_number_integer() ? std::optional(member.get<std::int64_t>())
                                     : std::nullopt;
    if (!id)
        return failure(kBadRequest, "Invalid netbankingId");
    auto bank = m_banks.find(*id);
    if (!bank)
        return failure("404BANKNOTFOUND", "Bank not found");

    Transaction t;
    t.transactionType = "NETBANKING";
    t.bankName = bank->name;
    t.bankCode = bank->code;
    return registered(body, std::move(t));
}

json BankPaymentService::registered(const json &body, Transaction t)
{
    t.serviceType = kServiceType;
    t.merchantReference = body["merchantTransactionRefNumber"].get<std::string>();
    t.amount = body["requestedAmount"].get<std::string>();
    t.collectorId = body["collectorId"].get<std::string>();
    t.customerMobNum = stringMember(body, "customerMobNum");
    t.customerEmail = stringMember(body, "customerEmail");
    t.requestId = stringMember(body, "requestId");
    t.transactionTime = wire::transactionTime();
    t = m_store.create(std::move(t));

    BankForm form;
    form.kovenaTransactionId = std::to_string(t.id);
    form.amount = t.amount;
    form.merchantReference = t.merchantReference;
    form.channel = t.transactionType == "CARD" ? "card" : "netbanking";
    form.bankCode = t.bankCode;
    return {
        { "success", "true" },
        { "responseCode", "200MERSUCC" },
        { "responseMessage", "Request registered successfully" },
        { "secureHash", wire::hexDigest("reg:" + std::to_string(t.id)) },
        { "data",
            { { "kovenaTransactionId", t.id },
                { "paymentData", { { "url", m_origin() + "/bank/pay" }, { "data", form.encode() } } } } },
    };
}

} // namespace kovena::sandbox
