#include "KeeperFixture.h"
#include "Tests/Fakes/FakeSensors.h"
#include "Tool/Summary.h"

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::Not;

struct SensorsCommandTests : KeeperFixture {
  FakeSensorChips* const chips = new FakeSensorChips;       ///< owned by the host
  FakePeripherals* const peripherals = new FakePeripherals; ///< likewise

  SensorsCommandTests() {
    host.temperatures.chips.reset(chips);
    host.peripherals.reset(peripherals);
  }
};

TEST_F(SensorsCommandTests, temperaturesByChipFansAndPeripherals) {
  chips->chips = {
      {"nvme", "", {{1, "Composite", 39.0}}, {}},
      {"coretemp", "", {{1, "Package id 0", 57.0}, {2, "Core 10", 150.0}, {3, "Core 2", 8.0}}, {}},
      {"amdgpu", "", {{1, "ed\x1b[2Jge", 47.0}}, {{1, "", 1171.0, 300.0, 3300.0}, {2, "", 12345.0}}}};
  peripherals->devices = {{"Desk\x1b[2J Mouse", 9, PeripheralType::mouse}};
  EXPECT_EQ(run({"sensors"}), exitOK);
  EXPECT_THAT(out, HasSubstr("CPU 57°C"));
  EXPECT_THAT(out, testing::ContainsRegex("coretemp +Core 2 .* 8°C\n +Core 10 .* 150°C"));
  EXPECT_THAT(out, HasSubstr("300 to 3,300 rpm"));
  EXPECT_THAT(out, HasSubstr("12,345 rpm"));
  EXPECT_THAT(out, testing::ContainsRegex("Desk\\\\x1b\\[2J Mouse +Mouse .* 9%"));
  EXPECT_THAT(out, Not(HasSubstr("\x1b")));

  EXPECT_EQ(run({"sensors", "--json"}), exitOK);
  const auto value = parseJSON(out);
  ASSERT_TRUE(value);
  EXPECT_EQ(value->find("cpuCelsius")->asDouble(), 57);
  EXPECT_EQ(value->find("temperatures")->asArray()->size(), 5u);
  EXPECT_EQ(*value->find("peripherals")->asArray()->at(0).find("kind")->asString(), "mouse");
}

TEST_F(SensorsCommandTests, whereNothingIsItSaysSo) {
  EXPECT_EQ(run({"sensors"}), exitOK);
  EXPECT_THAT(out, HasSubstr("No sensor can be read here."));
  peripherals->devices = {{"Desk Mouse", 61, PeripheralType::mouse}};
  run({"sensors"});
  EXPECT_THAT(out, testing::AllOf(HasSubstr("No sensor"), HasSubstr("61%")));
}

TEST_F(SensorsCommandTests, theKeeperIsAskedFirst) {
  chips->chips = {{"own", "", {{1, "Own", 20.0}}, {}}};
  playKeeper([](const Value&) {
    const SensorsSnapshot sensors{.cpuCelsius = 71,
                                  .temperatures = {{"Package id 0", 71, SensorKind::cpu, "kept"}}};
    return Value::object(
        {{"ok", true}, {"hasSample", true}, {"sensors", toValue(sensors)}, {"peripherals", Value::array()}});
  });
  EXPECT_EQ(run({"sensors"}), exitOK);
  EXPECT_THAT(out, testing::AllOf(HasSubstr("kept"), HasSubstr("71°C"), Not(HasSubstr("own"))));
}

TEST(SensorsSummaryTests, temperaturesStandAtTheirLines) {
  std::string sink;
  const Terminal terminal(sink, 100);
  KnownParts known;
  known.set(KnownPart::processor, true);
  SystemSnapshot snapshot;
  snapshot.cpu.total = 24;
  const auto lines = [&](const std::optional<SensorsSnapshot>& sensors) {
    std::string all;
    for (const auto& line : summaryLines(terminal, snapshot, known, 100, sensors)) all += line + "\n";
    return all;
  };
  EXPECT_THAT(lines(SensorsSnapshot{.cpuCelsius = 56.6, .gpuCelsius = 47}),
              testing::AllOf(testing::ContainsRegex("CPU .* 24%  of the machine · 57°C · user"),
                             testing::ContainsRegex("GPU +– +47°C · GPU")));
  EXPECT_THAT(lines(std::nullopt), Not(HasSubstr("°C")));
}

} // namespace
} // namespace korvell
