#pragma once
// The development servers by project, as their page shows them.

#include "App/ActionRequest.h"
#include "App/Model.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct ServersPage {
  enum class Activity { active, quiet, idle }; ///< idle: long enough that stopping it is worth a thought

  struct Port {
    int number = 0;
    std::string address; ///< on this machine, for a browser
    std::string spoken;
    bool operator==(const Port&) const = default;
  };
  struct Server {
    std::string key; ///< its process, and never the next one of the same id
    std::string name, runtime;
    std::string detail; ///< "web · node": the service's folder in the project's, and the runtime
    std::string directory;
    std::vector<Port> ports;
    std::string memory, cpu, running;
    Activity activity = Activity::active;
    std::string activityWords; ///< "active", "idle for 47 min"
    StopServerRequest stop;
    std::string spoken;
    bool operator==(const Server&) const = default;
  };
  struct Project {
    std::string name;
    /// Its folder; several where projects of one name lie in several places; none that nobody knows.
    std::vector<std::string> folders;
    std::string folderWords; ///< "~/code/herbarium"; empty without exactly one
    std::string memory;
    std::vector<Server> servers;
    bool operator==(const Project&) const = default;
  };
  struct Idle {
    std::string sentence, detail;
    bool operator==(const Idle&) const = default;
  };

  bool isMeasured = false; ///< false until they were looked for
  std::string summary;     ///< "5 servers, 1.72 GB"; empty without any
  std::optional<Idle> idle;
  std::vector<Project> projects; ///< those that use most memory first

  bool operator==(const ServersPage&) const = default;
};

/// `home` is shown as "~".
ServersPage serversPage(const Model& model, const std::string& home);

/// The same projects in the order of `before`, so that nothing moves under a pointer; as they are when one
/// has come or gone.
ServersPage settled(ServersPage page, const ServersPage& before);

} // namespace korvell
