#pragma once

// Table-driven mapping between records and JSON objects, shared by every record class. A record's
// source file describes its fields once, in declared order, as a RecordTable; the generic code here
// reads, writes and compares them. Only record sources include this header.

#include "api/JsonValue.h"
#include "model/MappedRecord.h"

#include <QList>
#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <type_traits>

namespace kovena::mapping {

// How a field treats a value of the wrong kind.
enum class Reading {
    Lenient, // missing or wrong kind leaves the field absent
    Required, // missing, null or wrong kind is a fatal parse error
    StrictWhenPresent, // missing leaves the field absent; present with the wrong kind (null too) is fatal
};

// Conversions of one JSON value; nothing when the value is not of the kind. Integers are read with
// toInt64 (JsonValue.h): booleans, fractions and numbers beyond 64 bits are not integers.
std::optional<QString> toString(const JsonValue &value);
// Any JSON number; booleans are not numbers.
std::optional<double> toReal(const JsonValue &value);
std::optional<JsonValue> fromString(QString text);
std::optional<JsonValue> fromInteger(qint64 value);
// JSON has no NaN or infinity: a non-finite real is left out as if absent rather than written as null.
std::optional<JsonValue> fromReal(double value);

// Fatal parse errors. The diagnostic names the record, the key and the kinds, never a value.
[[noreturn]] void missingKey(const char *record, const char *key);
[[noreturn]] void wrongKind(
    const char *record, const char *key, const JsonValue &value, const char *expected);
[[noreturn]] void notAnObject(const char *record, const JsonValue &value);
[[noreturn]] void elementNotAnObject(const char *record, std::size_t index, const JsonValue &value);

// What each kind of member reads from, writes to and compares with. A lenient read of a present
// value of the wrong kind yields `lenientFallback()`.
template<class Member> struct Kind;

template<class T, std::optional<T> (*convert)(const JsonValue &), std::optional<JsonValue> (*toJson)(T)>
struct ScalarKind
{
    static std::optional<T> read(const JsonValue &value) { return convert(value); }
    static std::optional<T> lenientFallback() { return std::nullopt; }
    static std::optional<JsonValue> write(const std::optional<T> &member)
    {
        return member ? toJson(*member) : std::nullopt;
    }
    static bool equal(const std::optional<T> &a, const std::optional<T> &b) { return a == b; }
};

template<> struct Kind<std::optional<QString>> : ScalarKind<QString, toString, fromString>
{
    static constexpr const char *expected = "a string";
};

template<> struct Kind<std::optional<qint64>> : ScalarKind<qint64, toInt64, fromInteger>
{
    static constexpr const char *expected = "an integer within 64 bits";
};

template<> struct Kind<std::optional<double>> : ScalarKind<double, toReal, fromReal>
{
    static constexpr const char *expected = "a number";
};

template<class Nested> std::shared_ptr<Nested> buildFromObject(const JsonValue &object)
{
    if constexpr (std::is_pointer_v<typename Nested::Argument>)
        return Nested::fromDictionary(&object);
    else
        return Nested::fromDictionary(object);
}

// A nested record; a lenient read of a non-object gives a record with every field absent.
template<class Nested> struct Kind<std::shared_ptr<Nested>>
{
    static constexpr const char *expected = "an object";
    static std::shared_ptr<Nested> read(const JsonValue &value)
    {
        return value.is_object() ? buildFromObject<Nested>(value) : nullptr;
    }
    static std::shared_ptr<Nested> lenientFallback() { return std::make_shared<Nested>(); }
    static std::optional<JsonValue> write(const std::shared_ptr<Nested> &member)
    {
        return member ? std::optional(member->dictionaryRepresentation()) : std::nullopt;
    }
    static bool equal(const std::shared_ptr<Nested> &a, const std::shared_ptr<Nested> &b)
    {
        return a == b || (a && b && *a == *b);
    }
};

// A list of nested records, built by the element record's own list builder; a lenient read of a
// non-array gives an empty list, which is distinct from an absent one.
template<class Nested> struct Kind<std::optional<QList<std::shared_ptr<Nested>>>>
{
    using Member = std::optional<QList<std::shared_ptr<Nested>>>;
    static constexpr const char *expected = "an array";
    static Member read(const JsonValue &value)
    {
        return value.is_array() ? Member(Nested::modelsFromDictionaryArray(value)) : std::nullopt;
    }
    static Member lenientFallback() { return QList<std::shared_ptr<Nested>>(); }
    static std::optional<JsonValue> write(const Member &member)
    {
        if (!member)
            return std::nullopt;
        JsonValue array = JsonValue::array();
        for (const auto &element : *member)
            array.push_back(element ? element->dictionaryRepresentation() : JsonValue::object());
        return array;
    }
    static bool equal(const Member &a, const Member &b)
    {
        if (!a || !b)
            return !a && !b;
        if (a->size() != b->size())
            return false;
        for (qsizetype i = 0; i < a->size(); ++i) {
            if (!Kind<std::shared_ptr<Nested>>::equal(a->at(i), b->at(i)))
                return false;
        }
        return true;
    }
};

// One field of Record: its key and the generic operations on its member.
template<class Record> struct Field
{
    const char *key;
    // `value` is nullptr when the key is missing.
    void (*read)(Record &record, const JsonValue *value, const char *recordName, const char *key);
    // Adds the member under `key` when present; nullptr for a field that is read but never written.
    void (*write)(const Record &record, JsonValue &object, const char *key);
    bool (*equal)(const Record &a, const Record &b);
};

template<class Record, auto member>
using MemberType = std::remove_cvref_t<decltype(std::declval<Record &>().*member)>;

template<class Record, auto member, Reading reading>
void readMember(Record &record, const JsonValue *value, const char *recordName, const char *key)
{
    using K = Kind<MemberType<Record, member>>;
    auto &target = record.*member;
    if (!value) {
        if constexpr (reading == Reading::Required)
            missingKey(recordName, key);
        target = {};
        return;
    }
    target = K::read(*value);
    if (target)
        return;
    if constexpr (reading == Reading::Lenient)
        target = K::lenientFallback();
    else
        wrongKind(recordName, key, *value, K::expected);
}

template<class Record, auto member> void writeMember(const Record &record, JsonValue &object, const char *key)
{
    if (auto value = Kind<MemberType<Record, member>>::write(record.*member))
        object[key] = std::move(*value);
}

template<class Record, auto member> bool equalMember(const Record &a, const Record &b)
{
    return Kind<MemberType<Record, member>>::equal(a.*member, b.*member);
}

// The descriptor of `member`, read with `reading` and written back.
template<class Record, auto member, Reading reading = Reading::Lenient>
constexpr Field<Record> field(const char *key)
{
    return { key, &readMember<Record, member, reading>, &writeMember<Record, member>,
        &equalMember<Record, member> };
}

// The descriptor of a member that is read but deliberately left out of dictionaryRepresentation().
template<class Record, auto member, Reading reading = Reading::Lenient>
constexpr Field<Record> readOnlyField(const char *key)
{
    return { key, &readMember<Record, member, reading>, nullptr, &equalMember<Record, member> };
}

// A record's name (for diagnostics) and its fields in declared order. Each record's source file
// specialises `table<Record>()`.
template<class Record> struct RecordTable
{
    const char *name;
    std::span<const Field<Record>> fields;
};

template<class Record> const RecordTable<Record> &table();

template<class Record> void readFields(Record &record, const JsonValue &object)
{
    const RecordTable<Record> &t = table<Record>();
    MemberCursor members(object);
    for (const Field<Record> &f : t.fields)
        f.read(record, members.find(f.key), t.name, f.key);
}

// Fills `record` from an optional object: nullptr or a non-object leaves every field absent.
template<class Record> void readOptional(Record &record, const JsonValue *dictionary)
{
    if (dictionary && dictionary->is_object())
        readFields(record, *dictionary);
}

// Fills `record` from an object that must be there.
template<class Record> void readRequired(Record &record, const JsonValue &dictionary)
{
    if (!dictionary.is_object())
        notAnObject(table<Record>().name, dictionary);
    readFields(record, dictionary);
}

template<class Record> bool equalFields(const Record &a, const Record &b)
{
    for (const Field<Record> &f : table<Record>().fields) {
        if (!f.equal(a, b))
            return false;
    }
    return true;
}

} // namespace kovena::mapping

namespace kovena {

template<class Derived, Dictionary kind>
std::shared_ptr<Derived> MappedRecord<Derived, kind>::fromDictionary(Argument dictionary)
{
    return std::make_shared<Derived>(dictionary);
}

template<class Derived, Dictionary kind>
QList<std::shared_ptr<Derived>> MappedRecord<Derived, kind>::modelsFromDictionaryArray(const JsonValue &array)
{
    QList<std::shared_ptr<Derived>> models;
    if (!array.is_array())
        return models;
    models.reserve(qsizetype(array.size()));
    for (std::size_t i = 0; i < array.size(); ++i) {
        const JsonValue &element = array[i];
        if constexpr (kind == Dictionary::Optional) {
            models.append(std::make_shared<Derived>(element.is_object() ? &element : nullptr));
        } else {
            if (!element.is_object())
                mapping::elementNotAnObject(mapping::table<Derived>().name, i, element);
            models.append(std::make_shared<Derived>(element));
        }
    }
    return models;
}

template<class Derived, Dictionary kind>
JsonValue MappedRecord<Derived, kind>::dictionaryRepresentation() const
{
    const Derived &self = static_cast<const Derived &>(*this);
    JsonValue object = JsonValue::object();
    for (const mapping::Field<Derived> &f : mapping::table<Derived>().fields) {
        if (f.write)
            f.write(self, object, f.key);
    }
    return object;
}

template<class Derived, Dictionary kind>
bool MappedRecord<Derived, kind>::sameFields(const Derived &a, const Derived &b)
{
    return mapping::equalFields(a, b);
}

} // namespace kovena
