#include "UI/Measures/AppList.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/Machine/UsageOrder.h"
#include "UI/Parts/Filter.h"
#include "UI/Parts/Reasons.h"
#include "UI/Parts/SpokenFigure.h"
#include "UI/Parts/TopApps.h"

#include <algorithm>
#include <tuple>

namespace korvell {

namespace {

using Column = BarTableData::Column;

constexpr char partSeparator = '\n'; ///< between an application's key and a process id: no key has it

/// A column of figures: what it shows of a process and of an application, and in what.
struct Figures {
  const char* head;
  double (*ofProcess)(const ProcessUsage&);
  Unit unit;
  KnownPart part;
};

struct Columns {
  Metric metric;
  Token token;
  Figures figure, second;
};

constexpr Figures cpuFigures{"CPU, 100% is one core", [](const ProcessUsage& p) { return p.cpu; },
                             Unit::corePercent, KnownPart::processes};
constexpr Figures memoryFigures{"Memory", [](const ProcessUsage& p) { return double(p.memory); },
                                Unit::memory, KnownPart::processes};

constexpr Columns columnsOf[] = {
    {Metric::cpu, Token::cpu, cpuFigures, memoryFigures},
    {Metric::memory,
     Token::memory,
     memoryFigures,
     {"CPU", cpuFigures.ofProcess, Unit::corePercent, KnownPart::processes}},
    {Metric::disk,
     Token::disk,
     {"Read", [](const ProcessUsage& p) { return p.diskRead; }, Unit::bytesPerSecond, KnownPart::processes},
     {"Written", [](const ProcessUsage& p) { return p.diskWrite; }, Unit::bytesPerSecond,
      KnownPart::processes}},
    {Metric::network,
     Token::network,
     {"Down", [](const ProcessUsage& p) { return p.netIn; }, Unit::bytesPerSecond, KnownPart::processTraffic},
     {"Up", [](const ProcessUsage& p) { return p.netOut; }, Unit::bytesPerSecond, KnownPart::processTraffic}},
    {Metric::gpu, Token::gpu, cpuFigures, memoryFigures},
    {Metric::energy,
     Token::energy,
     {"Energy", [](const ProcessUsage& p) { return p.power; }, Unit::watts, KnownPart::processEnergy},
     {"CPU", cpuFigures.ofProcess, Unit::corePercent, KnownPart::processes}}};

const Columns& columns(Metric metric) { return columnsOf[std::size_t(metric)]; }

double sum(const Figures& figures, const std::vector<ProcessUsage>& processes) {
  double total = 0;
  for (const auto& process : processes) total += figures.ofProcess(process);
  return total;
}

/// An application with the figures that it is sorted by, made once each.
struct Measured {
  const AppUsage* app;
  double figure, second;
  bool isHidden = false; ///< a rate of 0 is none that was read
};

/// Rows that must not move stand first, in their order; all others behind them.
std::ptrdiff_t settledRank(const AppListChoices& choices, const std::string& key) {
  return std::ranges::find(choices.settled, key) - choices.settled.begin();
}

void sortMeasured(std::vector<Measured>& apps, const AppListChoices& choices) {
  struct Place {
    std::ptrdiff_t rank;
    std::string name; ///< only for sorting by it: "zsh" does not come behind "Zoom" for its case
    Measured one;
  };
  std::vector<Place> places;
  places.reserve(apps.size());
  for (const auto& one : apps)
    places.push_back({settledRank(choices, one.app->id),
                      choices.sorted == Column::name ? lowercased(one.app->name) : std::string(), one});
  const auto byName = [](const Place& a, const Place& b) {
    const auto &left = *a.one.app, &right = *b.one.app;
    return std::tie(a.name, left.name, left.id) < std::tie(b.name, right.name, right.id);
  };
  const auto value = [&](const Place& place) {
    return choices.sorted == Column::second ? place.one.second : place.one.figure;
  };
  std::ranges::sort(places, [&](const Place& a, const Place& b) {
    if (a.rank != b.rank) return a.rank < b.rank;
    if (choices.sorted == Column::name) return choices.isAscending ? byName(a, b) : byName(b, a);
    const double one = value(a), other = value(b);
    if (one != other) return choices.isAscending ? one < other : one > other;
    return byName(a, b);
  });
  std::ranges::transform(places, apps.begin(), &Place::one);
}

/// Adds rows of one list: they share the columns, what is known and the longest bar.
class Rows {
public:
  Rows(BarTableData& table, const Columns& columns, const KnownParts& known, const AppListChoices& choices,
       double most)
      : table_(table), columns_(columns), known_(known), choices_(choices), most_(most) {}

  void add(const Measured& one) {
    const auto& app = *one.app;
    isHidden_ = one.isHidden;
    BarRow row = rowOf(app.name, one.figure, one.second);
    row.key = app.id;
    if (!isSystemGroup(app)) row.identifier = app.id;
    row.icon = app.bundlePath;
    if (isKorvell(app)) row.mark = Icon::heart;
    row.hasActions = !isSystemGroup(app);
    const auto count = app.processes.size();
    if (count > 1) row.count = std::to_string(count);
    row.unfolds = count > 1;
    row.isUnfolded = row.unfolds && choices_.unfolded.contains(app.id);
    row.spoken = spoken(app.name, count, one.figure, one.second);
    const bool isUnfolded = row.isUnfolded;
    table_.rows.push_back(std::move(row));
    if (isUnfolded) addProcesses(app);
  }

private:
  bool isRead(const Figures& figures, double value) const {
    return known_.has(figures.part) && (value > 0 || !isHidden_ || figures.unit != Unit::bytesPerSecond);
  }
  std::string shown(const Figures& figures, double value) const {
    return isRead(figures, value) ? Format::figure(figures.unit, value) : noFigure;
  }
  std::string spokenIn(const Figures& figures, double value) const {
    return isRead(figures, value) ? spokenFigure(figures.unit, value) : std::string();
  }

  BarRow rowOf(const std::string& name, double figure, double second) const {
    BarRow row;
    row.name = name;
    const auto sorted = choices_.sorted == Column::second ? second : figure;
    const auto& by = choices_.sorted == Column::second ? columns_.second : columns_.figure;
    if (isRead(by, sorted)) row.level = most_ > 0 ? sorted / most_ : 0;
    row.figure = shown(columns_.figure, figure);
    row.second = shown(columns_.second, second);
    return row;
  }

  std::string spoken(const std::string& name, std::size_t count, double figure, double second) const {
    auto words = name;
    if (count > 1) words += ", " + localized("{n} processes", {{"n", std::to_string(count)}});
    for (const auto& part : {spokenIn(columns_.figure, figure), spokenIn(columns_.second, second)})
      if (!part.empty()) words += ", " + part;
    return words;
  }

  void addProcesses(const AppUsage& app) {
    const auto& by = choices_.sorted == Column::second ? columns_.second : columns_.figure;
    auto processes = app.processes;
    std::sort(processes.begin(), processes.end(), [&](const ProcessUsage& a, const ProcessUsage& b) {
      const auto left = by.ofProcess(a), right = by.ofProcess(b);
      return left != right ? left > right : std::tie(a.name, a.pid) < std::tie(b.name, b.pid);
    });
    const auto shownCount = processes.size() > mostProcesses + 1 ? mostProcesses : processes.size();
    for (std::size_t i = 0; i < shownCount; ++i) {
      const auto& process = processes[i];
      const auto pid = std::to_string(process.pid);
      addPart(app, pid, process.name + " · " + pid, columns_.figure.ofProcess(process),
              columns_.second.ofProcess(process), !isSystemGroup(app));
    }
    processes.erase(processes.begin(), processes.begin() + std::ptrdiff_t(shownCount));
    if (processes.empty()) return;
    addPart(app, "", localized("{n} more", {{"n", std::to_string(processes.size())}}),
            sum(columns_.figure, processes), sum(columns_.second, processes), false);
  }

  void addPart(const AppUsage& app, const std::string& id, const std::string& name, double figure,
               double second, bool hasActions) {
    auto row = rowOf(name, figure, second);
    row.key = app.id + partSeparator + id;
    row.isPart = true;
    row.hasActions = hasActions;
    row.spoken = spoken(name, 1, figure, second);
    table_.rows.push_back(std::move(row));
  }

  BarTableData& table_;
  const Columns& columns_;
  const KnownParts& known_;
  const AppListChoices& choices_;
  double most_;
  bool isHidden_ = false; ///< of the application that is being added
};

std::string whyUnread(Metric metric, KnownPart part, Knowledge state, const AppListFacts& facts) {
  if (metric != Metric::network && metric != Metric::energy) return reasonOf(part, state, facts.sources);
  const auto told = toldReason(part, facts.sources);
  const auto what = metric == Metric::network ? localized("The system does not tell the traffic of each app.")
                                              : localized("The system does not tell the energy of each app.");
  return told.empty() ? what : what + " " + told;
}

void addNote(AppList& list, const Model& model, Metric metric, const AppListFacts& facts) {
  const auto part = columns(metric).figure.part;
  if (!*model.hasSample) return;
  list.isUnread = !model.known->has(part);
  const bool isHiding = *model.privileged && (*model.privileged)->hidden > 0;
  list.helperWouldTell = metric == Metric::disk && isHiding;
  if (list.isUnread)
    list.note = list.table.reason = whyUnread(metric, part, (*model.known)[part], facts);
  else if (list.helperWouldTell)
    list.note = list.table.reason =
        localized("The system does not tell you what other users' processes read and write.");
  else if (metric == Metric::network)
    list.note = facts.trafficNote;
  if (metric == Metric::network && isHiding && !list.isUnread)
    list.table.reason = localized("The system does not tell the traffic of each app.");
}

/// What the application is known by while it runs; of one that does not only its name is left. Empty for the
/// system's group.
std::string identifierOf(const AppTotal& total, const Model& model) {
  for (const auto& app : model.snapshot->apps)
    if (app.name == total.name && app.bundlePath == total.bundlePath)
      return isSystemGroup(app) ? std::string() : app.id;
  return total.name;
}

/// Where there is none: what stands instead of it.
std::optional<AppList> withoutList(const Model& model, Metric metric) {
  const bool isMains = metric == Metric::energy && *model.hasSample && !model.snapshot->battery.present;
  if (metric != Metric::gpu && (!isMains || model.known->has(columns(metric).figure.part)))
    return std::nullopt;
  AppList list;
  list.isThere = false;
  if (metric == Metric::gpu) list.note = localized("No figure per app exists for the GPU.");
  return list;
}

AppList titled(Metric metric, const AppListChoices& choices) {
  const auto& shape = columns(metric);
  AppList list;
  list.table.title = localized("Applications by {measure}", {{"measure", title(metric)}});
  list.table.nameHead = localized("Name");
  list.table.figureHead = localized(shape.figure.head);
  list.table.secondHead = localized(shape.second.head);
  list.table.sorted = choices.sorted;
  list.table.isAscending = choices.isAscending;
  list.table.token = shape.token;
  return list;
}

} // namespace

std::string tcpOnlyNote() {
  return localized("Counts TCP only: the kernel keeps no byte counts of UDP sockets.");
}

AppList appList(const Model& model, Metric metric, const AppListChoices& choices, const AppListFacts& facts) {
  if (auto none = withoutList(model, metric)) return *std::move(none);
  const auto& shape = columns(metric);
  auto list = titled(metric, choices);
  addNote(list, model, metric, facts);
  if (!*model.hasSample) {
    list.empty = localized("Measuring…");
    return list;
  }
  std::vector<Measured> apps;
  double most = 0;
  for (const auto& app : model.snapshot->apps) {
    const Measured one{&app, sum(shape.figure, app.processes), sum(shape.second, app.processes),
                       isHidden(model, app)};
    most = std::max(most, choices.sorted == Column::second ? one.second : one.figure);
    if (matches(app.name, choices.filter)) apps.push_back(one);
  }
  sortMeasured(apps, choices);
  Rows rows(list.table, shape, *model.known, choices, most);
  for (const auto& one : apps) rows.add(one);
  if (apps.empty())
    list.empty = choices.filter.empty() ? localized("No processes can be read here.")
                                        : localized("No app is called that.");
  return list;
}

AppList pastAppList(const Model& model, Metric metric, const PastApps& past, const AppListChoices& choices,
                    const AppListFacts& facts) {
  if (auto none = withoutList(model, metric)) return *std::move(none);
  auto list = titled(metric, choices);
  addNote(list, model, metric, facts);
  list.table.sorts = false;
  list.table.secondHead.clear();
  if (metric == Metric::disk || metric == Metric::network)
    list.table.figureHead = metric == Metric::disk ? localized("Read and written") : localized("Down and up");
  // An application's processor time is told per core; everything else as the machine's.
  const auto unit = metric == Metric::cpu ? Unit::corePercent : metricUnit(metric);
  const double most = past.totals.empty() ? 0 : past.totals.front().value;
  bool isAnyRecorded = false;
  for (const auto& total : past.totals) {
    if (total.value <= 0) continue;
    isAnyRecorded = true;
    if (!matches(total.name, choices.filter)) continue;
    if (list.table.rows.size() == mostPastApps) break;
    BarRow row;
    row.key = total.bundlePath.value_or(total.name);
    row.name = total.name;
    row.identifier = identifierOf(total, model);
    row.icon = total.bundlePath;
    row.level = total.value / most;
    row.figure = Format::figure(unit, total.value);
    row.spoken = total.name + ", " + spokenFigure(unit, total.value);
    list.table.rows.push_back(std::move(row));
  }
  std::ranges::stable_sort(list.table.rows, {},
                           [&](const BarRow& row) { return settledRank(choices, row.key); });
  if (list.table.rows.empty())
    list.empty = isAnyRecorded   ? localized("No app is called that.")
                 : list.isUnread ? ""
                 : past.isOver   ? localized("No app was recorded in this time.")
                                 : localized("This minute is recorded when it ends.");
  return list;
}

std::optional<QuitRequest> quitRequest(const Model& model, const std::string& key, bool force) {
  for (const auto& app : model.snapshot->apps) {
    if (isSystemGroup(app) || key.compare(0, app.id.size(), app.id) != 0) continue;
    const auto rest = key.substr(app.id.size());
    if (rest.empty())
      return QuitRequest{.app = app.id, .bundlePath = {}, .processes = {}, .force = force, .name = {}};
    if (rest.front() != partSeparator) continue;
    for (const auto& process : app.processes)
      if (rest.substr(1) == std::to_string(process.pid))
        return QuitRequest{.app = std::to_string(process.pid),
                           .bundlePath = {},
                           .processes = {},
                           .force = force,
                           .name = {}};
  }
  return std::nullopt;
}

std::optional<ProcessID> processOf(const Model& model, const std::string& key) {
  const auto cut = key.find(partSeparator);
  const auto app = std::ranges::find(model.snapshot->apps, key.substr(0, cut), &AppUsage::id);
  if (app == model.snapshot->apps.end() || app->processes.empty()) return std::nullopt;
  if (cut == std::string::npos) return app->mainPID.value_or(app->processes.front().pid);
  const auto pid = parseInteger<ProcessID>(std::string_view(key).substr(cut + 1));
  const bool isThere =
      pid && std::ranges::find(app->processes, *pid, &ProcessUsage::pid) != app->processes.end();
  return isThere ? pid : std::nullopt;
}

std::string copiedText(const BarTableData& table, const std::string& key) {
  for (const auto& row : table.rows) {
    if (row.key != key) continue;
    auto text = row.name + "\t" + row.figure;
    if (!table.secondHead.empty()) text += "\t" + row.second;
    return text;
  }
  return {};
}

} // namespace korvell
