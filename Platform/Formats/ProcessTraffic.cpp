#include "Platform/Formats/ProcessTraffic.h"

#include "Base/Text.h"

namespace korvell {

namespace {

std::optional<ProcessID> trailingProcessID(std::string_view nameAndID) {
  const auto point = nameAndID.rfind('.');
  if (point == std::string_view::npos) return std::nullopt;
  return parseInteger<ProcessID>(nameAndID.substr(point + 1));
}

} // namespace

ProcessTraffic parseProcessTraffic(std::string_view listing) {
  ProcessTraffic traffic;
  const auto lines = splitLines(listing);
  for (size_t i = 1; i < lines.size(); ++i) {
    const auto fields = split(lines[i], ',');
    if (fields.size() < 3) continue;
    const auto pid = trailingProcessID(fields[0]);
    const auto received = parseInteger<std::uint64_t>(fields[1]);
    const auto sent = parseInteger<std::uint64_t>(fields[2]);
    if (pid && received && sent) traffic[*pid] = {.in = *received, .out = *sent};
  }
  return traffic;
}

ProcessTraffic readProcessTraffic(const CommandRunner& run) {
  // One sample, a row a process, plain numbers, no name look-ups, two columns.
  const auto result =
      run("/usr/bin/nettop", {"-P", "-L", "1", "-x", "-n", "-J", "bytes_in,bytes_out"}, Seconds{3}, {});
  if (!result || result->timedOut) return {};
  return parseProcessTraffic(result->output);
}

} // namespace korvell
