#include "Platform/Formats/ListeningPorts.h"

#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

std::optional<std::uint16_t> portOf(std::string_view address) {
  const auto colon = address.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  return parseInteger<std::uint16_t>(address.substr(colon + 1));
}

void insertSorted(std::vector<int>& ports, int port) {
  const auto place = std::lower_bound(ports.begin(), ports.end(), port);
  if (place == ports.end() || *place != port) ports.insert(place, port);
}

} // namespace

PortsByPID parseListeningPorts(std::string_view listing) {
  PortsByPID table;
  std::optional<ProcessID> pid;
  for (const auto line : splitLines(listing)) {
    if (line.starts_with('p')) {
      pid = parseInteger<ProcessID>(line.substr(1));
    } else if (line.starts_with('n') && pid) {
      if (const auto port = portOf(line.substr(1))) insertSorted(table[*pid], *port);
    }
  }
  return table;
}

PortsByPID readListeningPorts(const CommandRunner& run) {
  // No name look-ups; fields process id and name. The exit status says only whether anything was found.
  const auto result = run("/usr/sbin/lsof", {"-nP", "-iTCP", "-sTCP:LISTEN", "-F", "pn"}, Seconds{4}, {});
  if (!result || result->timedOut) return {};
  return parseListeningPorts(result->output);
}

bool isListenedOn(std::string_view listing, int port) {
  const auto lines = splitLines(listing);
  return std::ranges::any_of(lines, [port](std::string_view line) {
    auto words = split(line, ' ');
    std::erase(words, std::string_view());
    if (words.size() < 6 || words[5] != "LISTEN") return false;
    const auto address = words[3];
    return parseInteger<int>(address.substr(address.rfind('.') + 1)) == port;
  });
}

std::optional<bool> askWhetherListenedOn(const CommandRunner& run, int port) {
  const auto result = run("/usr/sbin/netstat", {"-an", "-p", "tcp"}, Seconds{4}, {});
  if (!result || !result->succeeded()) return std::nullopt;
  return isListenedOn(result->output, port);
}

} // namespace korvell
