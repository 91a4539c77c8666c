#include "Platform/Formats/ProcessFiles.h"

#include <array>

namespace korvell {

namespace {

/// Takes the next word off the front; empty at the end.
std::string_view takeWord(std::string_view& text) {
  const auto begin = text.find_first_not_of(" \t\n");
  if (begin == std::string_view::npos) return text = {};
  const auto end = std::min(text.find_first_of(" \t\n", begin), text.size());
  const auto word = text.substr(begin, end - begin);
  text.remove_prefix(end);
  return word;
}

/// The number behind "Name:" at the beginning of a line, the `index`th of that line.
std::optional<std::uint64_t> lineValue(std::string_view text, std::string_view name, int index = 0) {
  for (std::size_t at = 0; at < text.size();) {
    auto line = text.substr(at, text.find('\n', at) - at);
    at += line.size() + 1;
    if (line.size() <= name.size() || !line.starts_with(name) || line[name.size()] != ':') continue;
    line.remove_prefix(name.size() + 1);
    for (; index > 0; --index) takeWord(line);
    return parseInteger<std::uint64_t>(takeWord(line));
  }
  return std::nullopt;
}

constexpr std::uint64_t kernelThreadFlag = 0x00200000;

} // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) return std::nullopt;
  ProcessStat stat{.comm = text.substr(open + 1, close - open - 1)};
  text.remove_prefix(close + 1);
  const auto state = takeWord(text);
  if (state.size() != 1) return std::nullopt;
  stat.state = state[0];

  std::array<std::int64_t, 23> field{}; // 4 to 22, as proc(5) numbers them
  for (std::size_t i = 4; i < field.size(); ++i) {
    const auto number = parseInteger<std::int64_t>(takeWord(text));
    if (!number) return std::nullopt;
    field[i] = *number;
  }
  stat.parent = static_cast<std::int32_t>(field[4]);
  stat.kernelThread = static_cast<std::uint64_t>(field[9]) & kernelThreadFlag;
  stat.childMinorFaults = static_cast<std::uint64_t>(field[11]);
  stat.cpuTicks = static_cast<std::uint64_t>(field[14]) + static_cast<std::uint64_t>(field[15]);
  stat.threads = field[20];
  stat.start = static_cast<std::uint64_t>(field[22]);
  return stat;
}

std::optional<ProcessStatm> parseProcessStatm(std::string_view text) {
  takeWord(text);
  const auto resident = parseInteger<std::uint64_t>(takeWord(text));
  const auto shared = parseInteger<std::uint64_t>(takeWord(text));
  if (!resident || !shared) return std::nullopt;
  return ProcessStatm{*resident, *shared};
}

std::optional<ProcessStatus> parseProcessStatus(std::string_view text) {
  const auto user = lineValue(text, "Uid", 1);
  if (!user) return std::nullopt;
  return ProcessStatus{.effectiveUser = static_cast<std::uint32_t>(*user),
                       .rssAnon = lineValue(text, "RssAnon").value_or(0) * 1024,
                       .vmSwap = lineValue(text, "VmSwap").value_or(0) * 1024};
}

std::optional<std::int32_t> innermostProcessID(std::string_view text) {
  constexpr std::string_view name = "NSpid:";
  for (const auto line : splitLines(text)) {
    if (!line.starts_with(name)) continue;
    const auto ids = trimmed(line.substr(name.size()));
    const auto last = ids.find_last_of(" \t");
    return last == std::string_view::npos ? std::nullopt : parseInteger<std::int32_t>(ids.substr(last + 1));
  }
  return std::nullopt;
}

std::optional<ProcessIO> parseProcessIO(std::string_view text) {
  const auto read = lineValue(text, "read_bytes");
  const auto written = lineValue(text, "write_bytes");
  if (!read || !written) return std::nullopt;
  return ProcessIO{*read, *written};
}

std::string_view controlGroup(std::string_view text) {
  std::string_view unified, systemd, other;
  for (const auto line : splitLines(text)) {
    const auto first = line.find(':');
    const auto second = first == std::string_view::npos ? first : line.find(':', first + 1);
    if (second == std::string_view::npos) continue;
    const auto controllers = line.substr(first + 1, second - first - 1);
    const auto path = line.substr(second + 1);
    if (line.starts_with("0::"))
      unified = path;
    else if (controllers == "name=systemd")
      systemd = path;
    else if (other.size() <= 1)
      other = path;
  }
  for (const auto path : {systemd, unified, other})
    if (path.size() > 1) return path;
  return unified.empty() ? systemd.empty() ? other : systemd : unified;
}

std::optional<std::string_view> environmentValue(std::string_view environ, std::string_view name) {
  for (std::size_t at = 0; at < environ.size();) {
    const auto entry = environ.substr(at, environ.find('\0', at) - at);
    at += entry.size() + 1;
    if (entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == '=')
      return entry.substr(name.size() + 1);
  }
  return std::nullopt;
}

std::optional<AnonymousMemory> parseAnonymousMemory(std::string_view meminfo) {
  const auto anonymous = lineValue(meminfo, "AnonPages");
  const auto total = lineValue(meminfo, "SwapTotal");
  const auto free = lineValue(meminfo, "SwapFree");
  if (!anonymous || !total || !free) return std::nullopt;
  return AnonymousMemory{*anonymous * 1024, (*total > *free ? *total - *free : 0) * 1024};
}

} // namespace korvell
