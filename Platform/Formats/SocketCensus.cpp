#include "Platform/Formats/SocketCensus.h"

#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr std::string_view prefix = "Tcp: ";

/// The value in the column of that name.
std::optional<std::uint64_t> column(std::string_view names, std::string_view values, std::string_view name) {
  const auto titles = split(names, ' ');
  const auto figures = split(values, ' ');
  const auto at = static_cast<std::size_t>(std::ranges::find(titles, name) - titles.begin());
  return at < titles.size() && at < figures.size() ? parseInteger<std::uint64_t>(figures[at]) : std::nullopt;
}

} // namespace

std::optional<ConnectionsBorn> parseConnectionsBorn(std::string_view snmp) {
  std::optional<std::string_view> names;
  for (const auto line : split(snmp, '\n')) {
    if (!line.starts_with(prefix)) continue;
    if (!names) {
      names = line;
      continue;
    }
    const auto active = column(*names, line, "ActiveOpens");
    const auto passive = column(*names, line, "PassiveOpens");
    return active && passive ? std::optional(ConnectionsBorn{*active, *passive}) : std::nullopt;
  }
  return std::nullopt;
}

bool SocketCensus::take(SocketSource& source, Seconds now, std::vector<SocketRecord>& alive) {
  alive.clear();
  const auto born = source.born();
  const bool noneNew = born && born == born_ && now - lastWalk_ < longestWithoutWalk;
  const bool asked = noneNew && connections_.size() <= mostAsked && source.dumpListening(alive) &&
                     source.ask(connections_, alive);
  if (!asked) {
    born_.reset();
    alive.clear();
    if (!source.dump(alive)) return false;
    born_ = born;
    lastWalk_ = now;
  }
  if (onlyUser_)
    std::erase_if(alive, [this](const SocketRecord& record) { return record.user != *onlyUser_; });
  connections_.clear();
  std::ranges::copy_if(alive, std::back_inserter(connections_),
                       [](const SocketRecord& record) { return !record.listening; });
  return true;
}

} // namespace korvell
