#include "api/Constants.h"

#include "api/ServerUrl.h"

namespace kovena {

using namespace Qt::StringLiterals;

// Endpoint URLs are plain concatenations of the base URL and the endpoint path.
QString Constants::ApiUrls::SERVER_URL()
{
    return ServerUrl::current();
}

QString Constants::ApiUrls::PAY_FOR_SERVICE_URL()
{
    return SERVER_URL() + u"v1/sdk/payForService"_s;
}

QString Constants::ApiUrls::GET_NB_BANK_LIST_URL()
{
    return SERVER_URL() + u"v1/netbanking/listofbanks"_s;
}

QString Constants::ApiUrls::URL_GET_TRANSACTION_STATUS()
{
    return SERVER_URL() + u"v1/sdk/txn"_s;
}

QString Constants::ApiUrls::URL_COLLECT_VPA()
{
    return SERVER_URL() + u"v1/sdk/sendCollectOrSMS"_s;
}

const QString &Constants::PG::PG_NETBANKING_ID()
{
    static const QString value = u"netbankingId"_s;
    return value;
}

const QString &Constants::PG::PG_REQUESTED_AMOOUNT()
{
    static const QString value = u"requestedAmount"_s;
    return value;
}

const QString &Constants::PG::PG_MER_TXN_REF_NUM()
{
    static const QString value = u"merchantTransactionRefNumber"_s;
    return value;
}

const QString &Constants::PG::PG_BANK_ACCOUNT()
{
    static const QString value = u"bankAccount"_s;
    return value;
}

const QString &Constants::PG::PG_CVV()
{
    static const QString value = u"cvv"_s;
    return value;
}

const QString &Constants::PG::PG_SERVICE_TYPE()
{
    static const QString value = u"serviceType"_s;
    return value;
}

const QString &Constants::PG::PG_SERVICE_TYPE_VALUE()
{
    static const QString value = u"28"_s;
    return value;
}

const QString &Constants::PG::PG_CARD_NUMBER()
{
    static const QString value = u"cardNumber"_s;
    return value;
}

const QString &Constants::PG::PG_CARD_NAME()
{
    static const QString value = u"cardName"_s;
    return value;
}

const QString &Constants::PG::PG_CARD_EXPIRY_MONTH()
{
    static const QString value = u"cardExpiryMonth"_s;
    return value;
}

const QString &Constants::PG::PG_CARD_EXPIRY_YEAR()
{
    static const QString value = u"cardExpiryYear"_s;
    return value;
}

const QString &Constants::PG::PG_AUTHORIZATION()
{
    static const QString value = u"Authorization"_s;
    return value;
}

const QString &Constants::PG::PG_CONTENT_TYPE_VALUE()
{
    static const QString value = u"application/json;charset=UTF-8"_s;
    return value;
}

const QString &Constants::PG::PG_CONTENT_TYPE()
{
    static const QString value = u"Content-Type"_s;
    return value;
}

const QString &Constants::PG::PG_SUCCESS()
{
    static const QString value = u"200MERSUCC"_s;
    return value;
}

const QString &Constants::PG::PG_TXN_STATUS_SUCCESS()
{
    static const QString value = u"200TRANSRESPSUCC"_s;
    return value;
}

const QString &Constants::PG::VIRTUAL_ADDRESS()
{
    static const QString value = u"virtualAddress"_s;
    return value;
}

const QString &Constants::PG::COLLECTOR_ID()
{
    static const QString value = u"collectorId"_s;
    return value;
}

const QString &Constants::PG::MERCHANT_ACCESS_TOKEN()
{
    static const QString value = u"accessToken"_s;
    return value;
}

const QString &Constants::PG::KOVENA_REF_NUMBER()
{
    static const QString value = u"kovenaRefNumber"_s;
    return value;
}

const QString &Constants::PG::CUSTOMER_MOBILE_NUM()
{
    static const QString value = u"customerMobNum"_s;
    return value;
}

const QString &Constants::PG::CUSTOMER_EMAIL()
{
    static const QString value = u"customerEmail"_s;
    return value;
}

const QString &Constants::PG::REQUEST_ID()
{
    static const QString value = u"requestId"_s;
    return value;
}

const QString &Constants::PG::PAYMENT_MODE()
{
    static const QString value = u"paymentMode"_s;
    return value;
}

const QString &Constants::PG::RETRY()
{
    static const QString value = u"retry"_s;
    return value;
}

const QString &Constants::PG::PARAM_KOVENA_TXN()
{
    static const QString value = u"kovenaRefNumber"_s;
    return value;
}

const QString &Constants::PG::PARAM_TXN_REF_NUM()
{
    static const QString value = u"transactionRefNumber"_s;
    return value;
}

const QString &Constants::PG::PARAM_TXN_OTP()
{
    static const QString value = u"txnOtp"_s;
    return value;
}

const QString &Constants::BankCodes::PNBB()
{
    static const QString value = u"PNBB"_s;
    return value;
}

const QString &Constants::BankCodes::SBIB()
{
    static const QString value = u"SBIB"_s;
    return value;
}

const QString &Constants::BankCodes::YESB()
{
    static const QString value = u"YESB"_s;
    return value;
}

const QString &Constants::BankCodes::HDFB()
{
    static const QString value = u"HDFB"_s;
    return value;
}

const QString &Constants::BankCodes::AXIB()
{
    static const QString value = u"AXIB"_s;
    return value;
}

const QString &Constants::BankCodes::ICICI()
{
    static const QString value = u"ICIB"_s;
    return value;
}

} // namespace kovena
