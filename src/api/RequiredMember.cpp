#include "api/RequiredMember.h"

#include "platform/FatalError.h"

#include <optional>
#include <string>

namespace kovena {

namespace {

[[noreturn]] void missing(const char *reply, const char *key, const char *expected)
{
    const std::string message = std::string(reply) + ": member \"" + key + "\" is missing or not " + expected;
    fatalError(message.c_str());
}

} // namespace

QString RequiredMember::string(const JsonValue &object, const char *key, const char *reply)
{
    const JsonValue *member = findMember(object, key);
    if (!member || !member->is_string())
        missing(reply, key, "a string");
    return toQString(*member);
}

const JsonValue &RequiredMember::object(const JsonValue &object, const char *key, const char *reply)
{
    const JsonValue *member = findMember(object, key);
    if (!member || !member->is_object())
        missing(reply, key, "an object");
    return *member;
}

qint64 RequiredMember::int64(const JsonValue &object, const char *key, const char *reply)
{
    const JsonValue *member = findMember(object, key);
    const std::optional<qint64> value = member ? toInt64(*member) : std::nullopt;
    if (!value)
        missing(reply, key, "a 64-bit integer");
    return *value;
}

} // namespace kovena
