#pragma once

// The harness of the record targets: a record read from any JSON value, alone and through its
// list builder, written back and read again.

#include "FuzzSupport.h"

#include "api/JsonValue.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace kovena::fuzzing {

// Whether reading a record may stop the library. Lenient records never stop; records with
// strict spots stop where a required member is missing or of another kind. Either kind stops
// on anything but an object when its constructor requires one.
enum class Reading { Lenient, Strict };

// Whether two records hold the same fields that dictionaryRepresentation() writes.
template<class Record> bool sameWritten(const Record &a, const Record &b)
{
    return a == b;
}

template<class Record> std::shared_ptr<Record> build(const JsonValue &value)
{
    if constexpr (std::is_pointer_v<typename Record::Argument>)
        return Record::fromDictionary(&value);
    else
        return Record::fromDictionary(value);
}

template<class Record> constexpr bool requiresObject()
{
    return !std::is_pointer_v<typename Record::Argument>;
}

// What the record writes comes from `source`; reading it back, as a value and as JSON text,
// never stops and gives the same record and the same object again.
template<class Record> void checkWriteRead(const Record &record, const JsonValue &source)
{
    const JsonValue written = record.dictionaryRepresentation();
    require(written.is_object(), "a record was not written as an object");
    require(writtenFrom(written, source), "a record holds a value its JSON does not");

    std::shared_ptr<Record> again;
    require(
        !stops([&] { again = build<Record>(written); }), "reading what a record wrote stopped the library");
    require(again && sameWritten(*again, record), "reading what a record wrote gave another record");
    require(again->dictionaryRepresentation() == written, "a record read back writes another object");

    const JsonValue reparsed = JsonValue::parse(written.dump());
    require(reparsed == written, "a written record does not survive its JSON text");
    require(!stops([&] { again = build<Record>(reparsed); }),
        "reading a written record's text stopped the library");
    require(sameWritten(*again, record), "reading a written record's text gave another record");
}

// Reads `value` as a Record and checks it; a stop is accepted where the record's rules allow it.
template<class Record> void fuzzRecord(const JsonValue &value, Reading reading)
{
    std::shared_ptr<Record> record;
    if (stops([&] { record = build<Record>(value); })) {
        require(reading == Reading::Strict || (requiresObject<Record>() && !value.is_object()),
            "reading a record without strict spots stopped the library");
        return;
    }
    require(record != nullptr, "a record was read as nothing");
    checkWriteRead(*record, value.is_object() ? value : JsonValue::object());
}

// Builds the list of `value` (an array, or nothing) and checks each record against its element.
template<class Record> void fuzzList(const JsonValue &value, Reading reading)
{
    QList<std::shared_ptr<Record>> list;
    if (stops([&] { list = Record::modelsFromDictionaryArray(value); })) {
        const bool nonObject = value.is_array()
            && std::any_of(value.begin(), value.end(), [](const JsonValue &e) { return !e.is_object(); });
        require(reading == Reading::Strict || (requiresObject<Record>() && nonObject),
            "building a list of records without strict spots stopped the library");
        return;
    }
    require(std::size_t(list.size()) == (value.is_array() ? value.size() : 0), "not one record per element");
    for (qsizetype i = 0; i < list.size(); ++i) {
        const JsonValue &element = value[std::size_t(i)];
        require(list.at(i) != nullptr, "a list holds no record");
        checkWriteRead(*list.at(i), element.is_object() ? element : JsonValue::object());
    }
}

// Reads `value` both as one record and as a list of them.
template<class Record> void fuzzReadings(const JsonValue &value, Reading reading)
{
    fuzzRecord<Record>(value, reading);
    fuzzList<Record>(value, reading);
}

// The JSON value of the fuzzer's bytes; nothing to do when they are not JSON.
template<class Fuzz> int fuzzJson(const std::uint8_t *data, std::size_t size, Fuzz &&fuzz)
{
    static const bool initialised = (initialise(), true);
    (void)initialised;
    latestStop().clear();
    const JsonValue value = JsonValue::parse(data, data + size, nullptr, false);
    if (!value.is_discarded())
        fuzz(value);
    return 0;
}

// `value`, and the member `key` when `value` has one: a record's nested object as it comes.
inline std::vector<const JsonValue *> valueAndMember(const JsonValue &value, const char *key)
{
    std::vector<const JsonValue *> candidates { &value };
    if (const JsonValue *nested = findMember(value, key))
        candidates.push_back(nested);
    return candidates;
}

} // namespace kovena::fuzzing
