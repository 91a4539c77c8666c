#pragma once
// Where a user's things are, as a value. HOME decides; where it names no folder, the password database, which
// main asks. The root folder is nobody's home: what belongs to the whole system would pass for the user's.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// An environment variable, or nothing when it is unset or empty.
using Environment = std::function<std::optional<std::string>(std::string_view name)>;
/// The process's own environment.
Environment processEnvironment();

/// The user's home folder as the password database has it; nothing without an entry or with a useless one.
std::optional<std::string> passwordHome();
/// The same environment, but for HOME: where that is unset, no absolute path or the root folder, it is what
/// `home` tells, and absent when that is nothing either.
Environment withHome(Environment environment, const std::function<std::optional<std::string>()>& home);

struct UserFolders {
  /// Stands for a home folder that nobody knows. Nothing can be below it, not even for root: readers find
  /// nothing there, and what is written fails.
  static constexpr const char* noHome = "/dev/null";
  bool hasHome() const { return home != noHome; }

  std::string home;       ///< without a trailing slash; noHome when unknown
  std::string data;       ///< Korvell's databases and the widget's document
  std::string config;     ///< Korvell's settings
  std::string runtime;    ///< sockets; empty where the system has no such folder
  std::string cacheHome;  ///< where programs keep what can be rebuilt
  std::string dataHome;   ///< where programs keep a user's data (the Trash lives here on Linux)
  std::string configHome; ///< where programs keep their settings

  bool operator==(const UserFolders&) const = default;
};

/// The XDG base directories; a relative value of an XDG variable is ignored, as that convention asks, and so
/// are the root, however it is spelt, and a cache folder that is the home folder or holds it: caches are
/// emptied.
UserFolders linuxUserFolders(const Environment& environment);
/// ~/Library and its folders.
UserFolders macOSUserFolders(const Environment& environment);

/// Creates a folder with its parents, those that it creates with mode 0700; true when it is there afterwards.
bool ensurePrivateFolder(const std::string& path);

} // namespace korvell
