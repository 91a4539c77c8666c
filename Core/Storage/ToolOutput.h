#pragma once
// What the programs of other makers print about the space they take. Parsed JSON takes forty times its text,
// so that what is far longer than these programs ever print is left unread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// A size as Docker prints it: "1.546GB (85%)", "0B", "12.3 kB", "1.5GiB". Decimal multipliers, binary ones
/// for units with an "i". Anything else, and what is negative or more than an exbibyte, is 0.
std::int64_t dockerBytes(std::string_view text);

/// What `docker system df --format '{{json .}}'` says can be reclaimed, in bytes.
struct DockerUsage {
  std::int64_t containers = 0;
  std::int64_t buildCache = 0;
  std::int64_t images = 0;
  std::int64_t volumes = 0;
  bool operator==(const DockerUsage&) const = default;
};

/// One JSON object a line; other lines, and those of more than 64 KiB, are skipped. Nothing when no line is
/// of use.
std::optional<DockerUsage> parseDockerUsage(std::string_view output);

/// The identifiers of the devices that `simctl list devices --json` says can't be used any more. Only those
/// that are identifiers in form: they become parts of paths. None of a listing of more than 2 MiB.
std::vector<std::string> unavailableSimulators(std::string_view output);

} // namespace korvell
