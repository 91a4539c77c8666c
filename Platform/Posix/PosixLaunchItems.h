#pragma once
// Launch files as both systems keep them: files of one suffix in a few folders. A system adds its folders and
// the program that knows the jobs.

#include "Base/UserFolders.h"
#include "Platform/LaunchItems.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct LaunchFolder {
  LaunchScope scope = LaunchScope::user;
  LaunchFormat format = LaunchFormat::propertyList;
  std::string path;
  /// Where the manager looks for files of these names, what it finds first goes first: this folder and
  /// others. A service's drop-ins are in all of them.
  std::vector<std::string> searched;
  bool operator==(const LaunchFolder&) const = default;
};

/// The folders that people and installers put things into; those of the system's own image are not listed.
/// `root` stands before the paths that belong to no user.
std::vector<LaunchFolder> macOSLaunchFolders(const UserFolders& folders, const std::string& root = {});
std::vector<LaunchFolder> linuxLaunchFolders(const UserFolders& folders, const std::string& root = {});
ProgramPlaces macOSProgramPlaces();
/// `searchPath`: the folders of the session's PATH, separated by colons; relative ones are left out.
ProgramPlaces linuxProgramPlaces(const UserFolders& folders, std::string_view searchPath,
                                 const std::string& root = {});

class PosixLaunchItems : public LaunchItems {
public:
  PosixLaunchItems(std::vector<LaunchFolder> folders, ProgramPlaces places)
      : folders_(std::move(folders)), places_(std::move(places)) {}

  /// A service's drop-ins ("name.service.d/*.conf" and those for its prefix and its type) follow its file in
  /// its bytes, as systemd reads them. A link is followed in the folders of property lists; in those of Linux
  /// it is the enablement, another name or the mask of a file that stands elsewhere, and left out.
  std::vector<LaunchFile> files() override;
  bool isMissing(const std::string& path) override;
  const ProgramPlaces& places() const override { return places_; }

protected:
  const std::vector<LaunchFolder>& folders() const { return folders_; }

private:
  std::vector<LaunchFolder> folders_;
  ProgramPlaces places_;
};

} // namespace korvell
