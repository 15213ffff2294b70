#include "sandbox/Fault.h"

#include "sandbox/RecordingServer.h"
#include "sandbox/Router.h"
#include "sandbox/Sandbox.h"

#include <array>
#include <cctype>
#include <utility>

namespace kovena::sandbox {

namespace {

const std::string kTokenPrefix = "Bearer fault-";

constexpr std::array<std::pair<Fault::Kind, const char *>, 12> kNames { {
    { Fault::Kind::ResetBeforeHeaders, "reset-before-headers" },
    { Fault::Kind::ResetAfterHeaders, "reset-after-headers" },
    { Fault::Kind::CutBody, "cut-body" },
    { Fault::Kind::Late, "late" },
    { Fault::Kind::Http500, "http-500" },
    { Fault::Kind::Html, "html" },
    { Fault::Kind::EmptyBody, "empty-body" },
    { Fault::Kind::HugeBody, "huge-body" },
    { Fault::Kind::DeepNesting, "deep-nesting" },
    { Fault::Kind::InvalidUtf8, "invalid-utf8" },
    { Fault::Kind::BigNumbers, "big-numbers" },
    { Fault::Kind::HugeNumbers, "huge-numbers" },
} };

// Adds a member in front of the others of a JSON object's text; anything else stays as it is.
void prependMember(std::string &body, const std::string &member)
{
    if (body.empty() || body.front() != '{')
        return;
    const bool empty = body.find_first_not_of(" \t\r\n", 1) == body.find('}');
    body.insert(1, empty ? member : member + ",");
}

// Writes `literal` in place of every number of a JSON text, leaving strings alone.
std::string replaceNumbers(const std::string &json, const std::string &literal)
{
    std::string out;
    out.reserve(json.size());
    bool inString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inString) {
            out += c;
            if (c == '\\' && i + 1 < json.size())
                out += json[++i];
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
            out += c;
        } else if (c == '-' || std::isdigit(static_cast<unsigned char>(c))) {
            while (i + 1 < json.size()
                && std::string_view("0123456789+-.eE").find(json[i + 1]) != std::string::npos)
                ++i;
            out += literal;
        } else {
            out += c;
        }
    }
    return out;
}

const char *kCaptivePortal = "<!DOCTYPE html>\n<html><head><title>Wi-Fi login</title></head>\n"
                             "<body><h1>Welcome</h1><p>Sign in to continue browsing.</p>\n"
                             "<form method=\"post\" action=\"/login\"><input name=\"room\">"
                             "<button>Connect</button></form></body></html>\n";

} // namespace

std::optional<Fault> Fault::forRequest(const RecordedRequest &request)
{
    const std::string authorization = request.header("Authorization");
    if (authorization.compare(0, kTokenPrefix.size(), kTokenPrefix) != 0)
        return std::nullopt;
    const std::string name = authorization.substr(kTokenPrefix.size());
    for (const auto &[kind, known] : kNames) {
        if (name == known)
            return Fault(kind);
    }
    return Fault(Kind::Unknown);
}

std::vector<std::string> Fault::names()
{
    std::vector<std::string> out;
    for (const auto &entry : kNames)
        out.emplace_back(entry.second);
    return out;
}

std::chrono::milliseconds Fault::delay() const
{
    return m_kind == Kind::Late ? std::chrono::milliseconds(kLateBy) : std::chrono::milliseconds(0);
}

void Fault::apply(Reply &reply) const
{
    switch (m_kind) {
    case Kind::ResetBeforeHeaders:
        RecordingServer::dropCurrentConnection(RecordingServer::Ending::Reset);
        break;
    case Kind::ResetAfterHeaders:
        RecordingServer::cutCurrentReply(0, RecordingServer::Ending::Reset);
        break;
    case Kind::CutBody:
        RecordingServer::cutCurrentReply(reply.body.size() / 2);
        break;
    case Kind::Late:
        break;
    case Kind::Http500:
        reply.status = 500;
        break;
    case Kind::Html:
        reply = { 200, kCaptivePortal, "text/html; charset=utf-8" };
        break;
    case Kind::EmptyBody:
        reply.body.clear();
        break;
    case Kind::HugeBody:
        prependMember(reply.body, "\"padding\":\"" + std::string(kHugeBodyBytes, 'x') + "\"");
        break;
    case Kind::DeepNesting:
        // Written as text: building it as a JSON value and dumping it would recurse this deep.
        prependMember(
            reply.body, "\"nested\":" + std::string(kNestingDepth, '[') + std::string(kNestingDepth, ']'));
        break;
    case Kind::InvalidUtf8:
        // A lone continuation byte, a truncated sequence and a byte that never occurs in UTF-8.
        prependMember(reply.body, "\"remarks\":\"Payment \x80 received \xC3 \xFF\"");
        break;
    case Kind::BigNumbers:
    case Kind::HugeNumbers: {
        // Beyond the largest double (about 1.8e308).
        const std::string literal = m_kind == Kind::BigNumbers ? kBigNumber : "9" + std::string(400, '0');
        reply.body = replaceNumbers(reply.body, literal);
        // Replies without numbers of their own still carry one.
        prependMember(reply.body, "\"serverTime\":" + literal);
        break;
    }
    case Kind::Unknown:
        reply = { 200, R"({"error":"Unknown fault"})" };
        break;
    }
}

} // namespace kovena::sandbox
