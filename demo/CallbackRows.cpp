#include "CallbackRows.h"

using namespace Qt::StringLiterals;

namespace kovena::demo {
namespace {

QString text(const nlohmann::ordered_json &value)
{
    if (value.is_string())
        return QString::fromStdString(value.get<std::string>());
    if (value.is_number_integer())
        return QString::number(value.get<long long>());
    return {};
}

const nlohmann::ordered_json *member(const nlohmann::ordered_json &object, const char *key)
{
    if (!object.is_object())
        return nullptr;
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

} // namespace

CallbackRow callbackRow(
    const nlohmann::ordered_json &event, const QString &time, bool onGuiThread, const QString &threadName)
{
    CallbackRow row;
    row.time = time;
    if (onGuiThread)
        row.thread = u"GUI thread"_s;
    else
        row.thread = threadName.isEmpty() ? u"another thread"_s : u"%1 (not GUI)"_s.arg(threadName);
    row.record
        = QString::fromStdString(event.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));

    const nlohmann::ordered_json *status = member(event, "transactionStatus");
    const nlohmann::ordered_json *data = status ? member(*status, "data") : nullptr;
    if (!status || status->is_null()) {
        row.description = u"(no record)"_s;
        return row;
    }
    if (!data)
        return row;
    if (const auto *value = member(*data, "paymentStatus"))
        row.status = text(*value);
    if (const auto *value = member(*data, "description"))
        row.description = text(*value);
    if (const auto *value = member(*data, "kovenaTransactionId"))
        row.transactionId = text(*value);
    return row;
}

std::optional<QList<BankEntry>> parseBankList(const QByteArray &reply)
{
    const auto json = nlohmann::json::parse(reply.constBegin(), reply.constEnd(), nullptr, false);
    if (json.is_discarded() || !json.is_object())
        return std::nullopt;
    const auto data = json.find("data");
    if (data == json.end() || !data->is_array())
        return std::nullopt;
    QList<BankEntry> banks;
    for (const auto &entry : *data) {
        if (!entry.is_object())
            continue;
        const auto id = entry.find("netBankingId");
        const auto name = entry.find("netBankingName");
        const auto code = entry.find("netbankingCodes");
        if (id == entry.end() || !id->is_number_integer() || name == entry.end() || !name->is_string())
            continue;
        BankEntry bank;
        bank.id = id->get<qint64>();
        bank.name = QString::fromStdString(name->get<std::string>());
        if (code != entry.end() && code->is_string())
            bank.code = QString::fromStdString(code->get<std::string>());
        banks.append(bank);
    }
    return banks;
}

} // namespace kovena::demo
