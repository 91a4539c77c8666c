// What the widget's document costs: asking the history, building, encoding and writing it, against writing
// the same bytes to a file; and a cycle while no widget is placed.

#include "App/WidgetPublisher.h"
#include "Base/Files.h"
#include "Base/ManualQueue.h"
#include "Bench/Measure.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using namespace korvell;

class Center final : public WidgetCenter {
public:
  bool isPlaced = false;
  void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override {
    answer(isPlaced ? 1 : 0);
  }
  void reloadAllTimelines() override {}
};

SystemSnapshot busySnapshot(Date now) {
  SystemSnapshot snapshot;
  snapshot.date = now;
  snapshot.disk.volumes = {{"System", "/", 249'000'000'000, 41'200'000'000}};
  for (int app = 0; app < 200; ++app) {
    AppUsage usage{.id = std::to_string(app), .name = "application " + std::to_string(app)};
    for (int process = 0; process < 10; ++process)
      usage.processes.push_back({.pid = app * 10 + process, .memory = std::uint64_t(app * 7919 % 997) << 20});
    snapshot.apps.push_back(std::move(usage));
  }
  return snapshot;
}

} // namespace

int main() {
  constexpr int rounds = 501, minutes = 40;
  char pattern[] = "/tmp/korvell-bench-XXXXXX";
  if (!mkdtemp(pattern)) return EXIT_FAILURE;
  const std::string folder = pattern, path = folder + "/Widget/widget.json";
  {
    ManualScheduler time;
    const auto main = time.makeMainQueue();
    HistoryStore history(time.factory(), time.clock(), folder);
    for (int minute = 0; minute < minutes; ++minute) {
      history.record(busySnapshot(time.clock().now()), 87);
      time.advance(Seconds(60));
    }
    Insight finding{.title = "Disk space is getting low", .detail = "41.2 GB free on System disk."};
    const HealthReport report{.score = 87, .insights = {finding, finding, finding}};
    const auto snapshot = busySnapshot(time.clock().now());
    Center center;
    WidgetPublisher publisher(*main, {center, time.factory(), path, "macOS"});
    const auto cost = [&](auto&& work) {
      std::vector<double> times;
      for (int round = 0; round < rounds; ++round) {
        history.record(busySnapshot(time.clock().now()), 87);
        time.advance(Seconds(60));
        const double begin = cpuMicroseconds();
        work();
        times.push_back(cpuMicroseconds() - begin);
      }
      return median(std::move(times));
    };
    const auto publish = [&] {
      publisher.publish(report, snapshot, history);
      time.run();
    };
    const double idle = cost(publish);
    const bool isIdle = !std::filesystem::exists(path);
    center.isPlaced = true;
    time.advance(Seconds(1800));
    publish();
    const double whole = cost(publish);
    const auto document = readFile(path, WidgetShared::mostBytes).value_or("");
    const double floor = cost(
        [&] { [[maybe_unused]] const bool done = replaceFile(path, document, Readers::owner, Flush::none); });
    fmt::print("{:<48} {:>8.1f} µs\n", fmt::format("floor: replacing a file by {} bytes", document.size()),
               floor);
    fmt::print("{:<48} {:>8.1f} µs  {:.1f} x\n", "a document: history, building, encoding, writing", whole,
               whole / floor);
    fmt::print("{:<48} {:>8.1f} µs  {}\n", "a cycle while no widget is placed", idle,
               isIdle ? "nothing written" : "WRITTEN");
  }
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}
