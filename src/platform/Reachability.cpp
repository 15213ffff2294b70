#include "platform/Reachability.h"

#include <QMutex>
#include <QMutexLocker>
#include <QNetworkInformation>
#include <QNetworkInterface>

#include <mutex>

namespace kovena::reachability {
namespace {

QMutex g_probeMutex;
Probe g_probe;

bool anyInterfaceUsable()
{
    const auto interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &iface : interfaces) {
        const auto flags = iface.flags();
        if (!flags.testFlag(QNetworkInterface::IsUp) || !flags.testFlag(QNetworkInterface::IsRunning))
            continue;
        if (flags.testFlag(QNetworkInterface::IsLoopBack))
            continue;
        if (!iface.addressEntries().isEmpty())
            return true;
    }
    return false;
}

// The backend answer, or nothing when no backend is loaded or it does not know.
std::optional<bool> networkInformationReachable()
{
    static std::once_flag loaded;
    std::call_once(loaded, [] { QNetworkInformation::loadDefaultBackend(); });
    const QNetworkInformation *info = QNetworkInformation::instance();
    if (!info)
        return std::nullopt;
    switch (info->reachability()) {
    case QNetworkInformation::Reachability::Online:
    case QNetworkInformation::Reachability::Site:
    case QNetworkInformation::Reachability::Local:
        return true;
    case QNetworkInformation::Reachability::Disconnected:
        return false;
    case QNetworkInformation::Reachability::Unknown:
        break;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::uint32_t> systemProbe()
{
    const std::optional<bool> known = networkInformationReachable();
    const bool reachable = known ? *known : anyInterfaceUsable();
    return reachable ? Reachable : 0u;
}

std::optional<std::uint32_t> zeroAddressFlags()
{
    Probe probe;
    {
        QMutexLocker lock(&g_probeMutex);
        probe = g_probe;
    }
    // Called outside the lock: a probe may take its time or call back into this module.
    return probe ? probe() : systemProbe();
}

void setProbe(Probe probe)
{
    QMutexLocker lock(&g_probeMutex);
    g_probe = std::move(probe);
}

Probe installedProbe()
{
    QMutexLocker lock(&g_probeMutex);
    return g_probe;
}

} // namespace kovena::reachability
