#include "model/RecordMapping.h"

#include "platform/FatalError.h"

#include <cmath>
#include <string>

namespace kovena::mapping {

std::optional<QString> toString(const JsonValue &value)
{
    if (!value.is_string())
        return std::nullopt;
    return kovena::toQString(value);
}

std::optional<double> toReal(const JsonValue &value)
{
    if (!value.is_number())
        return std::nullopt;
    return value.get<double>();
}

std::optional<JsonValue> fromString(QString text)
{
    return JsonValue(toStdString(text));
}

std::optional<JsonValue> fromInteger(qint64 value)
{
    return JsonValue(value);
}

std::optional<JsonValue> fromReal(double value)
{
    if (!std::isfinite(value))
        return std::nullopt;
    return JsonValue(value);
}

namespace {

[[noreturn]] void fail(const std::string &message)
{
    fatalError(message.c_str());
}

std::string quoted(const char *key)
{
    return std::string("\"") + key + '"';
}

// The kind of `value` for a diagnostic; never the value itself.
const char *kindOf(const JsonValue &value)
{
    switch (value.type()) {
    case JsonValue::value_t::null:
        return "null";
    case JsonValue::value_t::object:
        return "an object";
    case JsonValue::value_t::array:
        return "an array";
    case JsonValue::value_t::string:
        return "a string";
    case JsonValue::value_t::boolean:
        return "a boolean";
    default:
        return "a number";
    }
}

} // namespace

void missingKey(const char *record, const char *key)
{
    fail(std::string(record) + ": required key " + quoted(key) + " is missing");
}

void wrongKind(const char *record, const char *key, const JsonValue &value, const char *expected)
{
    fail(std::string(record) + ": " + quoted(key) + " is " + kindOf(value) + ", expected " + expected);
}

void notAnObject(const char *record, const JsonValue &value)
{
    fail(std::string(record) + ": dictionary is " + kindOf(value) + ", expected an object");
}

void elementNotAnObject(const char *record, std::size_t index, const JsonValue &value)
{
    fail(std::string(record) + ": array element " + std::to_string(index) + " is " + kindOf(value)
        + ", expected an object");
}

} // namespace kovena::mapping
