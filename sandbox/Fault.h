#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kovena::sandbox {

struct RecordedRequest;
struct Reply;

// A fault of the network or of the backend, played on an API request whose bearer token is
// "fault-<name>". The token is the one value every request of a checkout carries, so each
// request of a flow meets the same fault, and so does a request sent again.
class Fault
{
public:
    enum class Kind {
        ResetBeforeHeaders, // connection reset (RST) before any byte of the answer
        ResetAfterHeaders, // status line and headers, then a reset
        CutBody, // headers announce the whole body; half of it comes, then the connection closes
        Late, // the normal answer, kLateBy late
        Http500, // the normal answer with HTTP status 500
        Html, // a captive portal's HTML page instead of JSON
        EmptyBody, // HTTP 200 with no body at all
        HugeBody, // the normal answer grown past kHugeBodyBytes by a long extra member
        DeepNesting, // the normal answer with an extra member nested kNestingDepth arrays deep
        InvalidUtf8, // the normal answer with an extra member whose text is not UTF-8
        BigNumbers, // every number beyond 64-bit integers (a double still holds it)
        HugeNumbers, // every number beyond any double
        Unknown, // a "fault-" token naming none of the above: {"error":"Unknown fault"}
    };

    static constexpr std::chrono::seconds kLateBy { 30 };
    static constexpr std::size_t kHugeBodyBytes = 10 * 1024 * 1024;
    static constexpr std::size_t kNestingDepth = 100000;
    // 30 digits: more than any 64-bit integer, well inside a double.
    static constexpr const char *kBigNumber = "123456789012345678901234567890";

    // The fault the request's bearer token names; nullopt when it is not a "fault-" token.
    static std::optional<Fault> forRequest(const RecordedRequest &request);
    // The names after "fault-", in the order of Kind.
    static std::vector<std::string> names();

    Kind kind() const { return m_kind; }
    // How long the answer is held back before anything else happens.
    std::chrono::milliseconds delay() const;
    // True when the connection is reset before the endpoint runs: the request has no effect.
    bool resetsBeforeReply() const { return m_kind == Kind::ResetBeforeHeaders; }
    // Turns the endpoint's answer into the faulty one. For the faults that end the connection
    // part-way, tells the server handling the current request where to cut.
    void apply(Reply &reply) const;

private:
    explicit Fault(Kind kind)
        : m_kind(kind)
    { }

    Kind m_kind;
};

} // namespace kovena::sandbox
