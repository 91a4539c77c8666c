#include "UI/Parts/Tiles.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Kit/ChartRules.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/Reasons.h"
#include "UI/Parts/SpokenFigure.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::size_t pictureValues = 60;
constexpr double markedChange = 0.1; ///< of the first value: below it a series is steady

struct Look {
  Metric metric;
  SidebarItem section;
  Icon icon;
  Token line;
  KnownPart part;
};
constexpr Look looks[] = {
    {Metric::cpu, SidebarItem::cpu, Icon::cpu, Token::cpu, KnownPart::processor},
    {Metric::memory, SidebarItem::memory, Icon::memory, Token::memory, KnownPart::memory},
    {Metric::disk, SidebarItem::disk, Icon::disk, Token::disk, KnownPart::disks},
    {Metric::network, SidebarItem::network, Icon::network, Token::network, KnownPart::network},
    {Metric::gpu, SidebarItem::gpu, Icon::gpu, Token::gpu, KnownPart::graphics},
    {Metric::energy, SidebarItem::energy, Icon::battery, Token::energy, KnownPart::power},
};

std::string memoryText(double bytes) { return Format::memory(bytes); }

std::string freeText(const SystemSnapshot& snapshot, const KnownParts& known) {
  if (!known.has(KnownPart::volumes) || snapshot.disk.volumes.empty()) return {};
  return localized("{free} free", {{"free", Format::bytes(double(snapshot.disk.volumes.front().available))}});
}

void fillProcessor(Tile& tile, const SystemSnapshot& snapshot, const KnownParts& known) {
  const auto& cpu = snapshot.cpu;
  tile.figure = figureOf(Unit::percent, cpu.total);
  tile.caption = localized("user {user} · system {system}",
                           {{"user", Format::percent(cpu.user)}, {"system", Format::percent(cpu.system)}});
  if (known.has(KnownPart::load))
    tile.shortCaption = localized("load {n}", {{"n", Format::decimal(cpu.load1, 2)}});
}

void fillMemory(Tile& tile, const SystemSnapshot& snapshot, const KnownParts&) {
  const auto& memory = snapshot.memory;
  const auto total = memoryText(double(memory.total));
  tile.figure = figureOf(Unit::memory, double(memory.used()));
  tile.caption =
      localized("of {total} · {pressure}", {{"total", total}, {"pressure", title(memory.pressure)}});
  tile.shortCaption = localized("of {total}", {{"total", total}});
}

void fillDisk(Tile& tile, const SystemSnapshot& snapshot, const KnownParts& known) {
  if (known.has(KnownPart::disks))
    tile.figure = figureOf(Unit::bytesPerSecond, snapshot.disk.readRate + snapshot.disk.writeRate);
  tile.caption = tile.shortCaption = freeText(snapshot, known);
}

void fillNetwork(Tile& tile, const SystemSnapshot& snapshot, const KnownParts&) {
  tile.lead = "↓";
  tile.figure = figureOf(Unit::bytesPerSecond, snapshot.network.inRate);
  tile.caption = tile.shortCaption = "↑ " + Format::rate(snapshot.network.outRate);
}

void fillGraphics(Tile& tile, const SystemSnapshot& snapshot, const KnownParts& known) {
  tile.figure = figureOf(Unit::percent, snapshot.gpu.utilization);
  if (known.has(KnownPart::graphicsMemory))
    tile.caption = localized("{memory} in use", {{"memory", memoryText(double(snapshot.gpu.memoryInUse))}});
}

std::string remainingText(const BatteryStats& battery) {
  if (battery.isCharging) return localized("charging");
  if (battery.onAC) return localized("on power");
  if (!battery.minutesRemaining) return localized("on battery");
  return localized("{t} left", {{"t", Format::duration(std::chrono::minutes(*battery.minutesRemaining))}});
}

/// The machine's power without a battery, the charge with one.
void fillEnergy(Tile& tile, const SystemSnapshot& snapshot, const KnownParts& known) {
  const auto& battery = snapshot.battery;
  const bool hasPower = known.has(KnownPart::power);
  if (battery.present && known.has(KnownPart::battery)) {
    tile.figure = figureOf(Unit::percent, battery.percent);
    tile.caption = remainingText(battery);
    if (hasPower)
      tile.caption = localized("{power} · {state}",
                               {{"power", Format::watts(battery.systemPower)}, {"state", tile.caption}});
    return;
  }
  tile.title = localized("Power");
  tile.figure = figureOf(Unit::watts, hasPower ? std::optional(battery.systemPower) : std::nullopt);
  if (!battery.present) tile.caption = localized("This machine has no battery.");
}

constexpr void (*fill[])(Tile&, const SystemSnapshot&, const KnownParts&) = {
    fillProcessor, fillMemory, fillDisk, fillNetwork, fillGraphics, fillEnergy};

std::vector<std::optional<double>> pictureOf(const std::vector<HistoryPoint>& series, Date now) {
  std::vector<std::optional<double>> values(pictureValues);
  const Seconds step = Model::liveSpan / double(pictureValues);
  for (const auto& point : series) {
    const auto age = std::floor((now - point.date) / step);
    if (age >= 0 && age < double(pictureValues)) values[pictureValues - 1 - std::size_t(age)] = point.value;
  }
  // At the slow pace a reading stands for the ones after it; a longer silence is a gap.
  constexpr Seconds longestPace{25};
  const auto bridged = std::size_t(longestPace / step);
  std::size_t since = 0;
  std::optional<double> last;
  for (auto& value : values) {
    since = value ? 0 : since + 1;
    if (value)
      last = value;
    else if (last && since < bridged)
      value = last;
  }
  return values;
}

double topOf(Metric metric, const SystemSnapshot& snapshot,
             const std::vector<std::optional<double>>& values) {
  if (metric == Metric::memory) return std::max(1.0, double(snapshot.memory.total));
  double greatest = 0;
  for (const auto& value : values) greatest = std::max(greatest, value.value_or(0));
  return roundTop(scaleOf(metric), greatest);
}

/// Of a series that reaches back that far; a younger one says nothing.
std::string courseText(const std::vector<HistoryPoint>& series) {
  constexpr Seconds longEnough{240};
  if (series.size() < 2 || series.back().date - series.front().date < longEnough) return {};
  const double first = series.front().value, last = series.back().value;
  const double change = last - first;
  if (std::abs(change) <= std::abs(first) * markedChange) return localized("steady over 5 minutes");
  return change > 0 ? localized("rising over 5 minutes") : localized("falling over 5 minutes");
}

std::string nameOf(const Tile& tile, const std::string& course) {
  if (figureOf("–") == tile.figure)
    return tile.reason.empty()
               ? tile.title
               : localized("{title}, {reason}", {{"title", tile.title}, {"reason", tile.reason}});
  const auto figure = spokenFigure(tile.figure);
  if (course.empty()) return localized("{title}, {figure}", {{"title", tile.title}, {"figure", figure}});
  return localized("{title}, {figure}, {course}",
                   {{"title", tile.title}, {"figure", figure}, {"course", course}});
}

Tile tileOf(const Look& look, const Model& model) {
  const auto& snapshot = *model.snapshot;
  const auto& known = *model.known;
  Tile tile{.section = look.section, .icon = look.icon, .line = look.line, .title = title(look.section)};
  tile.figure = {noFigure, {}};
  if (!*model.hasSample) {
    tile.caption = tile.shortCaption = localized("Measuring…");
    tile.reason = tile.caption;
    tile.values.resize(pictureValues);
    tile.name = nameOf(tile, {});
    return tile;
  }
  // Of these two something may be known without the measure itself.
  const bool hasMore = look.metric == Metric::energy || look.metric == Metric::disk;
  if (hasMore || known.has(look.part)) fill[std::size_t(look.metric)](tile, snapshot, known);
  const auto found = model.live->find(look.metric);
  const auto series =
      known.has(look.part) && found != model.live->end() ? found->second : std::vector<HistoryPoint>();
  tile.values = pictureOf(series, snapshot.date);
  tile.top = topOf(look.metric, snapshot, tile.values);
  if (tile.figure.number == noFigure) {
    tile.reason = reasonOf(look.part, known[look.part]);
    if (tile.caption.empty()) tile.caption = tile.reason;
  }
  tile.name = nameOf(tile, courseText(series));
  return tile;
}

} // namespace

std::vector<Tile> measureTiles(const Model& model) {
  std::vector<Tile> tiles;
  for (const auto& look : looks) tiles.push_back(tileOf(look, model));
  return tiles;
}

ValueScale scaleOf(Metric metric) {
  switch (metric) {
  case Metric::cpu:
  case Metric::gpu:
    return ValueScale::percent;
  case Metric::memory:
    return ValueScale::memory;
  case Metric::disk:
  case Metric::network:
    return ValueScale::rate;
  case Metric::energy:
    return ValueScale::watts;
  }
  return ValueScale::percent;
}

} // namespace korvell
