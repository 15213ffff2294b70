// The amount, range, VPA and format checks and the status texts on arbitrary text, read once
// as UTF-8 and once as raw UTF-16; the status code is the input's first four bytes.
#include "FuzzSupport.h"

#include "flow/Utils.h"

#include <cstring>
#include <optional>

using namespace kovena;
using namespace kovena::fuzzing;

namespace {

void fuzzText(const QString &text)
{
    const bool amount = mustReturn([&] { return Utils::isValidAmount(text); }, "isValidAmount stopped");
    require(!amount || !text.isEmpty(), "an empty amount is valid");
    // A text that is not a number stops the range check; anything else answers.
    bool inRange = false;
    if (!stops([&] { inRange = Utils::isValidRange(text); }))
        require(!inRange || Utils::floatValue(text).has_value(), "an amount in range that is not a number");

    const bool vpa = mustReturn([&] { return Utils::isValidVPA(text); }, "isValidVPA stopped");
    require(!vpa || text.contains(u'@'), "a VPA without an at-sign is valid");

    // Two decimals by text operations only: the text itself, one "0" more, or cut after the
    // second character that follows the point.
    QString formatted;
    if (!stops([&] { formatted = Utils::amountFormat(text); })) {
        const qsizetype point = text.indexOf(u'.');
        require(point < 0
                ? formatted == text
                : formatted == text + u'0' || (text.startsWith(formatted) && formatted.size() >= point + 3),
            "amountFormat changed more than the decimals");
    }
}

const QStringList kStatusTexts { QStringLiteral("Success"), QStringLiteral("Fail"), QStringLiteral("Pending"),
    QStringLiteral("Cancelled"), QStringLiteral("Error") };

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const bool initialised = [] {
        initialise();
        require(stops([] { Utils::isValidAmount(std::nullopt); }), "isValidAmount accepted an absent amount");
        require(stops([] { Utils::isValidRange(std::nullopt); }), "isValidRange accepted an absent amount");
        return true;
    }();
    (void)initialised;
    latestStop().clear();

    std::int32_t status = 0;
    std::memcpy(&status, data, std::min(size, sizeof status));
    const QString description
        = mustReturn([&] { return Utils::getStatusDescription(status); }, "getStatusDescription stopped");
    require(kStatusTexts.contains(description) || description.startsWith(u"Missing SDK params,"),
        "a status text outside the status table");

    fuzzText(lenientUtf8(data, size));
    fuzzText(rawUtf16(data, size));
    return 0;
}
