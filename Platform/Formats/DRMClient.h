#pragma once
// What the graphics drivers of Linux write about each open file of theirs (the drm-usage-stats document of
// the kernel): who has it open, for how long the engines worked for it, how much memory it holds.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

struct DRMClient {
  std::string device; ///< PCI address of the card, "0000:00:02.0"
  /// Files that share it (after a fork, or by duplication) tell the same figures.
  std::uint64_t id = 0;
  /// Nanoseconds by kind of engine; of a kind with several engines, the mean over them.
  std::map<std::string, std::uint64_t> engineTime;
  std::uint64_t memory = 0; ///< bytes resident; drivers tell it since Linux 6.5
};

/// Nothing for the text of a file that is no graphics client or of a driver that counts no times.
std::optional<DRMClient> parseDRMClient(std::string_view fdinfo);

} // namespace korvell
