#include "Core/History/MinuteAccumulator.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace korvell {

namespace {

void addTo(HistoryValues& sums, const HistoryValues& values) {
  for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += values[i];
}

HistoryValues divided(const HistoryValues& sums, int count) {
  HistoryValues means = sums;
  for (double& value : means) value /= count;
  return means;
}

HistoryValues systemValues(const SystemSnapshot& snapshot) {
  return {snapshot.cpu.total,
          double(snapshot.memory.used()),
          snapshot.disk.readRate + snapshot.disk.writeRate,
          snapshot.network.inRate + snapshot.network.outRate,
          snapshot.gpu.utilization,
          snapshot.battery.systemPower,
          snapshot.disk.writeRate};
}

/// One pass over the processes, however many figures are wanted of them.
HistoryValues appValues(const AppUsage& app) {
  HistoryValues sums{};
  std::uint64_t memory = 0;
  for (const ProcessUsage& process : app.processes) {
    sums[cpuColumn] += process.cpu;
    memory += process.memory;
    sums[diskColumn] += process.diskRead + process.diskWrite;
    sums[networkColumn] += process.netIn + process.netOut;
    sums[energyColumn] += process.power;
    sums[diskWriteColumn] += process.diskWrite;
  }
  sums[memoryColumn] = double(memory);
  return sums;
}

} // namespace

std::int64_t minuteOf(Date date) {
  // An instant that no calendar has must not become an undefined conversion.
  constexpr double limit = 1e15;
  const double seconds = std::isfinite(date.sinceEpoch) ? std::clamp(date.sinceEpoch, -limit, limit) : 0;
  const auto whole = std::int64_t(seconds);
  const std::int64_t intoMinute = ((whole % 60) + 60) % 60;
  return whole - intoMinute;
}

HistorySample historySample(const SystemSnapshot& snapshot, std::optional<int> score) {
  HistorySample sample{.date = snapshot.date, .score = score, .system = systemValues(snapshot), .apps = {}};
  sample.apps.reserve(snapshot.apps.size());
  for (const AppUsage& app : snapshot.apps)
    sample.apps.push_back({.id = app.id, .name = app.name, .path = app.bundlePath, .values = appValues(app)});
  return sample;
}

std::vector<HistoryApp> keptApps(std::vector<HistoryApp> apps) {
  std::vector<bool> kept(apps.size());
  std::vector<std::size_t> candidates;
  for (std::size_t column = 0; column < historyColumnCount; ++column) {
    if (column == gpuColumn) continue;
    candidates.clear();
    for (std::size_t i = 0; i < apps.size(); ++i)
      if (apps[i].values[column] > 0) candidates.push_back(i);
    std::stable_sort(candidates.begin(), candidates.end(), [&](std::size_t a, std::size_t b) {
      return apps[a].values[column] > apps[b].values[column];
    });
    if (candidates.size() > keptAppsPerValue) candidates.resize(keptAppsPerValue);
    for (std::size_t i : candidates) kept[i] = true;
  }
  std::size_t i = 0;
  std::erase_if(apps, [&](const HistoryApp&) { return !kept[i++]; });
  return apps;
}

void MinuteAccumulator::add(HistorySample&& sample) {
  minute_ = minuteOf(sample.date);
  ++sampleCount_;
  if (sample.score) {
    scoreSum_ += *sample.score;
    ++scoreCount_;
  }
  addTo(systemSums_, sample.system);
  for (HistoryApp& app : sample.apps) {
    const auto [entry, isNew] = appIndex_.try_emplace(app.id, appSums_.size());
    if (isNew)
      appSums_.push_back(std::move(app));
    else
      addTo(appSums_[entry->second].values, app.values);
  }
}

HistoryMinute MinuteAccumulator::take() {
  HistoryMinute row{.ts = minute_, .system = divided(systemSums_, sampleCount_), .score = {}, .apps = {}};
  if (scoreCount_ > 0) row.score = scoreSum_ / scoreCount_;
  row.apps = keptApps(std::move(appSums_));
  for (HistoryApp& app : row.apps) app.values = divided(app.values, sampleCount_);
  *this = {};
  return row;
}

} // namespace korvell
