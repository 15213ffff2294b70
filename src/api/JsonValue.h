#pragma once

#include <QByteArray>
#include <QString>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kovena {

// The JSON value tree that replies are parsed into and records are written to. Objects keep
// their keys in insertion order; integers are kept exactly as signed (or unsigned) 64-bit values.
using JsonValue = nlohmann::ordered_json;

// The text of a JSON string; a null QString for any other kind of value.
inline QString toQString(const JsonValue &value)
{
    if (!value.is_string())
        return QString();
    const auto &text = value.get_ref<const std::string &>();
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

// The exact signed 64-bit value of a JSON number: an integer, an unsigned value up to the signed
// maximum, or a whole-valued double inside the range. Nothing for fractions, larger magnitudes and
// every other kind (booleans are not numbers).
inline std::optional<qint64> toInt64(const JsonValue &value)
{
    switch (value.type()) {
    case JsonValue::value_t::number_integer:
        return value.get<std::int64_t>();
    case JsonValue::value_t::number_unsigned: {
        const auto unsignedValue = value.get<std::uint64_t>();
        if (unsignedValue > std::uint64_t(std::numeric_limits<qint64>::max()))
            return std::nullopt;
        return qint64(unsignedValue);
    }
    case JsonValue::value_t::number_float: {
        // [-2^63, 2^63) is exactly the range of doubles that convert without overflow.
        const double real = value.get<double>();
        constexpr double limit = 9223372036854775808.0;
        if (!std::isfinite(real) || std::trunc(real) != real || real < -limit || real >= limit)
            return std::nullopt;
        return qint64(real);
    }
    default:
        return std::nullopt;
    }
}

// A QString as UTF-8, the encoding JsonValue keeps its strings in.
inline std::string toStdString(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    return std::string(utf8.constData(), std::size_t(utf8.size()));
}

// The member `key` of `object`; nullptr when `object` is not an object or has no such key.
inline const JsonValue *findMember(const JsonValue &object, const char *key)
{
    if (!object.is_object())
        return nullptr;
    const auto it = object.find(key);
    return it == object.end() ? nullptr : &*it;
}

// Looks up several members of one object (keys are unique in it), each search starting just past
// the previous find: a record reads its members in about the order the backend sends them, so
// most lookups compare one key instead of walking the object from its start.
class MemberCursor
{
public:
    explicit MemberCursor(const JsonValue &object)
        : m_members(object.get_ref<const JsonValue::object_t &>().data())
        , m_count(object.get_ref<const JsonValue::object_t &>().size())
    { }

    const JsonValue *find(std::string_view key)
    {
        for (std::size_t step = 0, i = m_next; step < m_count; ++step, ++i) {
            if (i == m_count)
                i = 0;
            if (m_members[i].first == key) {
                m_next = i + 1;
                return &m_members[i].second;
            }
        }
        return nullptr;
    }

private:
    const JsonValue::object_t::value_type *m_members;
    std::size_t m_count;
    std::size_t m_next = 0;
};

} // namespace kovena
