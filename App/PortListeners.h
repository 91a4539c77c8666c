#pragma once
// Who listens on a TCP port, looked up at this moment and not as an earlier scan found it.

#include "Base/Record.h"
#include "Core/DevServers/DevServer.h"
#include "Platform/ProcessTable.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

class Assembly;

/// A process that listens on the port that was asked for.
struct PortListener {
  ProcessID pid = 0;
  std::string name; ///< of the process
  std::string path; ///< of its program; empty when hidden
  std::string app;  ///< the name of the application to which it counts
  std::optional<Date> startedAt;
  std::optional<DevServer> server; ///< when it is a development server

  bool operator==(const PortListener&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"pid", &PortListener::pid},
                      Field{"name", &PortListener::name},
                      Field{"path", &PortListener::path},
                      Field{"app", &PortListener::app},
                      Field{"startedAt", &PortListener::startedAt},
                      Field{"server", &PortListener::server}};
  }
};

struct PortUse {
  int port = 0;
  /// By ascending process ids; a listening socket may be held by several processes.
  std::vector<PortListener> listeners;
  /// Somebody listens; nothing when the system does not say. True without listeners: a process of another
  /// user, which the system does not name.
  std::optional<bool> isTaken;
};

/// Reads the processes and their ports once. What the servers did before is not known to it: `lastActive` is
/// this moment, and there is no CPU figure.
PortUse lookUpPort(Assembly& assembly, ProcessTable& table, int port);

/// The servers' CPU figures and last activities as somebody knows them who has followed the servers. A
/// process that has got a reused id takes nothing over. False when a server among the listeners is not among
/// the followed ones.
bool takeActivity(PortUse& use, const std::vector<DevProject>& followed);

/// What to type to end it.
std::string stopCommand(const PortListener& listener);

/// As `korvell port --json` prints it; `isIdleKnown`: the servers' activity was taken over.
Value portValue(const PortUse& use, bool isIdleKnown, Date now);

} // namespace korvell
