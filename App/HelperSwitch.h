#pragma once
// The privileged helper as the user meets it, in a terminal and in the settings: what it is for, and turning
// it on and off.

#include "Base/Cancellation.h"
#include "Base/Shell.h"
#include "Platform/Host.h"

#include <string>

namespace korvell {

std::string helperMissing();
/// What it tells that the system hides; on a copy that may not offer it, why not.
std::string helperExplanation(UsageHelperService& helper, SystemKind system);
/// Whether the reason is that this copy's signature can't be pinned.
bool lacksSignature(UsageHelperService& helper, SystemKind system);

/// Turns the helper on and off for somebody at a desktop. Where that takes an administrator, which the
/// application never is, the desktop asks for one and runs the command line tool. Blocks for as long as the
/// person thinks.
class HelperSwitch {
public:
  struct Services {
    UsageHelperService& helper;
    SystemKind system = SystemKind::linuxDesktop;
    std::uint32_t user = 0; ///< effective user id
    std::string tool;       ///< the command line tool's path
    std::string asker;      ///< the desktop's program that asks for an administrator; empty without one
    CommandRunner run;
  };

  explicit HelperSwitch(Services services) : services_(std::move(services)) {}

  /// The desktop's asker where this system has one.
  static std::string systemAsker();

  Outcome turn(bool on, const Cancellation& cancellation = {}) const;

private:
  Outcome turnAsAdministrator(const std::string& verb, const Cancellation& cancellation) const;

  Services services_;
};

} // namespace korvell
