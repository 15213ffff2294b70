#include "RecordFixtures.h"

#include <limits>
#include <tuple>

namespace kovena::fixtures {

namespace {

constexpr qint64 int64Max = std::numeric_limits<qint64>::max();
constexpr qint64 int64Min = std::numeric_limits<qint64>::min();

const char *const statusReply = R"({
  "success": "true", "responseCode": "200TRANSRESPSUCC", "secureHash": "a41f09c2",
  "data": {
    "merchantId": 4412, "customerMobNum": "9876543210", "customerVpa": "asha.k@okbank",
    "requestedAmount": "1499.00", "remarks": "Order 7781", "transactionRefNumber": "MRC-7781",
    "kovenaRefNumber": 9223372036854775807, "bankRefNumber": "412233445566", "requestStatus": 2,
    "paymentStatus": 1, "description": "Transaction successful", "errorCode": "00", "success": "true",
    "userInfo": "asha", "requestValidity": -9223372036854775808, "requireUserDetail": "N",
    "paymentGatewayReferenceNumber": 1234567890123, "transactionType": "UPI_COLLECT",
    "kovenaTransactionId": 1714550400123, "paymentRefNumber": "PR-55", "payerName": "Asha K",
    "kovenaServiceId": 0, "transactionTime": "2024-05-01 10:00:00", "qrString": "",
    "customerEmail": "asha@example.com", "status": -1, "collectorId": "COL-88"
  },
  "responseMessage": "Paid \u20b9 1499.00", "csrfToken": "c5rf"
})";

const char *const txnRefNumber = R"({
  "version": 1, "idType": "UPI", "idValue": 1234567890123, "mode": "C", "modeData": -7,
  "additionalInfo": 9223372036854775807, "timeStamp": 1714550400000, "checkDigit": 9,
  "prefix": "KV", "originalNum": -9223372036854775808, "base32Num": "ABC234", "txnRefNum": "KV1714"
})";

const char *const bankListReply = R"({
  "success": "true", "responseCode": "200NBLIST", "secureHash": "9f0c",
  "data": [
    {"netBankingId": 9223372036854775807, "netBankingName": "State Bank", "netbankingCodes": "SBIB"},
    {"netBankingId": -1, "netBankingName": "", "netbankingCodes": "PNBB"},
    {"netBankingId": 1714550400123, "netBankingName": "Bank \u20b9 One", "netbankingCodes": ""}
  ],
  "responseMessage": "3 banks", "csrfToken": "c5rf"
})";

// The status reply's payment fields with the UPI records' kinds and their four last fields.
JsonValue upiPaymentData(const JsonValue &txnRef)
{
    JsonValue data = JsonValue::parse(statusReply)["data"];
    data["requestedAmount"] = 1499.5;
    data["paymentGatewayReferenceNumber"] = "PG-1234567890123";
    data.erase("status");
    data.erase("collectorId");
    data["upiTxnRefNumber"] = txnRef;
    data["merchantVpa"] = "shop@kbank";
    data["collectorId"] = "COL-1";
    data["status"] = 14;
    return data;
}

template<class Record> void fillEnvelope(Record &record)
{
    record.success = "true";
    record.responseCode = "200TRANSRESPSUCC";
    record.secureHash = "a41f09c2";
    record.responseMessage = QString::fromUtf8("Paid \u20b9 1499.00");
    record.csrfToken = "c5rf";
}

// The payment fields whose kinds all three payment records share.
template<class Data> void fillCommonPayment(Data &d)
{
    d.merchantId = 4412;
    d.customerMobNum = "9876543210";
    d.customerVpa = "asha.k@okbank";
    d.remarks = "Order 7781";
    d.transactionRefNumber = "MRC-7781";
    d.kovenaRefNumber = int64Max;
    d.bankRefNumber = "412233445566";
    d.requestStatus = 2;
    d.paymentStatus = 1;
    d.description = "Transaction successful";
    d.errorCode = "00";
    d.success = "true";
    d.userInfo = "asha";
    d.requestValidity = int64Min;
    d.requireUserDetail = "N";
    d.transactionType = "UPI_COLLECT";
    d.kovenaTransactionId = 1714550400123;
    d.paymentRefNumber = "PR-55";
    d.payerName = "Asha K";
    d.kovenaServiceId = 0;
    d.transactionTime = "2024-05-01 10:00:00";
    d.qrString = "";
    d.customerEmail = "asha@example.com";
}

template<class Data> void fillUpiPayment(Data &d)
{
    fillCommonPayment(d);
    d.requestedAmount = 1499.5;
    d.paymentGatewayReferenceNumber = "PG-1234567890123";
    d.merchantVpa = "shop@kbank";
    d.collectorId = "COL-1";
    d.status = 14;
}

} // namespace

JsonValue fullStatusReply()
{
    return json(statusReply);
}

// The UPI replies' envelope: the status reply's fields other than "data".
JsonValue fullUpiResponseReply()
{
    JsonValue reply = json(statusReply);
    reply.erase("data");
    return reply;
}

JsonValue fullUpiResponseData()
{
    return upiPaymentData(json(txnRefNumber));
}

JsonValue fullUpiStatusReply()
{
    JsonValue reply = json(statusReply);
    reply["data"] = upiPaymentData("UPI-REF-1"); // keeps the key's place
    return reply;
}

JsonValue fullBankListReply()
{
    return json(bankListReply);
}

std::shared_ptr<BankNB> builtBankList()
{
    auto list = std::make_shared<BankNB>();
    list->success = "true";
    list->responseCode = "200NBLIST";
    list->secureHash = "9f0c";
    list->responseMessage = "3 banks";
    list->csrfToken = "c5rf";
    const std::tuple<qint64, QString, QString> banks[] = { { int64Max, "State Bank", "SBIB" },
        { -1, "", "PNBB" }, { 1714550400123, QString::fromUtf8("Bank \u20b9 One"), "" } };
    list->data.emplace();
    for (const auto &[id, name, codes] : banks) {
        auto bank = std::make_shared<BankNB::Data>();
        bank->netBankingId = id;
        bank->netBankingName = name;
        bank->netbankingCodes = codes;
        list->data->append(bank);
    }
    return list;
}

std::shared_ptr<TransactionStatus> builtStatus()
{
    auto status = std::make_shared<TransactionStatus>();
    fillEnvelope(*status);
    auto &d = *(status->data = std::make_shared<TransactionStatus::Data>());
    fillCommonPayment(d);
    d.requestedAmount = "1499.00";
    d.paymentGatewayReferenceNumber = 1234567890123;
    d.status = -1;
    d.collectorId = "COL-88";
    return status;
}

std::shared_ptr<UPIResponse> builtUpiResponse()
{
    auto response = std::make_shared<UPIResponse>();
    fillEnvelope(*response);
    return response;
}

std::shared_ptr<UPIResponse::Data> builtUpiResponseData()
{
    auto data = std::make_shared<UPIResponse::Data>();
    fillUpiPayment(*data);
    auto &ref = *(data->upiTxnRefNumber = std::make_shared<UPIResponse::UpiTxnRefNumber>());
    ref.version = 1;
    ref.idType = "UPI";
    ref.idValue = 1234567890123;
    ref.mode = "C";
    ref.modeData = -7;
    ref.additionalInfo = int64Max;
    ref.timeStamp = 1714550400000;
    ref.checkDigit = 9;
    ref.prefix = "KV";
    ref.originalNum = int64Min;
    ref.base32Num = "ABC234";
    ref.txnRefNum = "KV1714";
    return data;
}

std::shared_ptr<UPIStatus> builtUpiStatus()
{
    auto status = std::make_shared<UPIStatus>();
    fillEnvelope(*status);
    status->data = std::make_shared<UPIStatus::Data>();
    fillUpiPayment(*status->data);
    status->data->upiTxnRefNumber = "UPI-REF-1";
    return status;
}

} // namespace kovena::fixtures
