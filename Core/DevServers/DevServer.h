#pragma once
// Development servers, grouped by the project folder that they were started from.

#include "Base/Date.h"
#include "Base/Hash.h"

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

/// One process that listens on a TCP port and works in a project folder.
struct DevServer {
  std::int32_t pid = 0;
  std::string name;      ///< of the process
  std::string project;   ///< last component of the project folder
  std::string directory; ///< the service's folder
  std::string runtime;   ///< "node", "python", …; else the process's name
  std::vector<int> ports;
  std::uint64_t memory = 0; ///< bytes, with all descendants
  double cpu = 0;           ///< percent of one core, with all descendants
  Date startedAt;           ///< as the kernel tells it
  Date lastActive;

  bool operator==(const DevServer&) const = default;
  auto fields() const {
    return std::tie(pid, name, project, directory, runtime, ports, memory, cpu, startedAt, lastActive);
  }
};

struct DevProject {
  std::string name;
  std::vector<DevServer> servers;

  bool operator==(const DevProject&) const = default;
  auto fields() const { return std::tie(name, servers); }
};

} // namespace korvell
