#pragma once

// Process-wide settings a test changes, put back however the test ends (an early assertion
// included).
#include "api/ApiManager.h"
#include "api/ServerUrl.h"
#include "platform/Reachability.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <optional>

namespace kovena::testing {

// Points the client at `url` for the life of the object. The client fixes its URL with the
// first request it sends; from then on neither this nor the restore changes anything, and
// accepted() tells whether the URL was taken at all.
class ScopedServerUrl
{
public:
    explicit ScopedServerUrl(const QString &url)
        : m_previous(ServerUrl::current())
        , m_accepted(ApiManager::setServerUrl(url))
    { }
    ~ScopedServerUrl() { ApiManager::setServerUrl(m_previous); }
    ScopedServerUrl(const ScopedServerUrl &) = delete;
    ScopedServerUrl &operator=(const ScopedServerUrl &) = delete;

    bool accepted() const { return m_accepted; }

private:
    QString m_previous;
    bool m_accepted;
};

// Answers the reachability query with `probe` for the life of the object, then puts back the
// probe that was there before.
class ScopedReachability
{
public:
    explicit ScopedReachability(reachability::Probe probe)
        : m_previous(reachability::installedProbe())
    {
        reachability::setProbe(std::move(probe));
    }
    ~ScopedReachability() { reachability::setProbe(std::move(m_previous)); }
    ScopedReachability(const ScopedReachability &) = delete;
    ScopedReachability &operator=(const ScopedReachability &) = delete;

private:
    reachability::Probe m_previous;
};

// A network the test switches on and off (on at first); any thread may ask.
class SwitchableNetwork
{
public:
    std::atomic<bool> online { true };

private:
    ScopedReachability m_probe { [this] {
        return std::optional<std::uint32_t>(online ? reachability::Reachable : 0u);
    } };
};

} // namespace kovena::testing
