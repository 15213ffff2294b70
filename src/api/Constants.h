#pragma once

#include <QString>

namespace kovena {

// The fixed strings of the backend protocol: endpoint URLs, JSON keys, header names and
// values, reply codes, user-defaults keys and the popular-bank codes. Every value is built
// once, on first use. The endpoint URLs follow the base URL chosen with
// ApiManager::setServerUrl, so they are computed on each call.
class Constants
{
public:
    Constants() = delete;

    class ApiUrls
    {
    public:
        ApiUrls() = delete;
        static QString SERVER_URL();
        static QString PAY_FOR_SERVICE_URL();
        static QString GET_NB_BANK_LIST_URL();
        static QString URL_GET_TRANSACTION_STATUS();
        static QString URL_COLLECT_VPA();
    };

    class PG
    {
    public:
        PG() = delete;
        static const QString &PG_NETBANKING_ID();
        static const QString &PG_REQUESTED_AMOOUNT();
        static const QString &PG_MER_TXN_REF_NUM();
        static const QString &PG_BANK_ACCOUNT();
        static const QString &PG_CVV();
        static const QString &PG_SERVICE_TYPE();
        static const QString &PG_SERVICE_TYPE_VALUE();
        static const QString &PG_CARD_NUMBER();
        static const QString &PG_CARD_NAME();
        static const QString &PG_CARD_EXPIRY_MONTH();
        static const QString &PG_CARD_EXPIRY_YEAR();
        static const QString &PG_AUTHORIZATION();
        static const QString &PG_CONTENT_TYPE_VALUE();
        static const QString &PG_CONTENT_TYPE();
        static const QString &PG_SUCCESS();
        static const QString &PG_TXN_STATUS_SUCCESS();
        static const QString &VIRTUAL_ADDRESS();
        static const QString &COLLECTOR_ID();
        static const QString &MERCHANT_ACCESS_TOKEN();
        static const QString &KOVENA_REF_NUMBER();
        static const QString &CUSTOMER_MOBILE_NUM();
        static const QString &CUSTOMER_EMAIL();
        static const QString &REQUEST_ID();
        static const QString &PAYMENT_MODE();
        static const QString &RETRY();
        static const QString &PARAM_KOVENA_TXN();
        static const QString &PARAM_TXN_REF_NUM();
        static const QString &PARAM_TXN_OTP();
    };

    class BankCodes
    {
    public:
        BankCodes() = delete;
        static const QString &PNBB();
        static const QString &SBIB();
        static const QString &YESB();
        static const QString &HDFB();
        static const QString &AXIB();
        static const QString &ICICI();
    };

    class Status
    {
    public:
        Status() = delete;
    };
};

} // namespace kovena
