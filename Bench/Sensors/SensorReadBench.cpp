// Twelve chips with sixty inputs, made in a folder: a reading with its names and figures against opening,
// reading and closing the same files once, in the same run. CPU microseconds, medians of rounds in which both
// sides take turns. Then the chips of this machine, where it has some. Exits with 1 when a reading costs a
// millisecond or more than 1.2 times the floor, or lists a folder.

#include "Base/SystemQueue.h"
#include "Bench/Measure.h"
#include "Platform/Linux/LinuxSensorChips.h"
#include "Sensors/SensorsReader.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace korvell {
namespace {

class CountingFiles final : public SensorFiles {
public:
  explicit CountingFiles(int& listed) : listed_(listed) {}
  std::vector<std::string> names(const std::string& folder) override {
    ++listed_;
    return SensorFiles::names(folder);
  }

private:
  int& listed_;
};

/// The inputs of twelve chips: a temperature each with a label, some of them alike.
std::vector<std::string> makeChips(const std::filesystem::path& root) {
  constexpr int chips = 12, inputs = 5;
  const char* drivers[] = {"coretemp", "nvme", "nct6798", "amdgpu"};
  std::vector<std::string> files;
  for (int chip = 0; chip < chips; ++chip) {
    const auto folder = root / "sys/class/hwmon" / fmt::format("hwmon{}", chip);
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "name") << drivers[chip % std::size(drivers)] << '\n';
    for (int input = 1; input <= inputs; ++input) {
      files.push_back((folder / fmt::format("temp{}_input", input)).string());
      std::ofstream(files.back()) << 30'000 + 1'000 * input << '\n';
      std::ofstream(folder / fmt::format("temp{}_label", input)) << "Sensor " << input << '\n';
    }
  }
  return files;
}

void readOnce(const std::vector<std::string>& files) {
  char buffer[64];
  for (const auto& file : files) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) continue;
    [[maybe_unused]] const auto n = ::read(descriptor, buffer, sizeof buffer);
    ::close(descriptor);
  }
}

double microsecondsPerCall(int calls, const std::function<void()>& work) {
  const double start = cpuMicroseconds();
  for (int i = 0; i < calls; ++i) work();
  return (cpuMicroseconds() - start) / calls;
}

int run(const std::filesystem::path& folder) {
  constexpr int rounds = 31, calls = 100;
  constexpr double mostMicroseconds = 1000, mostRatio = 1.2;
  const SystemClock clock;
  const auto files = makeChips(folder);
  int listed = 0;
  const LinuxSensorRoots roots{(folder / "proc").string(), (folder / "sys").string(), "none"};
  TemperatureSources sources{.chips =
                                 std::make_unique<LinuxSensorChips>(clock, systemQueueFactory(), roots,
                                                                    std::make_unique<CountingFiles>(listed))};
  SensorsReader reader(sources);
  reader.read(Seconds(10)); // finds the chips
  const auto found = reader.read().temperatures.size();
  const int before = listed;

  std::vector<double> floors, readings, ratios;
  for (int round = 0; round < rounds; ++round) {
    floors.push_back(microsecondsPerCall(calls, [&] { readOnce(files); }));
    readings.push_back(microsecondsPerCall(calls, [&] { reader.read(); }));
    ratios.push_back(readings.back() / floors.back());
  }
  const double cost = median(readings), ratio = median(ratios);
  fmt::print("opening, reading, closing {} files: {:.0f} us\n", files.size(), median(floors));
  fmt::print("a reading of {} temperatures: {:.0f} us, ratio {:.2f} ({:.2f} .. {:.2f}), folders listed: {}\n",
             found, cost, ratio, *std::min_element(ratios.begin(), ratios.end()),
             *std::max_element(ratios.begin(), ratios.end()), listed - before);

  TemperatureSources own{.chips = std::make_unique<LinuxSensorChips>(clock, systemQueueFactory())};
  SensorsReader machine(own);
  if (const auto there = machine.read(Seconds(2)).temperatures.size(); there > 0)
    fmt::print("this machine's {} temperatures: {:.0f} us\n", there,
               microsecondsPerCall(calls, [&] { machine.read(); }));
  else
    fmt::print("this machine has no sensors\n");
  return found == files.size() && listed == before && cost < mostMicroseconds && ratio <= mostRatio ? 0 : 1;
}

} // namespace
} // namespace korvell

int main() {
  auto folder = (std::filesystem::temp_directory_path() / "korvell-sensors-XXXXXX").string();
  if (!::mkdtemp(folder.data())) return 1;
  const int status = korvell::run(folder);
  std::filesystem::remove_all(folder);
  return status;
}
