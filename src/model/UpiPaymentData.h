#pragma once

#include "model/PaymentRecordFields.h"

#include <QString>

#include <optional>

namespace kovena {

// The fields of a detailed UPI payment record, shared by UPIResponse::Data and UPIStatus::Data,
// which differ only in how they carry the UPI transaction reference (`TxnRef`).
// transactionRefNumber and kovenaRefNumber are required: reading a record without them is fatal.
template<class TxnRef>
class UpiPaymentData : public PaymentRecordFields<std::optional<double>, std::optional<QString>>
{
public:
    TxnRef upiTxnRefNumber;
    std::optional<QString> merchantVpa, collectorId;
    std::optional<qint64> status;
};

} // namespace kovena
