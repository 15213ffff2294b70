#pragma once

#include "api/JsonValue.h"
#include "model/MappedRecord.h"
#include "model/UpiPaymentData.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace kovena {

// A UPI payment status reply: the envelope and, when the reply has "data", the payment record.
// Reading is fatal when "data" is present but not an object, or is a payment record without
// its required fields.
class UPIStatus : public MappedRecord<UPIStatus, Dictionary::Optional>
{
public:
    class Data;

    UPIStatus() = default;
    // nullptr or a value that is not an object gives a record with every field absent.
    explicit UPIStatus(const JsonValue *dictionary);

    std::optional<QString> success, responseCode, secureHash;
    std::shared_ptr<Data> data;
    std::optional<QString> responseMessage, csrfToken;
};

// The payment record of a UPI status reply; its UPI transaction reference is plain text.
// Reading is fatal when "transactionRefNumber" is not a string or "kovenaRefNumber" is not an integer.
class UPIStatus::Data : public UpiPaymentData<std::optional<QString>>,
                        public MappedRecord<UPIStatus::Data, Dictionary::Required>
{
public:
    Data() = default;
    // `dictionary` must be an object; anything else is a fatal parse error.
    explicit Data(const JsonValue &dictionary);
};

} // namespace kovena
