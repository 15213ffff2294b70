#pragma once

#include <QList>
#include <QString>

#include <nlohmann/json.hpp>

#include <optional>

namespace kovena::demo {

// One merchant callback as the merchant window lists it. The record is the one the library
// handed over; it never holds card data (the backend's status reply has none).
struct CallbackRow
{
    QString time; // HH:mm:ss.zzz, when the library called
    QString status; // "1", "-1", ... or "" when the record has none
    QString description;
    QString transactionId;
    QString thread; // which thread called the merchant
    QString record; // the whole event, indented
};

// `event` is {"event":"onTransactionComplete","transactionStatus":{...}} as MerchantScreen
// builds it; `onGuiThread` and `threadName` describe the thread that called.
CallbackRow callbackRow(
    const nlohmann::ordered_json &event, const QString &time, bool onGuiThread, const QString &threadName);

// A bank of the backend's bank list.
struct BankEntry
{
    qint64 id = 0;
    QString name;
    QString code;
};

// The banks of a bank list reply ({"data":[{"netBankingId":..,"netBankingName":..,
// "netbankingCodes":..},...]}), in the reply's order; entries without an id or a name are left
// out. std::nullopt when the reply is not JSON or has no "data" array.
std::optional<QList<BankEntry>> parseBankList(const QByteArray &reply);

} // namespace kovena::demo
