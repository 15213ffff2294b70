#pragma once

// Field tables of the detailed payment records (TransactionStatus::Data, UPIResponse::Data,
// UPIStatus::Data), which share their first 25 fields.

#include "model/RecordMapping.h"

#include <array>
#include <cstddef>

namespace kovena::mapping {

// The fields of PaymentRecordFields in declared order; `referenceReading` applies to
// transactionRefNumber and kovenaRefNumber, which the UPI records require.
template<class R, Reading referenceReading> constexpr std::array<Field<R>, 25> paymentRecordFields()
{
    return {
        field<R, &R::merchantId>("merchantId"),
        field<R, &R::customerMobNum>("customerMobNum"),
        field<R, &R::customerVpa>("customerVpa"),
        field<R, &R::requestedAmount>("requestedAmount"),
        field<R, &R::remarks>("remarks"),
        field<R, &R::transactionRefNumber, referenceReading>("transactionRefNumber"),
        field<R, &R::kovenaRefNumber, referenceReading>("kovenaRefNumber"),
        field<R, &R::bankRefNumber>("bankRefNumber"),
        field<R, &R::requestStatus>("requestStatus"),
        field<R, &R::paymentStatus>("paymentStatus"),
        field<R, &R::description>("description"),
        field<R, &R::errorCode>("errorCode"),
        field<R, &R::success>("success"),
        field<R, &R::userInfo>("userInfo"),
        field<R, &R::requestValidity>("requestValidity"),
        field<R, &R::requireUserDetail>("requireUserDetail"),
        field<R, &R::paymentGatewayReferenceNumber>("paymentGatewayReferenceNumber"),
        field<R, &R::transactionType>("transactionType"),
        field<R, &R::kovenaTransactionId>("kovenaTransactionId"),
        field<R, &R::paymentRefNumber>("paymentRefNumber"),
        field<R, &R::payerName>("payerName"),
        field<R, &R::kovenaServiceId>("kovenaServiceId"),
        field<R, &R::transactionTime>("transactionTime"),
        field<R, &R::qrString>("qrString"),
        field<R, &R::customerEmail>("customerEmail"),
    };
}

template<class R, std::size_t n, std::size_t m>
constexpr std::array<Field<R>, n + m> concat(
    const std::array<Field<R>, n> &head, const std::array<Field<R>, m> &tail)
{
    std::array<Field<R>, n + m> all {};
    for (std::size_t i = 0; i < n; ++i)
        all[i] = head[i];
    for (std::size_t i = 0; i < m; ++i)
        all[n + i] = tail[i];
    return all;
}

// The 29 fields of the UPI payment records; they differ in how field 26 is read.
template<class R, Reading txnRefReading> constexpr std::array<Field<R>, 29> upiPaymentFields()
{
    return concat(paymentRecordFields<R, Reading::Required>(),
        std::array<Field<R>, 4> {
            field<R, &R::upiTxnRefNumber, txnRefReading>("upiTxnRefNumber"),
            field<R, &R::merchantVpa>("merchantVpa"),
            field<R, &R::collectorId>("collectorId"),
            field<R, &R::status>("status"),
        });
}

} // namespace kovena::mapping
