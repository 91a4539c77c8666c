#pragma once
// Finds the development servers: processes that listen on a TCP port and work in a folder below the user's
// home, grouped by project.
//
// On the sampler's queue. Holds the last table of ports, and for each listening process when it was first
// seen and when it last did something. A process that vanishes while it is looked at is left out.

#include "Core/DevServers/DevServer.h"
#include "Core/DevServers/DevServerRules.h"
#include "Core/Machine/Models.h"
#include "Platform/ProcessTable.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvell {

/// The processes of a snapshot by their id; valid as long as the snapshot.
using UsageByPID = std::unordered_map<ProcessID, const ProcessUsage*>;
UsageByPID usageByPID(const std::vector<AppUsage>& apps);

/// True for the program of a desktop application, such as an editor: whoever starts one from a project folder
/// develops with it and not on it.
using IsDesktopProgram = std::function<bool(const std::string& executable)>;

class DevServerScanner {
public:
  /// Percent of one core, with all descendants, above which a server is at work.
  static constexpr double activeAbove = 1.0;

  /// `home` is the real path of the home folder, without links and trailing slash.
  DevServerScanner(ProcessTable& table, const DevServerTables& rules, std::string home, FileExists exists,
                   IsDesktopProgram isDesktopProgram, const Clock& clock);

  /// The projects, those that take the most memory first. `parents` maps every process to its parent.
  std::vector<DevProject> scan(const UsageByPID& processes, const ParentsByPID& parents);
  /// As the last scan found them.
  const PortsByPID& portsByPID() const { return portsByPID_; }

private:
  struct Sighting {
    Date startedAt; ///< a reused process id is a new server
    Date firstSeen;
    std::optional<Date> lastActive;
  };
  struct Program {
    std::string path;
    std::string name;
  };

  std::optional<Program> program(ProcessID pid, const UsageByPID& processes);
  std::optional<DevServer> server(ProcessID pid, const UsageByPID& processes);
  void addUse(DevServer& server, const UsageByPID& processes, const ChildrenByPID& children) const;
  Date lastActive(const DevServer& server, Date now);

  ProcessTable& table_;
  const DevServerTables& rules_;
  std::string home_;
  FileExists exists_;
  IsDesktopProgram isDesktopProgram_;
  const Clock& clock_;
  Date launchDate_;
  PortsByPID portsByPID_;
  std::unordered_map<ProcessID, Sighting> sightings_;
};

} // namespace korvell
