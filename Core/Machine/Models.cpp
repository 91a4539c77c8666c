#include "Core/Machine/Models.h"

#include "Base/Format.h"

#include <numeric>

namespace korvell {

namespace {

template <class T>
T sum(const std::vector<ProcessUsage>& processes, T ProcessUsage::*field) {
  return std::accumulate(processes.begin(), processes.end(), T{},
                         [field](T total, const ProcessUsage& process) { return total + process.*field; });
}

} // namespace

double AppUsage::cpu() const { return sum(processes, &ProcessUsage::cpu); }
std::uint64_t AppUsage::memory() const { return sum(processes, &ProcessUsage::memory); }
double AppUsage::diskRead() const { return sum(processes, &ProcessUsage::diskRead); }
double AppUsage::diskWrite() const { return sum(processes, &ProcessUsage::diskWrite); }
double AppUsage::netIn() const { return sum(processes, &ProcessUsage::netIn); }
double AppUsage::netOut() const { return sum(processes, &ProcessUsage::netOut); }
double AppUsage::power() const { return sum(processes, &ProcessUsage::power); }

namespace {

struct MetricRow {
  Metric metric;
  double (*value)(const SystemSnapshot&);
  Unit unit;
};

constexpr MetricRow metricRows[] = {
    {Metric::cpu, [](const SystemSnapshot& s) { return s.cpu.total; }, Unit::percent},
    {Metric::memory, [](const SystemSnapshot& s) { return double(s.memory.used()); }, Unit::memory},
    {Metric::disk, [](const SystemSnapshot& s) { return s.disk.readRate + s.disk.writeRate; },
     Unit::bytesPerSecond},
    {Metric::network, [](const SystemSnapshot& s) { return s.network.inRate + s.network.outRate; },
     Unit::bytesPerSecond},
    {Metric::gpu, [](const SystemSnapshot& s) { return s.gpu.utilization; }, Unit::percent},
    {Metric::energy, [](const SystemSnapshot& s) { return s.battery.systemPower; }, Unit::watts},
};

const MetricRow& row(Metric metric) {
  for (const auto& r : metricRows)
    if (r.metric == metric) return r;
  return metricRows[0];
}

} // namespace

double metricValue(Metric metric, const SystemSnapshot& snapshot) { return row(metric).value(snapshot); }
Unit metricUnit(Metric metric) { return row(metric).unit; }
std::string formatMetric(Metric metric, double value) { return Format::figure(row(metric).unit, value); }

KORVELL_CONVERT_HERE(SystemSnapshot);
KORVELL_CONVERT_HERE(AppUsage);
KORVELL_CONVERT_HERE(std::vector<ProcessUsage>);
KORVELL_CONVERT_HERE(std::vector<HistoryPoint>);
KORVELL_CONVERT_HERE(Totals);

} // namespace korvell
