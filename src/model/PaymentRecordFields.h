#pragma once

#include <QString>

#include <optional>

namespace kovena {

// The first 25 fields of every detailed payment record, in declared order. The records disagree
// only on the kinds of the amount and the gateway reference: the status record carries the amount
// as text and the gateway reference as an integer, the UPI records the other way round.
template<class Amount, class GatewayReference> class PaymentRecordFields
{
public:
    std::optional<qint64> merchantId;
    std::optional<QString> customerMobNum, customerVpa;
    Amount requestedAmount;
    std::optional<QString> remarks, transactionRefNumber;
    std::optional<qint64> kovenaRefNumber;
    std::optional<QString> bankRefNumber;
    std::optional<qint64> requestStatus, paymentStatus;
    std::optional<QString> description, errorCode, success, userInfo;
    std::optional<qint64> requestValidity;
    std::optional<QString> requireUserDetail;
    GatewayReference paymentGatewayReferenceNumber;
    std::optional<QString> transactionType;
    std::optional<qint64> kovenaTransactionId;
    std::optional<QString> paymentRefNumber, payerName;
    std::optional<qint64> kovenaServiceId;
    std::optional<QString> transactionTime, qrString, customerEmail;
};

} // namespace kovena
