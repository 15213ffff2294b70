#pragma once

#include "api/JsonValue.h"
#include "model/MappedRecord.h"
#include "model/PaymentRecordFields.h"
#include "sdk/KovenaExport.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace kovena {

// The outcome of a payment: parsed from the backend's status reply, or built blank by the flow
// when it decides the outcome itself, and handed to the merchant. Reading never fails: values of
// the wrong kind leave their field absent. The five strings are also Qt properties.
class KOVENA_EXPORT TransactionStatus : public QObject,
                                        public MappedRecord<TransactionStatus, Dictionary::Optional>
{
    Q_OBJECT
    Q_PROPERTY(QString success READ successValue WRITE setSuccess)
    Q_PROPERTY(QString responseCode READ responseCodeValue WRITE setResponseCode)
    Q_PROPERTY(QString secureHash READ secureHashValue WRITE setSecureHash)
    Q_PROPERTY(QString responseMessage READ responseMessageValue WRITE setResponseMessage)
    Q_PROPERTY(QString csrfToken READ csrfTokenValue WRITE setCsrfToken)

public:
    class Data;

    TransactionStatus();
    // nullptr or a value that is not an object gives a record with every field absent.
    explicit TransactionStatus(const JsonValue *dictionary);

    // Property face: an absent field reads as a null QString; writing a null QString makes it absent.
    QString successValue() const { return success.value_or(QString()); }
    void setSuccess(const QString &value) { assign(success, value); }
    QString responseCodeValue() const { return responseCode.value_or(QString()); }
    void setResponseCode(const QString &value) { assign(responseCode, value); }
    QString secureHashValue() const { return secureHash.value_or(QString()); }
    void setSecureHash(const QString &value) { assign(secureHash, value); }
    QString responseMessageValue() const { return responseMessage.value_or(QString()); }
    void setResponseMessage(const QString &value) { assign(responseMessage, value); }
    QString csrfTokenValue() const { return csrfToken.value_or(QString()); }
    void setCsrfToken(const QString &value) { assign(csrfToken, value); }

    std::optional<QString> success, responseCode, secureHash;
    std::shared_ptr<Data> data;
    std::optional<QString> responseMessage, csrfToken;

private:
    static void assign(std::optional<QString> &field, const QString &value);
};

// The payment details of a status reply: the common payment fields, then status and collectorId.
class KOVENA_EXPORT TransactionStatus::Data
    : public PaymentRecordFields<std::optional<QString>, std::optional<qint64>>,
      public MappedRecord<TransactionStatus::Data, Dictionary::Optional>
{
public:
    Data() = default;
    // nullptr or a value that is not an object gives a record with every field absent.
    explicit Data(const JsonValue *dictionary);

    std::optional<qint64> status;
    std::optional<QString> collectorId;
};

} // namespace kovena
