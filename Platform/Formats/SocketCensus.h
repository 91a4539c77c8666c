#pragma once
// Which sockets there are, without walking the kernel's table of connections each time.
//
// That table has as many buckets as the machine's memory suggests (262,144 with 24 GB) and a walk looks into
// each, however few connections there are: 0.14 ms while the table is in the processor's cache, milliseconds
// on a machine that had other work in between. But the kernel counts the connections that are born, and while
// it has counted none since the last walk, those that the walk found are all there are: each is asked for by
// itself, 2 µs, for as long as they are few.
//
// The count is read before the walk, so a connection that the walk misses is counted after it and has the
// next cycle walk again. Connections that are restored from a frozen process are counted nowhere; a walk from
// time to time finds them, with all their bytes. Listening sockets are counted nowhere either, but have a
// small table of their own, which is listed in every cycle.

#include "Platform/Formats/SocketLedger.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace korvell {

/// TCP connections that began in this network namespace since the machine started, both address families.
struct ConnectionsBorn {
  std::uint64_t active = 0;  ///< counted when the first packet is sent
  std::uint64_t passive = 0; ///< counted when the handshake is complete, before anybody accepts it
  bool operator==(const ConnectionsBorn&) const = default;
};

/// Of /proc/net/snmp. Nothing when it has no line with these counters.
std::optional<ConnectionsBorn> parseConnectionsBorn(std::string_view snmp);

/// The kernel's answers. What is false or nothing was not answered, and `into` is of no use then.
class SocketSource {
public:
  virtual ~SocketSource() = default;
  /// Listening and connected sockets, those whose handshake is under way included.
  [[nodiscard]] virtual bool dump(std::vector<SocketRecord>& into) = 0;
  /// The listening ones alone.
  [[nodiscard]] virtual bool dumpListening(std::vector<SocketRecord>& into) = 0;
  /// Appends those of `known` that are still there, as they are now.
  [[nodiscard]] virtual bool ask(std::span<const SocketRecord> known, std::vector<SocketRecord>& into) = 0;
  virtual std::optional<ConnectionsBorn> born() = 0;
  /// Sockets that have closed since the last call, with their final counters and without inode.
  virtual void drainClosed(std::vector<SocketRecord>& into) = 0;
};

class SocketCensus {
public:
  /// More connections than these cost more than the cheapest walk.
  static constexpr std::size_t mostAsked = 128;
  static constexpr Seconds longestWithoutWalk{300};

  /// Of all users, or of one whose sockets alone matter.
  explicit SocketCensus(std::optional<std::uint32_t> onlyUser = std::nullopt) : onlyUser_(onlyUser) {}

  /// The sockets that there are. False when the kernel gave no complete answer.
  [[nodiscard]] bool take(SocketSource& source, Seconds now, std::vector<SocketRecord>& alive);

private:
  std::optional<std::uint32_t> onlyUser_;
  std::vector<SocketRecord> connections_; ///< as they were last seen
  std::optional<ConnectionsBorn> born_;   ///< before the last walk; nothing when the next one has to walk
  Seconds lastWalk_{0};
};

} // namespace korvell
