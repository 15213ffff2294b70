#include "api/ReplyHandling.h"

#include "api/Callbacks.h"
#include "api/Constants.h"
#include "api/RequiredMember.h"
#include "api/StoredFields.h"
#include "model/BankNB.h"
#include "model/TransactionStatus.h"
#include "model/UPIResponse.h"
#include "platform/FatalError.h"

#include <utility>

namespace kovena {

namespace {

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
    std::shared_ptr<PaymentCallback> callback, PaymentData dataRead, const char *reply)
{
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getPaymentParams(QString(), QString(), QString()); };
    handlers.success = [callback = std::move(callback), dataRead, reply](const JsonValue &object) {
        answerPaymentParams(*callback, object, dataRead, reply);
    };
    return handlers;
}

} // namespace

ReplyHandlers ReplyHandling::transactionStatus(std::shared_ptr<TransactionStatusCallback> callback)
{
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getTransactionStatus(nullptr); };
    handlers.success = [callback = std::move(callback)](const JsonValue &reply) {
        std::shared_ptr<TransactionStatus> record = TransactionStatus::fromDictionary(&reply);
        if (!record || !record->responseCode
            || *record->responseCode != Constants::PG::PG_TXN_STATUS_SUCCESS()) {
            callback->getTransactionStatus(nullptr);
            return;
        }
        callback->getTransactionStatus(std::move(record));
    };
    return handlers;
}

ReplyHandlers ReplyHandling::upiPayment(std::shared_ptr<UPICalback1> callback)
{
    static constexpr const char *reply = "UPI payment reply";
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->upiCallback1(QString(), QString()); };
    handlers.success = [callback = std::move(callback)](const JsonValue &object) {
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
    return handlers;
}

ReplyHandlers ReplyHandling::upiCollect(std::shared_ptr<UPICalback1> callback)
{
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->upiCallback2(nullptr); };
    handlers.success = [callback = std::move(callback)](const JsonValue &object) {
        std::shared_ptr<UPIResponse> record = UPIResponse::fromDictionary(&object);
        if (!record || record->responseCode != Constants::PG::PG_SUCCESS()) {
            callback->upiCallback2(nullptr);
            return;
        }
        callback->upiCallback2(std::move(record));
    };
    return handlers;
}

ReplyHandlers ReplyHandling::cardPayment(std::shared_ptr<PaymentCallback> callback)
{
    return paymentParamsHandlers(std::move(callback), PaymentData::ReadBeforeCode, "card payment reply");
}

ReplyHandlers ReplyHandling::netBankingPayment(std::shared_ptr<PaymentCallback> callback)
{
    return paymentParamsHandlers(
        std::move(callback), PaymentData::ReadAfterCode, "net-banking payment reply");
}

ReplyHandlers ReplyHandling::bankList(std::shared_ptr<GetNBListCallback> callback)
{
    ReplyHandlers handlers;
    handlers.failure = [callback] { callback->getNBList({}); };
    // No reply code is checked: any reply whose "data" reads is the list.
    handlers.success = [callback = std::move(callback)](const JsonValue &object) {
        const std::shared_ptr<BankNB> record = BankNB::fromDictionary(object);
        if (!record->data)
            fatalError("bank list reply: member \"data\" is missing");
        callback->getNBList(*record->data);
    };
    return handlers;
}

} // namespace kovena
