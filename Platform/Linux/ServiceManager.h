#pragma once
// What a systemd manager says about services, asked over D-Bus: the user's manager on the session bus, the
// system's on the system bus. Anybody may ask; nothing is started and nothing is changed.

#include "Base/Date.h"
#include "Platform/LaunchItems.h"

#include <map>
#include <string>
#include <vector>

namespace korvell {

/// Addresses as in DBUS_SESSION_BUS_ADDRESS; empty where there is no such bus.
struct BusAddresses {
  std::string session;
  std::string system = "unix:path=/run/dbus/system_bus_socket";
};

/// The services that the manager has loaded and, of every unit file that it knows, whether it is enabled.
/// Without an answer within `patience` (no bus at the address, no manager on the bus, one that hangs) the
/// `silence` tells why. Blocks; from any thread.
ManagedJobs askServiceManager(const std::string& busAddress, Seconds patience);

/// What the manager makes of services, given the paths of their files, with drop-ins and defaults: by the
/// path. Those that it doesn't have, could not read or did not tell about in time are absent. systemd reads
/// the file of a service that it had not loaded, which changes nothing. Blocks; from any thread.
std::map<std::string, EffectiveJob> askAboutServices(const std::string& busAddress,
                                                     const std::vector<std::string>& paths, Seconds patience);

} // namespace korvell
