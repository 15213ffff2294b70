#pragma once

#include "api/JsonValue.h"

#include <QByteArray>

#include <optional>
#include <string>

namespace kovena {

// Reads a reply body into a JsonValue, as JsonValue::parse would, in one pass that builds each
// object once it is complete, and refuses input nested deeper than a reply ever is.
class JsonReader
{
public:
    JsonReader() = delete;

    // Containers may nest this deep; a deeper one is refused before its tree is built.
    static constexpr int kMaxDepth = 512;

    // The value, or nullopt with what was wrong in `fault`: the kind and position of the fault,
    // never the text of the body.
    static std::optional<JsonValue> read(const QByteArray &body, std::string &fault);
};

} // namespace kovena
