#pragma once
// What a systemd manager says about services, asked over D-Bus: the user's manager on the session bus, the
// system's on the system bus. Anybody may ask; nothing is started and nothing is changed.

#include "Base/Date.h"
#include "Platform/LaunchItems.h"

#include <string>

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

} // namespace korvell
