#pragma once
// What makes a listening process somebody's development server, and to which project it belongs. Pure; the
// file system comes in as a question.

#include "Core/DevServers/DevServer.h"
#include "Platform/ProcessTable.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvell {

/// What never is a development server on one system.
struct DevServerTables {
  std::span<const std::string_view> skippedPrefixes; ///< of executable paths
  std::span<const std::string_view> skippedParts;    ///< anywhere in an executable's path
  std::span<const std::string_view> infrastructure;  ///< process names beside those of all systems
};

extern const DevServerTables macOSDevServerTables;
extern const DevServerTables linuxDevServerTables;

/// The interpreter of macOS's framework build of Python, whose process bears the name of a stub.
bool isFrameworkPython(std::string_view executable);
bool isSkippedExecutable(std::string_view executable, const DevServerTables& tables);
/// Tunnels, virtual machines and the like: they listen, but nobody developed them in the project folder.
bool isInfrastructure(std::string_view processName, const DevServerTables& tables);

/// The first known runtime that the lower-cased name begins with; otherwise the name as it is.
std::string runtimeLabel(std::string_view processName);

using ParentsByPID = std::unordered_map<ProcessID, ProcessID>;
using ChildrenByPID = std::unordered_map<ProcessID, std::vector<ProcessID>>;
ChildrenByPID childrenOf(const ParentsByPID& parents);
/// The process itself, then its children, their children, and so on; each once.
std::vector<ProcessID> descendants(ProcessID pid, const ChildrenByPID& children);

using FileExists = std::function<bool(const std::string& path)>;

/// A desktop program by the place that it runs from: an installed Electron program (an editor, say), which
/// has its code in "resources" beside it, an AppImage, or a Flatpak, whose "/app" is not the one that we see.
bool isDesktopLayout(const std::string& executable, const FileExists& exists);

struct ProjectFolders {
  std::string service; ///< the deepest folder with a marker
  std::string project; ///< the folder with ".git" at or above it, else the service's
  bool operator==(const ProjectFolders&) const = default;
};
/// Walks up from a directory below `home`, which has no trailing slash. Without any marker both are the
/// directory itself.
ProjectFolders projectFolders(const std::string& directory, const std::string& home,
                              const FileExists& exists);

/// Idle is who was last active more than half an hour ago.
inline constexpr Seconds idleAfter{1800};
inline bool isIdle(const DevServer& server, Date now) { return now - server.lastActive > idleAfter; }
std::vector<DevServer> idleServers(const std::vector<DevProject>& projects, Date now);
/// The same process, known by its id and its start; compared as it is told to others, in milliseconds.
bool isSameServer(const DevServer& a, const DevServer& b);
/// Those of `before` that run and are idle in `projects` too, as they are there.
std::vector<DevServer> stillIdle(const std::vector<DevServer>& before,
                                 const std::vector<DevProject>& projects, Date now);

} // namespace korvell
