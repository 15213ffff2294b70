#include "api/LogRedaction.h"

#include "api/Constants.h"

#include <QList>

#include <algorithm>
#include <string>
#include <vector>

namespace kovena {

namespace {

const std::vector<std::string> &sensitiveKeys()
{
    static const std::vector<std::string> keys = [] {
        const QList<QString> names = {
            Constants::PG::PG_BANK_ACCOUNT(),
            Constants::PG::PG_CARD_NUMBER(),
            Constants::PG::PG_CVV(),
            Constants::PG::PG_CARD_NAME(),
            Constants::PG::PG_CARD_EXPIRY_MONTH(),
            Constants::PG::PG_CARD_EXPIRY_YEAR(),
            Constants::PG::CUSTOMER_MOBILE_NUM(),
            Constants::PG::CUSTOMER_EMAIL(),
            Constants::PG::VIRTUAL_ADDRESS(),
            Constants::PG::MERCHANT_ACCESS_TOKEN(),
        };
        std::vector<std::string> out;
        for (const QString &name : names)
            out.push_back(toStdString(name));
        return out;
    }();
    return keys;
}

bool isEmptyValue(const JsonValue &value)
{
    return value.is_null() || (value.is_string() && value.get_ref<const std::string &>().empty());
}

} // namespace

bool LogRedaction::isSensitiveKey(const std::string &key)
{
    const auto &keys = sensitiveKeys();
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

JsonValue LogRedaction::redacted(const JsonValue &body)
{
    if (body.is_array()) {
        JsonValue out = JsonValue::array();
        for (const JsonValue &element : body)
            out.push_back(redacted(element));
        return out;
    }
    if (!body.is_object())
        return body;
    JsonValue out = JsonValue::object();
    for (auto it = body.begin(); it != body.end(); ++it) {
        if (isSensitiveKey(it.key()) && !isEmptyValue(it.value()))
            out[it.key()] = "<redacted>";
        else
            out[it.key()] = redacted(it.value());
    }
    return out;
}

} // namespace kovena
