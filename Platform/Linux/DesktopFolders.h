#pragma once
// Desktop entries of the user's and the system's applications folders, those that flatpak and snap export
// included.

#include "Base/UserFolders.h"
#include "Platform/DesktopFiles.h"

#include <string>
#include <vector>

namespace korvell {

class DesktopFolders final : public DesktopFiles {
public:
  /// Both lists in the order of precedence, absolute.
  DesktopFolders(std::vector<std::string> applicationFolders, std::vector<std::string> programFolders)
      : applications_(std::move(applicationFolders)), programs_(std::move(programFolders)) {}
  /// $XDG_DATA_HOME, $XDG_DATA_DIRS, the export folders, and $PATH.
  static DesktopFolders of(const UserFolders& folders, const Environment& environment);

  std::uint64_t stamp() override;
  std::vector<DesktopFile> read() override;
  std::optional<std::string> realProgram(const std::string& program) override;

private:
  std::vector<std::string> applications_;
  std::vector<std::string> programs_;
};

} // namespace korvell
