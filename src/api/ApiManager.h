#pragma once

#include "api/DataTask.h"

#include <QString>

#include <memory>
#include <optional>

namespace kovena {

class GetNBListCallback;
class PaymentCallback;
class TransactionStatusCallback;
class UPICalback1;

// The only part of the library that talks to the payment backend. Each operation builds one
// POST with a JSON body, starts it and returns the running task; the reply is reported by
// exactly one call of the callback, on the session thread. The callback is held strongly
// until then.
class ApiManager
{
public:
    ApiManager() = delete;

    static DataTaskPtr getTransactionStatus(std::shared_ptr<TransactionStatusCallback> callback,
        const QString &kovenaTransactionId, const QString &transactionRefNumber);

    static DataTaskPtr payUPICollect(std::shared_ptr<UPICalback1> callback,
        const std::optional<QString> &merchantTransactionRefNumber, const QString &amount,
        const std::optional<QString> &collectorId);

    static DataTaskPtr payUPICollectByVPA(std::shared_ptr<UPICalback1> callback,
        const std::optional<QString> &kovenaTransactionId, const std::optional<QString> &transactionRefNum,
        const std::optional<QString> &amount, const std::optional<QString> &virtualAddress,
        const QString &collectorId);

    // Registers a card payment; answers with the bank page's address, its form body and the
    // backend's transaction id, or three empty strings.
    static DataTaskPtr payCard(std::shared_ptr<PaymentCallback> callback,
        const QString &merchantTransactionRefNumber, const QString &cardNumber, const QString &cardName,
        const QString &cardExpiryMonth, const QString &cardExpiryYear, const QString &cvv,
        const QString &amount, const QString &collectorId);

    // Registers a net-banking payment with the bank `netbankingId`; answers as payCard().
    static DataTaskPtr payNB(std::shared_ptr<PaymentCallback> callback,
        const QString &merchantTransactionRefNumber, const QString &netbankingId, const QString &amount,
        const QString &collectorId);

    // The banks that offer net banking, in the backend's order; an empty list on failure.
    static DataTaskPtr callApiNBList(std::shared_ptr<GetNBListCallback> callback);

    // Points the client at another backend (a local sandbox, a staging host). Must be called
    // before the first request; returns false (and changes nothing) afterwards or when `url`
    // is not an absolute http(s) URL ending in "/KoVena/".
    static bool setServerUrl(const QString &url);
};

} // namespace kovena
