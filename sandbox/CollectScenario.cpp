#include "sandbox/CollectScenario.h"

#include "sandbox/WireText.h"

namespace kovena::sandbox {

namespace {

constexpr int kSuccess = 1;
constexpr int kFail = 2;
constexpr int kDefaultPendingAnswers = 2;
constexpr int kMaxPendingAnswers = 1000;

// "<prefix>" or "<prefix><N>" with N in range; nullopt when the name does not have that form.
std::optional<int> pendingCount(const std::string &name, const std::string &prefix)
{
    if (name.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    std::string digits = name.substr(prefix.size());
    if (digits.empty())
        return kDefaultPendingAnswers;
    if (digits.size() > 4)
        return std::nullopt;
    auto n = wire::parseDecimalId(digits);
    if (!n || *n > kMaxPendingAnswers)
        return std::nullopt;
    return static_cast<int>(*n);
}

} // namespace

CollectScenario CollectScenario::forVpa(const std::string &vpa)
{
    std::string lower = wire::toLower(vpa);
    size_t at = lower.find('@');
    if (at == std::string::npos || lower.substr(at + 1) != "kovena")
        return {};
    std::string name = lower.substr(0, at);
    if (name == "pending")
        return { 0, std::nullopt };
    if (auto n = pendingCount(name, "success"))
        return { *n, kSuccess };
    if (auto n = pendingCount(name, "failure"))
        return { *n, kFail };
    return {};
}

} // namespace kovena::sandbox
