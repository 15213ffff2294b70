#pragma once

#include <QList>
#include <QString>

#include <memory>

namespace kovena {

class TransactionStatus;
class UPIResponse;
class BankNB;
class BankNBData;

// The callback protocols of the API client. Every request calls its callback exactly once,
// on the session thread; implementations move to the main queue themselves.

class TransactionStatusCallback
{
public:
    virtual ~TransactionStatusCallback() = default;
    virtual void getTransactionStatus(std::shared_ptr<TransactionStatus> trnasactionStatus) = 0;
};

class UPICalback1
{
public:
    virtual ~UPICalback1() = default;
    virtual void upiCallback1(const QString &kovenaTransactionId, const QString &transactionRefNum) = 0;
    virtual void upiCallback2(std::shared_ptr<UPIResponse> upiResponse) = 0;
};

class PaymentCallback
{
public:
    virtual ~PaymentCallback() = default;
    virtual void getPaymentParams(
        const QString &url, const QString &postParams, const QString &kovenaTransactionId)
        = 0;
};

class GetNBListCallback
{
public:
    virtual ~GetNBListCallback() = default;
    virtual void getNBList(QList<std::shared_ptr<BankNBData>> bankList) = 0;
};

} // namespace kovena
