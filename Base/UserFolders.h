#pragma once
// Where a user's things are, as a value. HOME decides; the passwd entry of the user is only asked by main
// when HOME is unset.

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// An environment variable, or nothing when it is unset or empty.
using Environment = std::function<std::optional<std::string>(std::string_view name)>;
/// The process's own environment.
Environment processEnvironment();

struct UserFolders {
  std::string home;       ///< without a trailing slash
  std::string data;       ///< Korvell's databases and the widget's document
  std::string config;     ///< Korvell's settings
  std::string runtime;    ///< sockets; empty where the system has no such folder
  std::string cacheHome;  ///< where programs keep what can be rebuilt
  std::string dataHome;   ///< where programs keep a user's data (the Trash lives here on Linux)
  std::string configHome; ///< where programs keep their settings

  bool operator==(const UserFolders&) const = default;
};

/// The XDG base directories; a relative value of an XDG variable is ignored, as that convention asks, and so
/// is a cache folder that is the home folder or holds it: caches are emptied.
UserFolders linuxUserFolders(const Environment& environment);
/// ~/Library and its folders.
UserFolders macOSUserFolders(const Environment& environment);

/// Creates a folder with its parents, those that it creates with mode 0700; true when it is there afterwards.
bool ensurePrivateFolder(const std::string& path);

} // namespace korvell
