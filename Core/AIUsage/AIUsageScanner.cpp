#include "Core/AIUsage/AIUsageScanner.h"

#include "Base/CPUTime.h"
#include "Core/AIUsage/Names.h"

#include <algorithm>
#include <map>

namespace korvell {

namespace {

constexpr Seconds oldestFile{2'592'000}; ///< 30 days
/// Below this a second thread costs more than it saves.
constexpr std::int64_t worthASecondThread = std::int64_t{8} << 20;

} // namespace

std::string AIUsageScanner::defaultCacheURL(const UserFolders& folders) {
  return folders.data + "/ai-usage.sqlite";
}

AIUsageScanner::Options AIUsageScanner::defaults(const UserFolders& folders) {
  return {.cacheURL = defaultCacheURL(folders),
          .claudeRoot = claudeRoot(folders.home),
          .codexRoot = codexRoot(folders.home),
          .home = folders.home};
}

AIUsageScanner::AIUsageScanner(Options options, LogFiles& files, TimeZone& zone, const Clock& clock)
    : options_(std::move(options)), files_(files), zone_(zone), clock_(clock),
      database_(options_.cacheURL, clock.now()) {
  loaded_ = load();
}

/// False leaves states that would count what was counted before.
bool AIUsageScanner::load() {
  auto states = database_.fileStates();
  if (!states) return false;
  states_ = std::move(*states);
  readings_ = database_.limits();
  return !database_.isOpen() || database_.problem() == UsageDatabase::Problem::none;
}

FileState AIUsageScanner::initialState(AITool tool, const std::string& path) const {
  FileState state;
  if (tool == AITool::claude) {
    const auto folder = std::string_view(path).substr(0, path.rfind('/'));
    state.project = projectName(std::nullopt, folder.substr(folder.rfind('/') + 1), options_.home);
  }
  return state;
}

std::vector<ScanTask> AIUsageScanner::newBytes(Date now, AIScanStats& stats) {
  std::vector<ScanTask> tasks;
  for (const auto& [tool, root] :
       {std::pair(AITool::claude, &options_.claudeRoot), std::pair(AITool::codex, &options_.codexRoot)})
    for (auto& file : logFiles(*root)) {
      if (file.modified < now - oldestFile) continue;
      const auto known = states_.find(file.path);
      const bool isKnown = known != states_.end();
      if (isKnown && known->second.offset == file.size) continue;
      FileState state = isKnown ? known->second : initialState(tool, file.path);
      const bool cutShort = file.size < state.offset; // or another file in its place
      if (cutShort) state = {.project = std::move(state.project)};
      if (state.offset >= file.size && !cutShort) continue;
      // A file cut to nothing has no new bytes, but its new start must be known when it grows again.
      stats.files += file.size > 0;
      stats.bytes += file.size - state.offset;
      tasks.push_back({tool, std::move(file.path), std::move(state)});
    }
  return tasks;
}

AIScanStats AIUsageScanner::refresh(Date now, const Progress& progress) {
  const auto start = clock_.monotonic();
  const auto startCPU = threadCPUTime();
  zone_.reload();
  AIScanStats stats;
  Seconds helpers{0};
  outcome_ = scan(now, progress, stats, helpers);
  if (database_.problem() == UsageDatabase::Problem::damaged) outcome_ = scan(now, progress, stats, helpers);
  stats.seconds = (clock_.monotonic() - start).count();
  stats.cpuSeconds = (threadCPUTime() - startCPU + helpers).count();
  return stats;
}

AIUsageScanner::Outcome AIUsageScanner::scan(Date now, const Progress& progress, AIScanStats& stats,
                                             Seconds& helpers) {
  if (!database_.begin(now, options_.cancellation)) return failure();
  if (database_.changedElsewhere() || !loaded_) loaded_ = load();
  if (!loaded_) {
    database_.rollback();
    return failure();
  }
  auto tasks = newBytes(now, stats);
  const auto seenDay = database_.seenDay(localDay(zone_, now));
  Accounting accounting(database_, dayText(seenDay), readings_, now);
  ScanProgress report;
  if (progress) report = [&](std::int64_t bytes) { progress(bytes, stats.bytes); };
  Scan scan(files_, zone_, options_.home, now, accounting, tasks, report, options_.cancellation);
  helpers = scan.run(stats.bytes < worthASecondThread ? 1 : options_.threads);
  if (options_.cancellation.isCancelled()) {
    database_.rollback();
    stats = {};
    return Outcome::cancelled;
  }
  accounting.flush();
  if (!database_.commit()) {
    database_.rollback();
    stats = {};
    return failure();
  }
  stats.records = accounting.records();
  for (const auto& [path, state] : accounting.states()) states_[path] = state;
  readings_ = accounting.limits();
  return database_.isOpen() ? Outcome::done : Outcome::failed;
}

AIUsageScanner::Outcome AIUsageScanner::failure() const {
  if (options_.cancellation.isCancelled()) return Outcome::cancelled;
  switch (database_.problem()) {
  case UsageDatabase::Problem::locked:
    return Outcome::locked;
  case UsageDatabase::Problem::full:
    return Outcome::full;
  case UsageDatabase::Problem::foreign:
    return Outcome::foreign;
  default:
    return Outcome::failed;
  }
}

AIUsageSummary AIUsageScanner::summary(int days, Date now) {
  AIUsageSummary summary;
  std::map<std::string, std::optional<Date>> midnights;
  const auto today = localDay(zone_, now);
  const auto since = localDay(zone_, AIUsageSummary::startOfPeriod(days, now, zone_));
  auto stored = database_.rows(dayText(since));
  if (database_.problem() == UsageDatabase::Problem::damaged) {
    refresh(now);
    stored = database_.rows(dayText(since));
  }
  for (auto& row : stored) {
    auto [day, isNew] = midnights.try_emplace(row.day);
    if (const auto parsed = isNew ? parseDay(row.day) : std::nullopt; parsed && *parsed <= today)
      day->second = startOfDay(zone_, *parsed);
    const auto tool = fromRawValue<AITool>(row.tool);
    if (!day->second || !tool) continue;
    const auto& counts = row.counts;
    summary.rows.push_back({*day->second,
                            *tool,
                            row.model,
                            std::move(row.project),
                            {counts.input, counts.output, counts.cacheWrite, counts.cacheRead},
                            listCost(row.model, counts)});
  }
  std::stable_sort(summary.rows.begin(), summary.rows.end(),
                   [](const AIUsageRow& a, const AIUsageRow& b) { return a.day < b.day; });
  readings_.advance(now);
  summary.codexLimits = readings_.latest;
  summary.updatedAt = now;
  return summary;
}

} // namespace korvell
