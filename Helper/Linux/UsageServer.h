#pragma once
// The daemon's socket: answers requests of admitted peers on a listening local sequenced-packet socket, in
// one thread and without ever waiting for a peer. A request has one verb and a bounded length (Helper/Shared/
// UsagePackets.h); anything else closes the connection.
//
// What a peer can cost: one connection of a bounded number, one request at a time, `answerTime` for reading
// (what was read until then is sent), a packet of 14 KiB that waits for a slow reader until that time is
// over.

#include "Base/Descriptor.h"
#include "Helper/Shared/RusageService.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace korvell {

class UsageServer {
public:
  struct Limits {
    std::size_t connections = 32;
    std::size_t connectionsOfOneUser =
        4; ///< a further one replaces the user's connection that was silent longest
    Seconds answerTime{0.08};
  };
  /// The user id of a peer that may ask; nothing for anyone else.
  using Admission = std::function<std::optional<std::uint32_t>(int socket)>;

  /// `listener` is non-blocking. The service is asked for at most `processesAtOnce` processes in one go.
  UsageServer(Descriptor listener, RusageService service, Admission admission, const Clock& clock,
              Limits limits);

  /// Waits at most `longest` for something to do and does it.
  void turn(Seconds longest);
  /// When a request last came; the server's beginning before the first.
  Seconds lastRequest() const { return lastRequest_; }
  std::size_t connections() const { return connections_.size(); }

  static constexpr std::size_t processesAtOnce = 256;

private:
  struct Connection {
    Descriptor socket;
    std::uint32_t user = 0;
    Seconds lastHeard{};
    bool answering = false;
    Seconds deadline{}; ///< of the answer
    std::vector<ProcessID> pids;
    std::size_t next = 0;              ///< of pids
    std::vector<std::uint8_t> waiting; ///< a packet that did not fit into the socket's buffer yet
    bool ending = false;               ///< what waits is the end
    std::uint32_t sent = 0;            ///< records
  };
  enum class Fate { stays, closes };

  void acceptNew();
  bool makeRoom(std::uint32_t user);
  Fate serve(Connection& connection, short events);
  Fate receive(Connection& connection);
  Fate answer(Connection& connection);
  Fate finish(Connection& connection);
  Fate done(Connection& connection);

  Descriptor listener_;
  RusageService service_;
  Admission admission_;
  const Clock& clock_;
  const Limits limits_;
  Seconds lastRequest_;
  std::vector<Connection> connections_;
};

} // namespace korvell
