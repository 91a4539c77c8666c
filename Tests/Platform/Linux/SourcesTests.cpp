#include "Platform/Linux/LinuxDiagnostics.h"
#include "Platform/Linux/MachineSources.h"
#include "Platform/Linux/ProcessSources.h"
#include "Platform/Linux/SensorSources.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/FixturesFolder.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using State = SourceReport::State;

class SourcesTests : public testing::Test {
protected:
  /// The first report of that name whose source contains `where`.
  static SourceReport find(const std::vector<SourceReport>& reports, const std::string& name,
                           const std::string& where = {}) {
    for (const auto& report : reports)
      if (report.name == name && report.source.find(where) != std::string::npos) return report;
    ADD_FAILURE() << "no " << name << " " << where;
    return {};
  }
  std::vector<SourceReport> examine(const std::string& root) {
    LinuxMachineRoots roots{root + "/proc", root + "/sys", {}, root + "/none.so", [](const std::string&) {
                              return std::optional<VolumeSpace>{};
                            }};
    return machineSources(roots, &clock);
  }
  FakeClock clock;
};

TEST_F(SourcesTests, whatAMachineHasIsToldApartFromWhatItHides) {
  struct Row {
    const char* machine;
    const char* name;
    const char* where;
    State state;
    bool hasRemedy;
  };
  const Row rows[] = {
      {"laptop", "CPU", "", State::readable, false},
      {"laptop", "Compressed swap", "zram0", State::readable, false},
      {"laptop", "GPU", "0000:00:02.0", State::refused, false},
      {"laptop", "GPU", "0000:01:00.0", State::refused, false},
      {"laptop", "Battery", "BAT0", State::readable, false},
      {"laptop", "Power adapter", "AC", State::readable, false},
      {"laptop", "CPU power", "intel-rapl:0", State::readable, false},
      {"desktop", "GPU", "card0", State::readable, false},
      {"desktop", "Battery", "power_supply", State::missing, false},
      {"container", "Memory stalls", "", State::missing, true},
      {"container", "CPU power", "", State::missing, false},
      {"virtual-machine", "GPU", "", State::missing, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.machine) + " " + row.name + " " + row.where);
    const auto report = find(examine(fixturePath(std::string("Linux/") + row.machine)), row.name, row.where);
    EXPECT_EQ(report.state, row.state);
    EXPECT_EQ(report.microseconds.has_value(), row.state == State::readable);
    EXPECT_EQ(report.reason.empty(), row.state == State::readable);
    EXPECT_EQ(!report.remedy.empty(), row.hasRemedy);
  }
}

TEST_F(SourcesTests, everyChipHasARow) {
  const auto sensorsOf = [&](const std::string& machine) {
    const auto root = fixturePath("Linux/" + machine);
    return sensorSources({root + "/proc", root + "/sys", root + "/none.so"}, "", clock);
  };
  const auto desktop = sensorsOf("desktop");
  EXPECT_TRUE(find(desktop, "Sensors", "k10temp").microseconds);
  EXPECT_EQ(find(desktop, "Sensors", "drivetemp").state, State::refused) << "with platters";
  EXPECT_EQ(find(desktop, "Sensors", "hwmon6").state, State::readable) << "without";
  EXPECT_EQ(find(desktop, "Peripheral batteries", "UPower").reason, "There is no message bus.");
  const auto card = find(sensorsOf("nvidia-workstation"), "Sensors", "nvidia 0000:01:00.0");
  EXPECT_EQ(card.state, State::refused);
  EXPECT_NE(card.reason, "");
  EXPECT_NE(find(sensorsOf("virtual-machine"), "Sensors", "/class/hwmon").remedy, "");
}

TEST_F(SourcesTests, aCounterThatIsClosedNamesItsRemedy) {
  const TemporaryFolder root;
  root.write("sys/class/powercap/intel-rapl:0/name", "package-0\n");
  root.write("sys/class/powercap/intel-rapl:0/energy_uj/x", ""); // a folder opens, but can't be read
  root.write("sys/bus/pci/devices/0000:01:00.0/power/control", "on\n");
  root.write("proc/driver/nvidia/gpus/0000:01:00.0/information", "Model: Card\n");
  const auto reports = examine(root.path().string());
  for (const auto* name : {"CPU power", "GPU"}) {
    const auto report = find(reports, name);
    EXPECT_EQ(report.state, State::refused) << name;
    EXPECT_NE(report.remedy, "") << name;
  }
  EXPECT_EQ(find(reports, "CPU").state, State::missing);
}

struct Sockets final : SocketSource {
  bool answers = true;
  bool dump(std::vector<SocketRecord>&) override { return answers; }
  bool dumpListening(std::vector<SocketRecord>&) override { return answers; }
  bool ask(std::span<const SocketRecord>, std::vector<SocketRecord>&) override { return answers; }
  std::optional<ConnectionsBorn> born() override { return std::nullopt; }
  void drainClosed(std::vector<SocketRecord>&) override {}
};

TEST_F(SourcesTests, whatOtherUsersProcessesHide) {
  const TemporaryFolder proc;
  Sockets sockets;
  std::function<bool()> helper;
  const auto state = [&](const char* name) {
    const auto report =
        find(processSources({proc.path().string(), nullptr, &sockets, 0, helper}, &clock), name);
    EXPECT_EQ(report.remedy.empty(), report.state == State::readable) << name;
    return report.state;
  };
  proc.write("1/stat", "1 (init)");
  proc.write("1/io", "rchar: 1");
  proc.write("1/fd/0", "");
  for (const auto* name : {"Processes", "Storage of others", "Ports of others", "Traffic"})
    EXPECT_EQ(state(name), State::readable) << name;

  std::filesystem::remove_all(proc / "1/fd");
  std::filesystem::remove(proc / "1/io");
  proc.write("1/io/x", ""); // a folder opens, but can't be read
  sockets.answers = false;
  EXPECT_EQ(state("Processes"), State::readable);
  EXPECT_EQ(state("Storage of others"), State::refused);
  helper = [] { return true; };
  EXPECT_EQ(state("Storage of others"), State::readable) << "it answers, so nobody is told to enable it";
  EXPECT_EQ(state("Ports of others"), State::refused);
  EXPECT_EQ(state("Traffic"), State::missing);
  std::filesystem::remove_all(proc / "1");
  EXPECT_EQ(state("Processes"), State::refused);
}

TEST_F(SourcesTests, ownUsageIsThisProcess) {
  SystemClock system;
  LinuxDiagnostics diagnostics(system, {});
  const auto before = diagnostics.ownUsage();
  EXPECT_GT(before.resident, 100'000u);
  EXPECT_GT(before.cpuSeconds, 0);
  EXPECT_GE(diagnostics.ownUsage().cpuSeconds, before.cpuSeconds);
}

} // namespace
} // namespace korvell
