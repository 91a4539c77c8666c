#pragma once
// What Linux counts for its block devices and network interfaces.

#include "Platform/MachineCounters.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace korvell {

/// One line of /proc/diskstats.
struct BlockDeviceLine {
  std::string_view name; ///< points into the text
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  ByteCounters bytes; ///< a sector of that file is 512 bytes whatever the device's own are
};
/// Overwrites `into` (so that its memory is used again).
void parseDiskStats(std::string_view text, std::vector<BlockDeviceLine>& into);

/// Whether a device could be a disk of its own going by its name: no loop, RAM or optical device, and no
/// layer (device mapper, software RAID), whose bytes are counted on the disks below.
bool mayBeWholeDisk(std::string_view name);

/// A number for a device that another one does not get: its name and its device number.
std::uint64_t blockDeviceIdentity(const BlockDeviceLine& line);

/// One line of /proc/net/dev.
struct NetworkLine {
  std::string_view name; ///< points into the text
  ByteCounters bytes;
};
void parseNetDev(std::string_view text, std::vector<NetworkLine>& into);

/// The interface of the default route in /proc/net/route (IPv4); empty without one. Of several, the one with
/// the lowest metric.
std::string_view parseDefaultRoute(std::string_view text);
/// Likewise of /proc/net/ipv6_route, where routes that refuse their packets are listed too.
std::string_view parseDefaultRoute6(std::string_view text);

} // namespace korvell
