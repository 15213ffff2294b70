#include "api/JsonReader.h"

#include <QScopeGuard>

#include <locale.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace kovena {

namespace {

// The bytes a string takes over as they are: printable ASCII but the quote and the backslash.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain {};
    for (int c = 0x20; c < 0x80; ++c)
        plain[std::size_t(c)] = c != '"' && c != '\\';
    return plain;
}();

// A strict JSON parser over the reply's bytes. It accepts exactly what JsonValue::parse accepts
// and gives the same tree (a fuzz target holds the two against each other), but reads each byte
// once instead of through a lexer that copies every character, and builds each object once its
// members are known: the insertion-ordered objects of JsonValue cannot move their keys, so
// growing one in place copies all its members, nested values included, each time.
class Parser
{
public:
    using Members = std::vector<std::pair<std::string, JsonValue>>;

    // `scratch` holds the members of the objects being read, innermost last; it is left empty.
    Parser(const char *begin, const char *end, Members &scratch)
        : m_begin(begin)
        , m_at(begin)
        , m_end(end)
        , m_members(scratch)
    { }

    std::optional<JsonValue> parseDocument()
    {
        // A byte order mark may lead the text.
        if (m_end - m_at >= 3 && m_at[0] == '\xEF' && m_at[1] == '\xBB' && m_at[2] == '\xBF')
            m_at += 3;
        JsonValue value;
        skipSpace();
        if (!parseValue(value, 0))
            return std::nullopt;
        skipSpace();
        // A NUL byte ends the text, as it does for JsonValue::parse, which reads C strings too.
        if (m_at != m_end && *m_at != '\0') {
            failed("syntax error");
            return std::nullopt;
        }
        return value;
    }

    const std::string &fault() const { return m_fault; }

private:
    // Notes the first fault and where it is; false, to be returned up the parse.
    bool failed(const char *what)
    {
        if (m_fault.empty())
            m_fault = std::string(what) + " at byte " + std::to_string(m_at - m_begin);
        return false;
    }

    void skipSpace()
    {
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t'))
            ++m_at;
    }

    bool take(char c)
    {
        if (m_at == m_end || *m_at != c)
            return false;
        ++m_at;
        return true;
    }

    bool parseValue(JsonValue &out, int depth)
    {
        if (m_at == m_end)
            return failed("syntax error");
        switch (*m_at) {
        case '{':
            return parseObject(out, depth + 1);
        case '[':
            return parseArray(out, depth + 1);
        case '"': {
            std::string text;
            if (!parseString(text))
                return false;
            out = JsonValue(std::move(text));
            return true;
        }
        case 't':
            return parseLiteral("true", JsonValue(true), out);
        case 'f':
            return parseLiteral("false", JsonValue(false), out);
        case 'n':
            return parseLiteral("null", JsonValue(nullptr), out);
        default:
            return parseNumber(out);
        }
    }

    bool parseLiteral(std::string_view word, JsonValue value, JsonValue &out)
    {
        if (std::size_t(m_end - m_at) < word.size() || std::string_view(m_at, word.size()) != word)
            return failed("syntax error");
        m_at += word.size();
        out = std::move(value);
        return true;
    }

    bool enter(int depth)
    {
        if (depth > JsonReader::kMaxDepth) {
            m_fault = "nested deeper than " + std::to_string(JsonReader::kMaxDepth) + " levels";
            return false;
        }
        ++m_at; // the opening bracket
        skipSpace();
        return true;
    }

    bool parseArray(JsonValue &out, int depth)
    {
        if (!enter(depth))
            return false;
        out = JsonValue(JsonValue::value_t::array);
        auto &items = out.get_ref<JsonValue::array_t &>();
        if (take(']'))
            return true;
        for (;;) {
            items.emplace_back();
            if (!parseValue(items.back(), depth))
                return false;
            skipSpace();
            if (take(']'))
                return true;
            if (!take(','))
                return failed("syntax error");
            skipSpace();
        }
    }

    bool parseObject(JsonValue &out, int depth)
    {
        if (!enter(depth))
            return false;
        // This object's members go on top of the scratch stack (nested objects take theirs off
        // again before this one goes on), so one buffer serves every object of every reply.
        const std::size_t first = m_members.size();
        const auto dropMembers = qScopeGuard([&] { m_members.resize(first); });
        // One bit per key hash: a key whose bit is already set may be a repeat and is looked up.
        std::uint64_t seen = 0;
        bool mayRepeat = false;
        if (!take('}')) {
            for (;;) {
                if (m_at == m_end || *m_at != '"')
                    return failed("syntax error");
                std::string name;
                if (!parseString(name))
                    return false;
                const std::uint64_t bit = std::uint64_t(1) << (keyHash(name) % 64);
                mayRepeat = mayRepeat || (seen & bit);
                seen |= bit;
                skipSpace();
                if (!take(':'))
                    return failed("syntax error");
                skipSpace();
                JsonValue value;
                if (!parseValue(value, depth))
                    return false;
                m_members.emplace_back(std::move(name), std::move(value));
                skipSpace();
                if (take('}'))
                    break;
                if (!take(','))
                    return failed("syntax error");
                skipSpace();
            }
        }
        out = JsonValue(JsonValue::value_t::object);
        auto &object = out.get_ref<JsonValue::object_t &>();
        object.reserve(m_members.size() - first);
        for (auto member = m_members.begin() + std::ptrdiff_t(first); member != m_members.end(); ++member) {
            auto &[name, value] = *member;
            // A repeated key keeps its first place and takes its last value, as JsonValue::parse
            // leaves it.
            auto it = object.end();
            if (mayRepeat)
                it = object.find(name);
            if (it != object.end())
                it->second = std::move(value);
            else
                object.emplace_back(std::move(name), std::move(value));
        }
        return true;
    }

    // A cheap hash for the repeat check: the length and the first and last bytes tell most keys
    // of one object apart, and a collision only costs a lookup.
    static std::size_t keyHash(const std::string &name)
    {
        if (name.empty())
            return 0;
        return name.size() * 131 + static_cast<unsigned char>(name.front()) * 31
            + static_cast<unsigned char>(name.back());
    }

    static int hexDigit(char c)
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    }

    // Four hex digits after "\u"; -1 if they are not there.
    int codeUnit()
    {
        if (m_end - m_at < 4)
            return -1;
        int unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hexDigit(m_at[i]);
            if (digit < 0)
                return -1;
            unit = unit * 16 + digit;
        }
        m_at += 4;
        return unit;
    }

    static void appendUtf8(std::string &text, std::uint32_t cp)
    {
        if (cp < 0x80) {
            text += char(cp);
        } else if (cp < 0x800) {
            text += char(0xC0 | (cp >> 6));
            text += char(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            text += char(0xE0 | (cp >> 12));
            text += char(0x80 | ((cp >> 6) & 0x3F));
            text += char(0x80 | (cp & 0x3F));
        } else {
            text += char(0xF0 | (cp >> 18));
            text += char(0x80 | ((cp >> 12) & 0x3F));
            text += char(0x80 | ((cp >> 6) & 0x3F));
            text += char(0x80 | (cp & 0x3F));
        }
    }

    bool parseEscape(std::string &text)
    {
        if (m_at == m_end)
            return failed("syntax error");
        const char c = *m_at++;
        switch (c) {
        case '"':
        case '\\':
        case '/':
            text += c;
            return true;
        case 'b':
            text += '\b';
            return true;
        case 'f':
            text += '\f';
            return true;
        case 'n':
            text += '\n';
            return true;
        case 'r':
            text += '\r';
            return true;
        case 't':
            text += '\t';
            return true;
        case 'u':
            break;
        default:
            return failed("syntax error");
        }
        const int unit = codeUnit();
        if (unit < 0 || (unit >= 0xDC00 && unit <= 0xDFFF))
            return failed("syntax error");
        if (unit < 0xD800 || unit > 0xDBFF) {
            appendUtf8(text, std::uint32_t(unit));
            return true;
        }
        // A high surrogate must be followed by an escaped low one.
        if (!take('\\') || !take('u'))
            return failed("syntax error");
        const int low = codeUnit();
        if (low < 0xDC00 || low > 0xDFFF)
            return failed("syntax error");
        appendUtf8(text, 0x10000 + ((std::uint32_t(unit) - 0xD800) << 10) + (std::uint32_t(low) - 0xDC00));
        return true;
    }

    // The length of the well-formed UTF-8 sequence at m_at that starts with a byte >= 0x80, or 0.
    std::size_t utf8Length() const
    {
        const auto byte = [this](std::ptrdiff_t i) { return static_cast<unsigned char>(m_at[i]); };
        const std::ptrdiff_t left = m_end - m_at;
        const auto continuation = [&](std::ptrdiff_t i, unsigned char low = 0x80, unsigned char high = 0xBF) {
            return i < left && byte(i) >= low && byte(i) <= high;
        };
        const unsigned char lead = byte(0);
        if (lead >= 0xC2 && lead <= 0xDF)
            return continuation(1) ? 2 : 0;
        if (lead >= 0xE0 && lead <= 0xEF) {
            const unsigned char low = lead == 0xE0 ? 0xA0 : 0x80;
            const unsigned char high = lead == 0xED ? 0x9F : 0xBF;
            return continuation(1, low, high) && continuation(2) ? 3 : 0;
        }
        if (lead >= 0xF0 && lead <= 0xF4) {
            const unsigned char low = lead == 0xF0 ? 0x90 : 0x80;
            const unsigned char high = lead == 0xF4 ? 0x8F : 0xBF;
            return continuation(1, low, high) && continuation(2) && continuation(3) ? 4 : 0;
        }
        return 0;
    }

    bool parseString(std::string &text)
    {
        ++m_at; // the opening quote
        for (;;) {
            // Plain printable ASCII goes over in runs.
            const char *run = m_at;
            while (m_at != m_end && kPlain[static_cast<unsigned char>(*m_at)])
                ++m_at;
            text.append(run, std::size_t(m_at - run));
            if (m_at == m_end)
                return failed("syntax error");
            const auto c = static_cast<unsigned char>(*m_at);
            if (c == '"') {
                ++m_at;
                return true;
            }
            if (c == '\\') {
                ++m_at;
                if (!parseEscape(text))
                    return false;
            } else if (c < 0x20) {
                return failed("syntax error");
            } else {
                const std::size_t length = utf8Length();
                if (length == 0)
                    return failed("invalid UTF-8");
                text.append(m_at, length);
                m_at += std::ptrdiff_t(length);
            }
        }
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    bool parseNumber(JsonValue &out)
    {
        const char *start = m_at;
        const bool negative = take('-');
        if (m_at == m_end || !isDigit(*m_at))
            return failed("syntax error");
        // Leading zeros are not allowed: "0" stands alone before the fraction or exponent.
        if (*m_at == '0')
            ++m_at;
        else
            while (m_at != m_end && isDigit(*m_at))
                ++m_at;
        bool integral = true;
        if (take('.')) {
            integral = false;
            if (m_at == m_end || !isDigit(*m_at))
                return failed("syntax error");
            while (m_at != m_end && isDigit(*m_at))
                ++m_at;
        }
        if (m_at != m_end && (*m_at == 'e' || *m_at == 'E')) {
            integral = false;
            ++m_at;
            if (!take('+'))
                take('-');
            if (m_at == m_end || !isDigit(*m_at))
                return failed("syntax error");
            while (m_at != m_end && isDigit(*m_at))
                ++m_at;
        }

        // Integers keep their exact value as long as 64 bits hold it: unsigned when not
        // negative, signed otherwise. Anything else becomes a double.
        if (integral) {
            std::uint64_t magnitude = 0;
            bool fits = true;
            for (const char *p = start + (negative ? 1 : 0); p != m_at && fits; ++p) {
                const auto digit = std::uint64_t(*p - '0');
                fits = magnitude <= (UINT64_MAX - digit) / 10;
                magnitude = magnitude * 10 + digit;
            }
            if (fits && !negative) {
                out = JsonValue(magnitude);
                return true;
            }
            if (fits && magnitude <= std::uint64_t(INT64_MAX) + 1) {
                out = JsonValue(
                    magnitude == std::uint64_t(INT64_MAX) + 1 ? INT64_MIN : -std::int64_t(magnitude));
                return true;
            }
        }
        const std::string digits(start, std::size_t(m_at - start));
        const double value = strtod_l(digits.c_str(), nullptr, cLocale());
        if (!std::isfinite(value)) {
            m_at = start;
            return failed("number beyond the range of a double");
        }
        out = JsonValue(value);
        return true;
    }

    // Numbers are read in the C locale whatever the application's locale is.
    static locale_t cLocale()
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        return locale;
    }

    const char *m_begin;
    const char *m_at;
    const char *m_end;
    Members &m_members;
    std::string m_fault;
};

} // namespace

std::optional<JsonValue> JsonReader::read(const QByteArray &body, std::string &fault)
{
    // Kept between replies so that reading one allocates no member lists of its own; one that
    // grew large for a huge reply is let go.
    thread_local Parser::Members scratch;
    Parser parser(body.constBegin(), body.constEnd(), scratch);
    std::optional<JsonValue> value = parser.parseDocument();
    constexpr std::size_t kScratchKept = 256;
    if (scratch.capacity() > kScratchKept)
        Parser::Members().swap(scratch);
    if (!value)
        fault = parser.fault();
    return value;
}

} // namespace kovena
