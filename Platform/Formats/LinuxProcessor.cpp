#include "Platform/Formats/LinuxProcessor.h"

#include "Base/Text.h"
#include "Platform/Formats/TextScanner.h"

#include <algorithm>

namespace korvell {

std::optional<std::map<int, CoreTicks>> parseProcStat(std::string_view text) {
  std::map<int, CoreTicks> cores;
  TextScanner scanner(text);
  while (scanner.accept("cpu")) {
    const bool isSum = scanner.accept(" ");
    if (const auto number = isSum ? std::nullopt : parseInteger<int>(scanner.word())) {
      CoreTicks ticks;
      ticks.user = scanner.number();
      ticks.nice = scanner.number();
      ticks.system = scanner.number();
      ticks.idle = scanner.number();
      ticks.idle += scanner.number();                               // waiting for I/O
      for (int i = 0; i < 3; ++i) ticks.system += scanner.number(); // interrupts, soft ones, stolen
      cores.insert_or_assign(cores.end(), *number, ticks);
    }
    if (!scanner.nextLine()) return std::nullopt;
  }
  return cores;
}

std::optional<double> parseDecimal(std::string_view text) { return takeDecimal(text); }

std::optional<double> parseLoadAverage(std::string_view text) { return parseDecimal(trimmed(text)); }

std::string parseCPUModel(std::string_view cpuinfo) {
  TextScanner scanner(cpuinfo);
  do {
    if (!scanner.accept("model name")) continue;
    scanner.word(); // the colon
    return std::string(scanner.restOfLine());
  } while (scanner.nextLine());
  return {};
}

std::vector<int> parseCPUList(std::string_view text) {
  constexpr std::size_t mostCPUs = 1 << 16;
  std::vector<int> numbers;
  for (const auto range : split(trimmed(text), ',')) {
    const auto dash = range.find('-');
    const auto first = parseInteger<int>(range.substr(0, dash));
    const auto last = dash == std::string_view::npos ? first : parseInteger<int>(range.substr(dash + 1));
    if (!first || !last || *first < 0 || *last >= int(mostCPUs)) continue;
    for (int n = *first; n <= *last && numbers.size() < mostCPUs; ++n) numbers.push_back(n);
  }
  return numbers;
}

CoreKinds coreKinds(const std::vector<std::uint64_t>& capacities) {
  if (capacities.empty()) return {};
  const auto most = *std::ranges::max_element(capacities);
  const auto fast = int(std::ranges::count_if(capacities, [&](auto c) { return c * 10 >= most * 8; }));
  const auto slow = int(capacities.size()) - fast;
  return slow ? CoreKinds{fast, slow} : CoreKinds{};
}

} // namespace korvell
