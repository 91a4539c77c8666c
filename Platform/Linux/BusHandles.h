#pragma once
// Owners of sd-bus objects.

#include <memory>
#include <systemd/sd-bus.h>

namespace korvell {

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

struct UnrefMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

/// The milliseconds until an instant of the monotonic clock in microseconds, as the bus tells its time-outs:
/// rounded up, -1 for "never".
int millisecondsUntil(std::uint64_t microseconds);

} // namespace korvell
