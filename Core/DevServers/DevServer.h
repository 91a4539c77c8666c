#pragma once
// Development servers, grouped by the project folder that they were started from.

#include "Base/Date.h"
#include "Base/Record.h"

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
  static constexpr auto fields() {
    return std::tuple{Field{"pid", &DevServer::pid},
                      Field{"name", &DevServer::name},
                      Field{"project", &DevServer::project},
                      Field{"directory", &DevServer::directory},
                      Field{"runtime", &DevServer::runtime},
                      Field{"ports", &DevServer::ports},
                      Field{"memory", &DevServer::memory, Unit::memory},
                      Field{"cpu", &DevServer::cpu, Unit::corePercent},
                      Field{"startedAt", &DevServer::startedAt},
                      Field{"lastActive", &DevServer::lastActive}};
  }
};

struct DevProject {
  std::string name;
  std::vector<DevServer> servers;

  bool operator==(const DevProject&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &DevProject::name}, Field{"servers", &DevProject::servers}};
  }
};

KORVELL_CONVERTED_ONCE(std::vector<DevProject>);

} // namespace korvell
