#pragma once
// The files by which the system starts programs by itself: launch agents and daemons on macOS, autostart
// entries and systemd services on Linux. What the files say is read by Core/Startup.
//
// From any thread but the main one, and from several at once. files() and isMissing() read the disk;
// loadedJobs() and effective() ask whoever runs the jobs, and wait some seconds at most; stop() and removed()
// may start a program.

#include "Base/Result.h"
#include "Platform/FileTree.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// Whose programs a file starts: this user's, every user's, or the system's own.
enum class LaunchScope { user, allUsers, system };

enum class LaunchFormat { propertyList, desktopEntry, systemdService };

struct LaunchFile {
  LaunchScope scope = LaunchScope::user;
  LaunchFormat format = LaunchFormat::propertyList;
  std::string path;  ///< absolute
  std::string bytes; ///< its content
  /// What was read, for moving exactly that: the path without links before its last part, and the object.
  std::string location;
  FileIdentity identity{};
  bool operator==(const LaunchFile&) const = default;
};

/// A job by its file.
struct LaunchJob {
  LaunchScope scope = LaunchScope::user;
  std::string path; ///< of its file
  std::string label;
  bool operator==(const LaunchJob&) const = default;
};

/// What one manager of jobs tells this user about them.
struct ManagedJobs {
  std::set<std::string> loaded; ///< labels
  std::set<std::string>
      active; ///< labels of those that run or have run and stay; not of those that only try to
  /// By label: whether the manager starts it by itself. Only where it decides that and not the job's file.
  std::map<std::string, bool> enabled;
  std::string silence; ///< why it told nothing, a sentence, localised; empty when it answered
  bool mayRun = false; ///< it told nothing, but may have jobs all the same: it was late, or refused
  bool operator==(const ManagedJobs&) const = default;
};

struct LoadedJobs {
  ManagedJobs user, system;
  const ManagedJobs& of(LaunchScope scope) const { return scope == LaunchScope::system ? system : user; }
};

/// A job as its manager has it, with everything that adds to its file.
struct EffectiveJob {
  bool isThisFile = true; ///< false where another file of the same name goes before it
  bool isActive = false;
  bool looksElsewhere = false;       ///< its programs are looked for in places of its own
  std::vector<std::string> programs; ///< all that it starts: paths, or names
  bool operator==(const EffectiveJob&) const = default;
};

/// Where programs are looked for that a file does not name by a path.
struct ProgramPlaces {
  std::vector<std::string> folders;      ///< of programs, in the order of the search
  std::vector<std::string> flatpakRoots; ///< installations that hold app/ID for each application
};

class LaunchItems {
public:
  virtual ~LaunchItems() = default;
  /// In the order of the scopes, in each in the order of the names' bytes. What can't be read, is no regular
  /// file or is too large to be one of these is left out.
  virtual std::vector<LaunchFile> files() = 0;
  virtual LoadedJobs loadedJobs() = 0;
  /// What their managers say of these jobs, by the path of the file. Only managers that know more than the
  /// files say anything; a job that they can't tell about is absent.
  virtual std::map<std::string, EffectiveJob> effective(const std::vector<LaunchJob>& /*jobs*/) { return {}; }
  /// True only when nothing is at the path, or a link leads nowhere; false when that can't be told.
  virtual bool isMissing(const std::string& path) = 0;
  virtual const ProgramPlaces& places() const = 0;

  /// Ends the job and keeps it from starting again, as far as the system lets this user. A job that isn't
  /// loaded is no failure; a failure says that its file can't be removed, and nothing was changed.
  virtual Outcome stop(const LaunchJob& job) = 0;
  /// Tells the system that a file has gone.
  virtual void removed(const LaunchJob& job) = 0;
};

} // namespace korvell
