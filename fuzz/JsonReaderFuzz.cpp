// The reply reader against the JSON library's own parser on arbitrary bytes: both accept the
// same texts, and an accepted text gives the same tree, down to the kind of every number and
// the order of every object's keys.
#include "FuzzSupport.h"

#include "api/JsonReader.h"

#include <QByteArray>

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

// The library parser's depth, counting the outermost container as 1.
int depthOf(const JsonValue &value)
{
    int deepest = 0;
    if (value.is_structured())
        for (const auto &item : value)
            deepest = std::max(deepest, depthOf(item));
    return value.is_structured() ? deepest + 1 : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char *>(data), qsizetype(size));
    std::string fault;
    const std::optional<JsonValue> ours = JsonReader::read(body, fault);
    require(ours.has_value() == fault.empty(), "a fault without a refusal, or a refusal without one");

    // The library parser recurses without a limit; the reader's limit is far beyond what such
    // a small input reaches when the text is refused for depth alone.
    const JsonValue theirs = JsonValue::parse(body.constBegin(), body.constEnd(), nullptr, false);
    if (theirs.is_discarded()) {
        require(!ours, "a text the library parser refuses was accepted");
        return 0;
    }
    if (!ours) {
        require(depthOf(theirs) > JsonReader::kMaxDepth, "a text the library parser accepts was refused");
        return 0;
    }
    require(*ours == theirs, "the trees differ");
    require(ours->dump() == theirs.dump(), "the trees differ in the kind of a number or the order of keys");
    return 0;
}
