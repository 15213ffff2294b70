#pragma once

#include "api/JsonValue.h"

#include <QString>

namespace kovena {

// Forced reads of reply members that an operation's success handling cannot do without.
// A missing member or one of another kind is fatal; the diagnostic names the reply and the
// key, never a value.
class RequiredMember
{
public:
    RequiredMember() = delete;

    static QString string(const JsonValue &object, const char *key, const char *reply);
    static const JsonValue &object(const JsonValue &object, const char *key, const char *reply);
    // A JSON number with an exact signed 64-bit value: an integer, an unsigned value up to the
    // signed maximum, or a whole-valued double inside the range. Booleans are not numbers.
    static qint64 int64(const JsonValue &object, const char *key, const char *reply);
};

} // namespace kovena
