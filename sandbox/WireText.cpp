#include "sandbox/WireText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <ctime>
#include <iomanip>
#include <regex>
#include <sstream>

namespace kovena::sandbox::wire {

std::optional<std::int64_t> parseDecimalId(const std::string &text)
{
    if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    std::int64_t value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

bool isDecimalAmount(const std::string &text)
{
    // Never destroyed: a host may end the process while a server thread still runs.
    static const std::regex &pattern = *new std::regex(R"(^[0-9]+(\.[0-9]+)?$)");
    return std::regex_match(text, pattern);
}

std::string hexDigest(const std::string &text, std::size_t length)
{
    std::ostringstream out;
    std::uint64_t hash = 1469598103934665603ull;
    for (std::uint64_t round = 0; out.tellp() < static_cast<std::streamoff>(length); ++round) {
        hash ^= round;
        for (unsigned char c : text) {
            hash ^= c;
            hash *= 1099511628211ull;
        }
        out << std::hex << std::setw(16) << std::setfill('0') << hash;
    }
    return out.str().substr(0, length);
}

std::string utcTimestamp()
{
    using namespace std::chrono;
    auto now = system_clock::now();
    std::time_t t = system_clock::to_time_t(now);
    std::tm tm {};
    gmtime_r(&t, &tm);
    auto ms = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::ostringstream out;
    out << std::put_time(&tm, "%Y-%m-%dT%H:%M:%S") << '.' << std::setw(3) << std::setfill('0') << ms << 'Z';
    return out.str();
}

std::string transactionTime()
{
    std::time_t t = std::time(nullptr);
    std::tm tm {};
    localtime_r(&t, &tm);
    std::ostringstream out;
    out << std::put_time(&tm, "%Y-%m-%d %H:%M:%S");
    return out.str();
}

namespace {

std::string maskedNumber(const std::string &number)
{
    std::size_t keep = std::min<std::size_t>(4, number.size());
    return std::string(number.size() - keep, '*') + number.substr(number.size() - keep);
}

bool maskIn(nlohmann::json &value)
{
    bool changed = false;
    if (value.is_object()) {
        for (auto &[key, member] : value.items()) {
            if (key == "cvv" && !member.is_null()) {
                member = "***";
                changed = true;
            } else if (key == "cardNumber" && (member.is_string() || member.is_number())) {
                member = maskedNumber(member.is_string() ? member.get<std::string>() : member.dump());
                changed = true;
            } else {
                changed = maskIn(member) || changed;
            }
        }
    } else if (value.is_array()) {
        for (auto &element : value)
            changed = maskIn(element) || changed;
    }
    return changed;
}

// A body that does not parse (cut short, malformed) may still hold card data: mask the values
// that follow the two names, as JSON members or form fields.
std::string maskText(const std::string &body)
{
    // Never destroyed: a host may end the process while a server thread still runs.
    static const std::regex &number = *new std::regex(R"re(("cardNumber"\s*:\s*"?|cardNumber=)([0-9]+))re");
    static const std::regex &jsonCvv = *new std::regex(R"re(("cvv"\s*:\s*)("[^"]*"?|[0-9]+))re");
    static const std::regex &formCvv = *new std::regex(R"re((^|&)cvv=[^&]*)re");
    std::string out;
    auto last = body.cbegin();
    for (std::sregex_iterator it(body.begin(), body.end(), number), end; it != end; ++it) {
        out.append(last, (*it)[2].first);
        out += maskedNumber((*it)[2].str());
        last = (*it)[2].second;
    }
    out.append(last, body.cend());
    out = std::regex_replace(out, jsonCvv, "$1\"***\"");
    return std::regex_replace(out, formCvv, "$1cvv=***");
}

} // namespace

std::string maskCardData(const std::string &body)
{
    if (body.find("cardNumber") == std::string::npos && body.find("cvv") == std::string::npos)
        return body;
    nlohmann::json parsed = nlohmann::json::parse(body, nullptr, false);
    if (parsed.is_discarded())
        return maskText(body);
    if (!maskIn(parsed))
        return body;
    return parsed.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string toLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string formEncode(const std::string &text)
{
    static const char *hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text) {
        if (std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

std::string formDecode(const std::string &text)
{
    auto hexValue = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    };
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            out += ' ';
        } else if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0
            && hexValue(text[i + 2]) >= 0) {
            out += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::vector<std::pair<std::string, std::string>> parseForm(const std::string &body)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    std::size_t start = 0;
    while (start <= body.size()) {
        std::size_t end = body.find('&', start);
        if (end == std::string::npos)
            end = body.size();
        std::string field = body.substr(start, end - start);
        if (!field.empty()) {
            std::size_t eq = field.find('=');
            pairs.emplace_back(formDecode(field.substr(0, eq)),
                eq == std::string::npos ? std::string() : formDecode(field.substr(eq + 1)));
        }
        start = end + 1;
    }
    return pairs;
}

std::optional<std::string> formValue(
    const std::vector<std::pair<std::string, std::string>> &form, const std::string &name)
{
    for (const auto &[key, value] : form) {
        if (key == name)
            return value;
    }
    return std::nullopt;
}

std::string rupees(const std::string &amount)
{
    std::size_t point = amount.find('.');
    std::string whole = amount.substr(0, point);
    std::string fraction = point == std::string::npos ? std::string() : amount.substr(point + 1);
    while (fraction.size() < 2)
        fraction += '0';
    // The last three digits form one group, every two before them another.
    std::string grouped;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        std::size_t left = whole.size() - i;
        if (i > 0 && (left == 3 || (left > 3 && (left - 3) % 2 == 0)))
            grouped += ',';
        grouped += whole[i];
    }
    return "\xE2\x82\xB9" + grouped + '.' + fraction;
}

} // namespace kovena::sandbox::wire
