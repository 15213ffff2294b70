#include "api/ApiManager.h"

#include "api/AccessToken.h"
#include "api/ApiRequest.h"
#include "api/Callbacks.h"
#include "api/Constants.h"
#include "api/RequiredMember.h"
#include "api/ServerUrl.h"
#include "api/StoredFields.h"
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

} // namespace kovena
