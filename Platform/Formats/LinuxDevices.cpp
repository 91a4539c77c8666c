#include "Platform/Formats/LinuxDevices.h"

#include "Base/Text.h"
#include "Platform/Formats/TextScanner.h"

#include <algorithm>

namespace korvell {

void parseDiskStats(std::string_view text, std::vector<BlockDeviceLine>& into) {
  constexpr std::uint64_t sector = 512;
  into.clear();
  TextScanner scanner(text);
  do {
    BlockDeviceLine line;
    line.major = std::uint32_t(scanner.number());
    line.minor = std::uint32_t(scanner.number());
    line.name = scanner.word();
    if (line.name.empty()) continue;
    scanner.skipWords(2); // reads, reads merged
    line.bytes.in = scanner.number() * sector;
    scanner.skipWords(3); // milliseconds reading, writes, writes merged
    line.bytes.out = scanner.number() * sector;
    into.push_back(line);
  } while (scanner.nextLine());
}

bool mayBeWholeDisk(std::string_view name) {
  constexpr std::string_view prefixes[] = {"loop", "ram", "zram", "zd", "sr", "fd", "nbd", "dm-", "md"};
  return std::ranges::none_of(prefixes, [&](std::string_view prefix) { return name.starts_with(prefix); });
}

std::uint64_t blockDeviceIdentity(const BlockDeviceLine& line) {
  std::uint32_t hash = 2166136261u; // FNV-1a
  for (const char c : line.name) hash = (hash ^ std::uint8_t(c)) * 16777619u;
  return std::uint64_t(hash) << 32 | (line.major << 20 | (line.minor & 0xfffff));
}

void parseNetDev(std::string_view text, std::vector<NetworkLine>& into) {
  into.clear();
  TextScanner scanner(text);
  do {
    const auto line = scanner.restOfLine();
    const auto colon = line.rfind(':'); // an alias may have a colon in its name
    if (colon == std::string_view::npos) continue;
    TextScanner figures(line.substr(colon + 1));
    NetworkLine found{.name = line.substr(0, colon)};
    found.bytes.in = figures.number();
    figures.skipWords(7);
    found.bytes.out = figures.number();
    into.push_back(found);
  } while (scanner.nextLine());
}

namespace {

struct Route {
  std::string_view name;
  std::uint64_t metric = 0;
};

/// Of the routes met so far the one with the lowest metric; of equals the first.
void keepBetter(Route& best, const Route& route) {
  if (best.name.empty() || route.metric < best.metric) best = route;
}

} // namespace

std::string_view parseDefaultRoute(std::string_view text) {
  Route best;
  TextScanner scanner(text);
  while (scanner.nextLine()) { // the first line is a heading
    const auto name = scanner.word();
    const auto destination = scanner.word();
    scanner.skipWords(4); // gateway, flags, references, uses
    const auto metric = scanner.number();
    const auto mask = scanner.word();
    if (destination == "00000000" && mask == "00000000") keepBetter(best, {name, metric});
  }
  return best.name;
}

std::string_view parseDefaultRoute6(std::string_view text) {
  constexpr std::uint64_t up = 0x1, refuses = 0x200; // RTF_UP, RTF_REJECT
  constexpr int hexadecimal = 16;
  Route best;
  TextScanner scanner(text);
  do {
    const auto destination = scanner.word();
    const auto prefixLength = scanner.word();
    scanner.skipWords(3); // source, its prefix length, gateway
    const auto metric = parseInteger<std::uint64_t>(scanner.word(), hexadecimal).value_or(~0ull);
    scanner.skipWords(2); // references, uses
    const auto flags = parseInteger<std::uint64_t>(scanner.word(), hexadecimal).value_or(0);
    const bool everywhere = prefixLength == "00" && destination.find_first_not_of('0') == destination.npos;
    if (everywhere && (flags & (up | refuses)) == up) keepBetter(best, {scanner.word(), metric});
  } while (scanner.nextLine());
  return best.name;
}

} // namespace korvell
