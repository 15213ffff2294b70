#pragma once

#include "api/JsonValue.h"
#include "model/MappedRecord.h"
#include "model/UpiPaymentData.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace kovena {

// The reply to a UPI collect request sent to a customer's VPA: the reply envelope only (a "data"
// member is not read). Data and UpiTxnRefNumber are detailed records a caller may build itself.
class UPIResponse : public MappedRecord<UPIResponse, Dictionary::Optional>
{
public:
    class UpiTxnRefNumber;
    class Data;

    UPIResponse() = default;
    // nullptr or a value that is not an object gives a record with every field absent.
    explicit UPIResponse(const JsonValue *dictionary);

    std::optional<QString> success, responseCode, secureHash, responseMessage, csrfToken;
};

// The parts of a UPI transaction reference number. Reading never fails.
class UPIResponse::UpiTxnRefNumber : public MappedRecord<UPIResponse::UpiTxnRefNumber, Dictionary::Required>
{
public:
    UpiTxnRefNumber() = default;
    // `dictionary` must be an object; anything else is a fatal parse error.
    explicit UpiTxnRefNumber(const JsonValue &dictionary);

    std::optional<qint64> version;
    std::optional<QString> idType;
    std::optional<qint64> idValue;
    std::optional<QString> mode;
    std::optional<qint64> modeData, additionalInfo, timeStamp, checkDigit;
    std::optional<QString> prefix;
    std::optional<qint64> originalNum;
    std::optional<QString> base32Num, txnRefNum;
};

// A detailed UPI payment record. Reading is fatal when "transactionRefNumber" is not a string,
// "kovenaRefNumber" is not an integer, or "upiTxnRefNumber" is present but not an object.
class UPIResponse::Data : public UpiPaymentData<std::shared_ptr<UPIResponse::UpiTxnRefNumber>>,
                          public MappedRecord<UPIResponse::Data, Dictionary::Required>
{
public:
    Data() = default;
    // `dictionary` must be an object; anything else is a fatal parse error.
    explicit Data(const JsonValue &dictionary);
};

} // namespace kovena
