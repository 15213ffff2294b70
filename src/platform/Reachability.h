#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace kovena::reachability {

// Flag bits, as the platform's reachability query reports them.
inline constexpr std::uint32_t Reachable = 1u << 1;
inline constexpr std::uint32_t ConnectionRequired = 1u << 2;

// Answers the reachability of the IPv4 zero address: the flags, or nothing when they cannot
// be read.
using Probe = std::function<std::optional<std::uint32_t>()>;

// The flags from the installed probe (the system one unless replaced).
std::optional<std::uint32_t> zeroAddressFlags();
// Replaces the probe for the whole process (tests, or a host that knows better); an empty
// function restores the system probe.
void setProbe(Probe probe);
// The probe installed by setProbe(); empty while the system probe answers.
Probe installedProbe();
// The system probe: QNetworkInformation where a backend is available, else a scan of the
// network interfaces for one that is up, running, not loopback and has an address.
std::optional<std::uint32_t> systemProbe();

} // namespace kovena::reachability
