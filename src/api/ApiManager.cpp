#include "api/ApiManager.h"

#include "api/AccessToken.h"
#include "api/ApiRequest.h"
#include "api/Callbacks.h"
#include "api/Constants.h"
#include "api/RequiredMember.h"
#include "api/ServerUrl.h"
#include "api/StoredFields.h"
#include "model/BankNB.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
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

// Where a card or net-banking reply's "data" is read: a card reply must carry it even when it
// declines, a net-banking reply only once it succeeds.
enum class PaymentData { ReadBeforeCode, ReadAfterCode };

// The card and net-banking replies: the bank page's address and form body, and the backend's
// transaction id, or three empty strings for a declined payment.
void answerPaymentParams(
    PaymentCallback &callback, const JsonValue &object, PaymentData dataRead, const char *reply)
{
    const QString responseCode = RequiredMember::string(object, "responseCode", reply);
    const JsonValue *data
        = dataRead == PaymentData::ReadBeforeCode ? &RequiredMember::object(object, "data", reply) : nullptr;
    if (responseCode != Constants::PG::PG_SUCCESS()) {
        callback.getPaymentParams(QString(), QString(), QString());
        return;
    }
    if (!data)
        data = &RequiredMember::object(object, "data", reply);
    // The payment is registered: any later payment request of this checkout is a retry.
    StoredFields::markRetry();
    const JsonValue &paymentData = RequiredMember::object(*data, "paymentData", reply);
    const qint64 kovenaTransactionId = RequiredMember::int64(*data, "kovenaTransactionId", reply);
    const QString url = RequiredMember::string(paymentData, "url", reply);
    const QString postParams = RequiredMember::string(paymentData, "data", reply);
    callback.getPaymentParams(url, postParams, QString::number(kovenaTransactionId));
}

ReplyHandlers paymentParamsHandlers(
    const std::shared_ptr<PaymentCallback> &callback, PaymentData dataRead, const char *reply)
{
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getPaymentParams(QString(), QString(), QString()); };
    handlers.success = [callback, dataRead, reply](const JsonValue &object) {
        answerPaymentParams(*callback, object, dataRead, reply);
    };
    return handlers;
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

    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getTransactionStatus(nullptr); };
    handlers.success = [callback](const JsonValue &reply) {
        std::shared_ptr<TransactionStatus> record = TransactionStatus::fromDictionary(&reply);
        if (!record || !record->responseCode
            || *record->responseCode != Constants::PG::PG_TXN_STATUS_SUCCESS()) {
            callback->getTransactionStatus(nullptr);
            return;
        }
        callback->getTransactionStatus(std::move(record));
    };
    return ApiRequest::post("transaction status", url, token, body, std::move(handlers));
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

    static constexpr const char *reply = "UPI payment reply";
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->upiCallback1(QString(), QString()); };
    handlers.success = [callback](const JsonValue &object) {
        const QString responseCode = RequiredMember::string(object, "responseCode", reply);
        if (responseCode != Constants::PG::PG_SUCCESS()) {
            callback->upiCallback1(QString(), QString());
            return;
        }
        const JsonValue &data = RequiredMember::object(object, "data", reply);
        // The payment is registered: any later payment request of this checkout is a retry.
        StoredFields::markRetry();
        const JsonValue &refNumResponse = RequiredMember::object(data, "getRequestRefNumResponse", reply);
        const qint64 kovenaTransactionId = RequiredMember::int64(data, "kovenaTransactionId", reply);
        const QString merchantTransactionRef
            = RequiredMember::string(refNumResponse, "merchantTransactionRef", reply);
        callback->upiCallback1(QString::number(kovenaTransactionId), merchantTransactionRef);
    };
    return ApiRequest::post(
        "UPI payment", Constants::ApiUrls::PAY_FOR_SERVICE_URL(), token, body, std::move(handlers));
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

    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->upiCallback2(nullptr); };
    handlers.success = [callback](const JsonValue &object) {
        std::shared_ptr<UPIResponse> record = UPIResponse::fromDictionary(&object);
        if (!record || record->responseCode != Constants::PG::PG_SUCCESS()) {
            callback->upiCallback2(nullptr);
            return;
        }
        callback->upiCallback2(std::move(record));
    };
    return ApiRequest::post(
        "UPI collect request", Constants::ApiUrls::URL_COLLECT_VPA(), token, body, std::move(handlers));
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

    return ApiRequest::post("card payment", Constants::ApiUrls::PAY_FOR_SERVICE_URL(), token, body,
        paymentParamsHandlers(callback, PaymentData::ReadBeforeCode, "card payment reply"));
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

    return ApiRequest::post("net-banking payment", Constants::ApiUrls::PAY_FOR_SERVICE_URL(), token, body,
        paymentParamsHandlers(callback, PaymentData::ReadAfterCode, "net-banking payment reply"));
}

DataTaskPtr ApiManager::callApiNBList(std::shared_ptr<GetNBListCallback> callback)
{
    requireCallback(callback);
    ServerUrl::lockForRequest();
    const QString token = AccessToken::refresh();

    // The backend expects this one empty member; an empty object or no body is not the same request.
    JsonValue body = JsonValue::object();
    body[""] = "";

    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getNBList({}); };
    // No reply code is checked: any reply whose "data" reads is the list.
    handlers.success = [callback](const JsonValue &object) {
        const std::shared_ptr<BankNB> record = BankNB::fromDictionary(object);
        if (!record->data)
            fatalError("bank list reply: member \"data\" is missing");
        callback->getNBList(*record->data);
    };
    return ApiRequest::post(
        "bank list", Constants::ApiUrls::GET_NB_BANK_LIST_URL(), token, body, std::move(handlers));
}

} // namespace kovena
