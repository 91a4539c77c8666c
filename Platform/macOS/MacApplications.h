#pragma once
// Applications as the workspace and their bundles know them.

#include "Platform/ProcessTable.h"

namespace korvell {

/// The workspace brings its list up to date when the main run loop turns; a program without one sees the
/// applications that ran when it asked first, less those that have ended.
class MacRunningApplications final : public RunningApplications {
public:
  std::vector<RunningApplication> list() override;
  bool quit(ProcessID pid, bool force) override;
};

/// In the user's language where the bundle has it.
std::optional<std::string> macBundleInfo(const std::string& bundlePath, std::string_view key);

} // namespace korvell
