#pragma once
// Which process owes how many TCP bytes: the counters of sockets, open and closed, summed by their holder.
//
// A socket is known by its cookie; its holder is found once, by the inode behind a descriptor, and
// remembered. What a socket counted before Korvell first looked is nobody's. A socket that closes hands in
// its final counters, so nothing is lost between two cycles. One that was born and has closed within a cycle
// never showed its inode; it is its holder's whose listening port it was accepted on, or who held another
// connection of the same user to the same remote port before, and else nobody's.

#include "Platform/ProcessTable.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <unordered_map>
#include <vector>

namespace korvell {

struct SocketRecord {
  std::uint64_t cookie = 0; ///< unique while the machine runs
  std::uint32_t inode = 0;  ///< as behind a descriptor; 0 once none refers to it
  std::uint32_t user = 0;
  bool listening = false;
  bool ipv6 = false; ///< the socket's family; its addresses may be IPv4 ones all the same
  std::uint16_t localPort = 0;
  std::uint16_t remotePort = 0;
  std::array<std::uint8_t, 16> localAddress{}; ///< in network order, the first four bytes of IPv4
  std::array<std::uint8_t, 16> remoteAddress{};
  std::uint32_t interface = 0; ///< that it is bound to; 0 none
  std::uint64_t received = 0;  ///< bytes of payload
  std::uint64_t sent = 0;      ///< bytes that the other side has acknowledged
  bool operator==(const SocketRecord&) const = default;
};

class SocketLedger {
public:
  /// How often all processes' descriptors may be walked for the sake of sockets that those that ran don't
  /// hold.
  static constexpr Seconds fullScanInterval{6};

  /// Takes in one cycle: the sockets that are there now, and those that closed since the last cycle. The
  /// living must have been listed first: otherwise one that closes in between is on neither list.
  void update(std::span<const SocketRecord> alive, std::span<const SocketRecord> closed);
  /// Inodes of sockets whose holder is to be looked for: those that nobody looked for in vain lately.
  const std::unordered_map<std::uint32_t, std::uint64_t>& wanted() const { return wanted_; }
  /// `pid` holds the socket with that inode. Of several holders the first one that is told has its bytes; a
  /// listening socket's are all kept, for a child that inherited it serves the port too. It stays wanted
  /// until settle(), so that one scan finds them all, and takes any that another socket's scan comes across.
  void assign(std::uint32_t inode, ProcessID pid);
  /// A scan has ended: what has a holder is wanted no longer.
  void settle();
  /// Nobody was found for what is still wanted: leaves it alone for a while.
  void giveUp();

  /// Looks for the holders of what is wanted: `scan` walks the descriptors of the processes that ran, or else
  /// of all others, while anything is wanted, and calls assign() for each socket. The others seldom: a socket
  /// is mostly held by who made it just now.
  enum class Walk { thoseThatRan, allOthers };
  void findHolders(Seconds now, const std::function<void(Walk)>& scan);

  ByteCounters total(ProcessID pid) const;
  /// The process has ended: its sockets are looked for anew with whoever else holds them.
  void forget(ProcessID pid);
  PortsByPID listeningPorts() const;

private:
  struct Socket {
    SocketRecord record;
    ProcessID holder = 0;
    std::vector<ProcessID> sharers; ///< other holders, of a listening socket
    ByteCounters credited;          ///< what has been counted to a holder, or lies before the first look
    std::uint32_t cycle = 0;
    std::uint32_t lookAgain = 0; ///< cycle from which on it is wanted again
    std::uint32_t patience = 0;  ///< cycles that it was last left alone for
  };
  struct Peer {
    std::uint32_t user = 0;
    std::uint16_t port = 0;
    std::array<std::uint8_t, 16> address{};
    bool operator==(const Peer&) const = default;
  };
  struct PeerHash {
    std::size_t operator()(const Peer& peer) const;
  };

  void assignListener(Socket& socket, ProcessID pid);
  void credit(Socket& socket, const SocketRecord& record);
  void close(const SocketRecord& record);
  ProcessID likelyHolder(const SocketRecord& record) const;

  std::unordered_map<std::uint64_t, Socket> sockets_;          ///< by cookie
  std::unordered_map<std::uint32_t, std::uint64_t> wanted_;    ///< inode to cookie
  std::unordered_map<std::uint32_t, std::uint64_t> listening_; ///< inode to cookie, rebuilt every cycle
  std::unordered_map<ProcessID, ByteCounters> totals_;     ///< has every process that holds or held a socket
  std::unordered_map<std::uint16_t, ProcessID> listeners_; ///< by port, rebuilt every cycle
  std::unordered_map<Peer, ProcessID, PeerHash> peers_;
  std::uint32_t cycle_ = 0;
  Seconds lastFullScan_{-1e9};
};

} // namespace korvell
