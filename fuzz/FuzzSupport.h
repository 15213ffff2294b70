#pragma once

// What every fuzz target shares: how an intended stop of the library is told apart from a
// crash, how findings are raised, how text is made from the fuzzer's bytes and how the
// library's diagnostics are caught instead of printed.

#include "api/JsonValue.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kovena::fuzzing {

// What fatalError throws in the fuzz targets instead of aborting (FatalErrorForFuzzing.cpp).
// Deliberately not a std::exception, so that no catch in the library can swallow it: only the
// targets catch it, and any other way out of the library still crashes the fuzzer.
struct ExpectedStop
{
    std::string what;
};

// The diagnostic of the latest stop, which a finding quotes to tell which rule stopped.
std::string &latestStop();

// Runs `step`; true when it ended in fatalError, false when it returned.
template<class Step> bool stops(Step &&step)
{
    try {
        std::forward<Step>(step)();
        return false;
    } catch (const ExpectedStop &stop) {
        latestStop() = stop.what;
        return true;
    }
}

// Reports a broken expectation and aborts, which libFuzzer records as a crash with its input.
[[noreturn]] void finding(const std::string &what);
inline void require(bool holds, const char *what)
{
    if (!holds)
        finding(what);
}

// Runs `operation`, which must never stop the library, and returns its result; a stop is
// reported as `what`.
template<class Operation> auto mustReturn(Operation &&operation, const char *what)
{
    decltype(operation()) result {};
    if (stops([&] { result = operation(); }))
        finding(what);
    return result;
}

// Sets up what every target needs once: the library's diagnostics go to diagnostics() instead
// of the terminal, and the user defaults live in a folder of the process's own.
void initialise();

// The diagnostic lines the library printed since the last clearDiagnostics(), in order.
const std::vector<QString> &diagnostics();
void clearDiagnostics();

// The bytes as UTF-8, invalid sequences replaced; and as raw UTF-16 (host order, a trailing odd
// byte dropped), which may hold unpaired surrogates that no UTF-8 decoder would produce.
QString lenientUtf8(const std::uint8_t *data, std::size_t size);
QString rawUtf16(const std::uint8_t *data, std::size_t size);

// Texts separated by U+001F, the unit separator, so that one input carries several arguments.
// Always `count` texts: missing ones are empty.
QStringList splitArguments(const QString &text, qsizetype count);

// True when every present field of the record's `written` object came from `reply`: the same
// key with an equal value (numbers compared by value), nested objects likewise. A nested
// record written as an empty object may stand for a reply value that was not an object.
bool writtenFrom(const JsonValue &written, const JsonValue &reply);

} // namespace kovena::fuzzing
