#pragma once

#include "api/JsonValue.h"
#include "sdk/KovenaExport.h"

#include <QList>

#include <memory>
#include <type_traits>

namespace kovena {

// Whether a record's constructor accepts a missing object (nullptr or a non-object reads as a
// record with every field absent) or requires one (anything but an object is a fatal parse error).
enum class Dictionary { Optional, Required };

// Gives a record class its builders and writer, all driven by the field table in the record's own
// source file: fields are read and written by key, in declared order, and absent fields are never
// written. `Argument` is what the record's constructor takes.
// Exported so that the records a merchant receives (exported classes themselves) keep their
// builders and writer visible in a shared library; other records stay hidden through their own
// class.
template<class Derived, Dictionary kind> class KOVENA_EXPORT MappedRecord
{
public:
    using Argument = std::conditional_t<kind == Dictionary::Optional, const JsonValue *, const JsonValue &>;

    // Never null.
    static std::shared_ptr<Derived> fromDictionary(Argument dictionary);
    // One record per element, in array order. A non-object element reads as "missing": an all-absent
    // record, or a fatal parse error for records that require an object. A non-array gives an empty list.
    static QList<std::shared_ptr<Derived>> modelsFromDictionaryArray(const JsonValue &array);
    // A new object holding the present fields in declared order; nested records as their own objects.
    JsonValue dictionaryRepresentation() const;

    // Field by field; nested records by value.
    friend bool operator==(const Derived &a, const Derived &b) { return sameFields(a, b); }

private:
    static bool sameFields(const Derived &a, const Derived &b);
};

} // namespace kovena
