#include "api/ApiManager.h"

#include "api/AccessToken.h"
#include "api/ApiRequest.h"
#include "api/Constants.h"
#include "api/ReplyHandling.h"
#include "api/ServerUrl.h"
#include "api/StoredFields.h"
#include "platform/FatalError.h"

namespace kovena {

using namespace Qt::StringLiterals;

namespace {

std::string key(const QString &name)
{
    return toStdString(name);
}

JsonValue text(const QString &value)
{
    return JsonValue(toStdString(value));
}

// An absent optional argument is sent as JSON null: the member is always there, so the
// backend can tell "not given" from a member it does not know about.
JsonValue text(const std::optional<QString> &value)
{
    return value ? text(*value) : JsonValue(nullptr);
}

template<class Callback> void requireCallback(const std::shared_ptr<Callback> &callback)
{
    if (!callback)
        fatalError("ApiManager: a request needs a callback");
}

void addCustomerFields(JsonValue &body, const CustomerFields &customer)
{
    body[key(Constants::PG::CUSTOMER_MOBILE_NUM())] = text(customer.customerMobNum);
    body[key(Constants::PG::CUSTOMER_EMAIL())] = text(customer.customerEmail);
}

} // namespace

bool ApiManager::setServerUrl(const QString &url)
{
    return ServerUrl::set(url);
}

DataTaskPtr ApiManager::getTransactionStatus(std::shared_ptr<TransactionStatusCallback> callback,
    const QString &kovenaTransactionId, const QString &transactionRefNumber)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();
    const QString url = Constants::ApiUrls::URL_GET_TRANSACTION_STATUS() + u"/1"_s + u"/false"_s + u"/2"_s;

    JsonValue body = JsonValue::object();
    body[key(Constants::PG::PARAM_KOVENA_TXN())] = text(kovenaTransactionId);
    body[key(Constants::PG::PARAM_TXN_REF_NUM())] = text(transactionRefNumber);
    body[key(Constants::PG::PARAM_TXN_OTP())] = "";

    return ApiRequest::post(
        ReplyHandling::TRANSACTION_STATUS, url, token, body, ReplyHandling::transactionStatus(callback));
}

DataTaskPtr ApiManager::payUPICollect(std::shared_ptr<UPICalback1> callback,
    const std::optional<QString> &merchantTransactionRefNumber, const QString &amount,
    const std::optional<QString> &collectorId)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();
    const CustomerFields customer = StoredFields::customer();
    const StoredRequestFields stored = StoredFields::request();

    JsonValue body = JsonValue::object();
    body[key(Constants::PG::PG_REQUESTED_AMOOUNT())] = text(amount);
    body[key(Constants::PG::PG_MER_TXN_REF_NUM())] = text(merchantTransactionRefNumber);
    body[key(Constants::PG::PG_SERVICE_TYPE())] = "0"; // UPI collect; cards and net banking use their own
    body[key(Constants::PG::COLLECTOR_ID())] = text(collectorId);
    body[key(Constants::PG::RETRY())] = stored.retry;
    body[key(Constants::PG::REQUEST_ID())] = text(stored.requestId);
    addCustomerFields(body, customer);

    return ApiRequest::post(ReplyHandling::UPI_PAYMENT, Constants::ApiUrls::PAY_FOR_SERVICE_URL(), token,
        body, ReplyHandling::upiPayment(callback));
}

DataTaskPtr ApiManager::payUPICollectByVPA(std::shared_ptr<UPICalback1> callback,
    const std::optional<QString> &kovenaTransactionId, const std::optional<QString> &transactionRefNum,
    const std::optional<QString> &amount, const std::optional<QString> &virtualAddress,
    const QString &collectorId)
{
    // The backend finds the payment by its own id; the merchant reference is not sent.
    Q_UNUSED(transactionRefNum)
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();
    const CustomerFields customer = StoredFields::customer();

    JsonValue body = JsonValue::object();
    body[key(Constants::PG::VIRTUAL_ADDRESS())] = text(virtualAddress);
    body[key(Constants::PG::PG_REQUESTED_AMOOUNT())] = text(amount);
    body[key(Constants::PG::KOVENA_REF_NUMBER())] = text(kovenaTransactionId);
    body[key(Constants::PG::COLLECTOR_ID())] = text(collectorId);
    addCustomerFields(body, customer);

    return ApiRequest::post(ReplyHandling::UPI_COLLECT, Constants::ApiUrls::URL_COLLECT_VPA(), token, body,
        ReplyHandling::upiCollect(callback));
}

DataTaskPtr ApiManager::payCard(std::shared_ptr<PaymentCallback> callback,
    const QString &merchantTransactionRefNumber, const QString &cardNumber, const QString &cardName,
    const QString &cardExpiryMonth, const QString &cardExpiryYear, const QString &cvv, const QString &amount,
    const QString &collectorId)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();
    const CustomerFields customer = StoredFields::customer();
    const StoredRequestFields stored = StoredFields::request();

    // The card details travel in their own object, the CVV beside the payment fields: the
    // backend's format.
    JsonValue bankAccount = JsonValue::object();
    bankAccount[key(Constants::PG::PG_CARD_NUMBER())] = text(cardNumber);
    bankAccount[key(Constants::PG::PG_CARD_NAME())] = text(cardName);
    bankAccount[key(Constants::PG::PG_CARD_EXPIRY_MONTH())] = text(cardExpiryMonth);
    bankAccount[key(Constants::PG::PG_CARD_EXPIRY_YEAR())] = text(cardExpiryYear);

    JsonValue body = JsonValue::object();
    body[key(Constants::PG::PG_CVV())] = text(cvv);
    body[key(Constants::PG::COLLECTOR_ID())] = text(collectorId);
    body[key(Constants::PG::PG_REQUESTED_AMOOUNT())] = text(amount);
    body[key(Constants::PG::PG_MER_TXN_REF_NUM())] = text(merchantTransactionRefNumber);
    addCustomerFields(body, customer);
    body[key(Constants::PG::PG_SERVICE_TYPE())] = text(Constants::PG::PG_SERVICE_TYPE_VALUE());
    body[key(Constants::PG::REQUEST_ID())] = text(stored.requestId);
    body[key(Constants::PG::RETRY())] = stored.retry;
    body[key(Constants::PG::PG_BANK_ACCOUNT())] = std::move(bankAccount);

    return ApiRequest::post(ReplyHandling::CARD_PAYMENT, Constants::ApiUrls::PAY_FOR_SERVICE_URL(), token,
        body, ReplyHandling::cardPayment(callback));
}

DataTaskPtr ApiManager::payNB(std::shared_ptr<PaymentCallback> callback,
    const QString &merchantTransactionRefNumber, const QString &netbankingId, const QString &amount,
    const QString &collectorId)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();
    const CustomerFields customer = StoredFields::customer();
    const StoredRequestFields stored = StoredFields::request();

    JsonValue body = JsonValue::object();
    body[key(Constants::PG::PG_SERVICE_TYPE())] = text(Constants::PG::PG_SERVICE_TYPE_VALUE());
    body[key(Constants::PG::PG_NETBANKING_ID())] = text(netbankingId);
    body[key(Constants::PG::PG_REQUESTED_AMOOUNT())] = text(amount);
    body[key(Constants::PG::PG_MER_TXN_REF_NUM())] = text(merchantTransactionRefNumber);
    body[key(Constants::PG::COLLECTOR_ID())] = text(collectorId);
    body[key(Constants::PG::REQUEST_ID())] = text(stored.requestId);
    body[key(Constants::PG::CUSTOMER_MOBILE_NUM())] = text(customer.customerMobNum);
    body[key(Constants::PG::RETRY())] = stored.retry;
    body[key(Constants::PG::CUSTOMER_EMAIL())] = text(customer.customerEmail);

    return ApiRequest::post(ReplyHandling::NET_BANKING_PAYMENT, Constants::ApiUrls::PAY_FOR_SERVICE_URL(),
        token, body, ReplyHandling::netBankingPayment(callback));
}

DataTaskPtr ApiManager::callApiNBList(std::shared_ptr<GetNBListCallback> callback)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();

    // The backend expects this one empty member; an empty object or no body is not the same request.
    JsonValue body = JsonValue::object();
    body[""] = "";

    return ApiRequest::post(ReplyHandling::BANK_LIST, Constants::ApiUrls::GET_NB_BANK_LIST_URL(), token, body,
        ReplyHandling::bankList(callback));
}

} // namespace kovena
