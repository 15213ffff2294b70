#pragma once

#include "api/JsonValue.h"

#include <string>

namespace kovena {

// Makes request bodies fit for diagnostics: card details and the customer's contact details
// are replaced wherever they occur, so a debug log never holds them.
class LogRedaction
{
public:
    LogRedaction() = delete;

    // A copy of `body` in which every non-empty value under a sensitive key, at any depth, is
    // the text "<redacted>" (a nested object under such a key is replaced whole).
    static JsonValue redacted(const JsonValue &body);
    static bool isSensitiveKey(const std::string &key);
};

} // namespace kovena
