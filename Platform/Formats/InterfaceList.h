#pragma once
// The kernel's list of network interfaces on macOS, as the routing sysctl {CTL_NET, PF_ROUTE, 0, 0,
// NET_RT_IFLIST2, 0} fills a buffer with it: records of several types, each beginning with its own length.
//
// Offsets in a record, all in the machine's (little-endian) order: length u16 at 0, type u8 at 3, interface
// index u16 at 12, received bytes u64 at 96, sent bytes u64 at 104. The kernel keeps the byte counters of
// ordinary programs to 32 bits, so they start over after 4 GiB.

#include "Platform/MachineCounters.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The name of an interface by its index ("en0"), or nothing when the interface is gone.
using InterfaceNames = std::function<std::optional<std::string>(unsigned index)>;

/// Every interface with a name, in the buffer's order, without display names. Of several records with one
/// name the last one counts. A cut or senseless buffer yields what stands before the damage.
std::vector<InterfaceCounters> parseInterfaceList(std::span<const std::byte> buffer,
                                                  const InterfaceNames& nameOf);

/// Wired, wireless and cellular links by their names on macOS; loopback, bridges and tunnels are not.
bool isMacLink(std::string_view interfaceName);

} // namespace korvell
