#pragma once
// The usage helper on Linux: a program started on demand by a systemd socket unit.
//
// Enabling copies the program to where only root can change it, unless a package has put it there, writes the
// two unit files, makes the group whose members may ask and adds the user who called sudo to it, and enables
// the socket. Disabling takes the units and the copy away again; the group stays. Both need root.

#include "Base/Shell.h"
#include "Base/UserFolders.h"
#include "Platform/UsageHelper.h"

#include <functional>
#include <string>

namespace korvell {

class LinuxUsageHelper final : public UsageHelperService {
public:
  struct Sources {
    std::string root;               ///< before every path below; empty for the machine itself
    std::string ownFolder;          ///< where this program is; the helper beside it or in ../libexec/korvell
    Environment environment;        ///< SUDO_UID, PKEXEC_UID
    CommandRunner run = Shell::run; ///< systemctl, groupadd, usermod
    std::function<bool()> isAdministrator;
    std::function<std::string(std::uint32_t)> userName; ///< empty when there is none of that id
    std::function<bool()> groupExists;
  };
  static Sources systemSources(const Environment& environment);

  explicit LinuxUsageHelper(Sources sources) : sources_(std::move(sources)) {}

  UsageHelperStatus status() override;
  std::shared_ptr<UsageHelperConnection> connect(std::function<void()> lost) override;
  bool isInstalled() override;
  std::string group() override;
  bool isOffered() override;
  Outcome enable() override;
  Outcome disable() override;
  void openApprovalSettings() override {}

private:
  std::string at(const char* path) const { return sources_.root + path; }
  /// `withoutSystemd` says what to do where there is none.
  Outcome checkAdministrator(const std::string& withoutSystemd) const;
  std::string ownHelper() const;
  Outcome installFiles() const;
  Outcome admitUsers() const;
  /// Runs the first of the programs that is there.
  Outcome step(const std::string& name, const std::vector<std::string>& arguments) const;

  Sources sources_;
};

} // namespace korvell
