// docs/json.md against the records that it describes.

#include "App/Actions.h"
#include "Audio/AudioApp.h"
#include "Base/Files.h"
#include "Base/Text.h"
#include "Core/DevServers/DevServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/HealthReport.h"
#include "Core/History/HistoryTypes.h"
#include "Core/Storage/StorageLog.h"
#include "Core/Storage/StorageModels.h"
#include "Platform/Diagnostics.h"
#include "Sensors/SensorsSnapshot.h"
#include "Tests/FixturesFolder.h"

#include <gmock/gmock.h>
#include <map>

namespace korvell {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::UnorderedElementsAreArray;

using Rows = std::vector<std::vector<std::string>>;

/// The rows of the tables below each heading, their cells trimmed, without titles and rules.
std::map<std::string, Rows> tablesByHeading(std::string_view text) {
  std::map<std::string, Rows> tables;
  std::string heading;
  for (const auto line : splitLines(text)) {
    if (line.starts_with("#")) heading = trimmed(line.substr(line.find_first_not_of('#')));
    if (!line.starts_with("| `")) continue;
    auto& row = tables[heading].emplace_back();
    for (const auto cell : split(line.substr(1, line.rfind('|') - 1), '|')) row.emplace_back(trimmed(cell));
  }
  return tables;
}

/// The texts in back quotes. Of "`a.b`, `c`" and of "`a.b`, `.c`" the second one stands below `a` too.
std::vector<std::string> membersOf(const std::string& cell) {
  std::vector<std::string> members;
  std::string parent;
  const auto parts = split(cell, '`');
  for (std::size_t i = 1; i < parts.size(); i += 2) {
    std::string name(parts[i]);
    const auto dot = name.rfind('.');
    if (dot == std::string::npos)
      name.insert(0, parent);
    else if (dot == 0)
      name = parent + name.substr(1);
    else
      parent = name.substr(0, dot + 1);
    members.push_back(std::move(name));
  }
  return members;
}

template <Record T>
std::vector<std::string> names() {
  return std::apply([](const auto&... field) { return std::vector<std::string>{field.name...}; },
                    T::fields());
}

/// As the tables of a measurement have it: the name in back quotes and the unit.
template <Record T>
Rows namesAndUnits() {
  const auto row = [](const auto& field) {
    const auto unit = field.unit == Unit::none ? std::string() : std::string(rawValue(field.unit));
    return std::vector<std::string>{"`" + std::string(field.name) + "`", unit};
  };
  return std::apply([&](const auto&... field) { return Rows{row(field)...}; }, T::fields());
}

struct JSONDocumentTests : testing::Test {
  const std::string text = readFile(fixturePath("../../docs/json.md"), 1 << 20).value_or("");
  std::map<std::string, Rows> tables = tablesByHeading(text);

  /// Of one heading, what stands behind a prefix, without what is nested deeper.
  std::vector<std::string> documented(const std::string& heading, const std::string& prefix) {
    std::vector<std::string> found;
    for (const auto& row : tables[heading])
      for (const auto& member : membersOf(row.at(0)))
        if (member.starts_with(prefix) && member.find('.', prefix.size()) == std::string::npos)
          found.push_back(member.substr(prefix.size()));
    return found;
  }
};

TEST_F(JSONDocumentTests, aMeasurementIsDescribedFieldByFieldWithItsUnits) {
  const std::pair<const char*, Rows> records[] = {{"SystemSnapshot", namesAndUnits<SystemSnapshot>()},
                                                  {"CPUStats", namesAndUnits<CPUStats>()},
                                                  {"MemoryStats", namesAndUnits<MemoryStats>()},
                                                  {"DiskStats", namesAndUnits<DiskStats>()},
                                                  {"VolumeInfo", namesAndUnits<VolumeInfo>()},
                                                  {"NetworkStats", namesAndUnits<NetworkStats>()},
                                                  {"GPUStats", namesAndUnits<GPUStats>()},
                                                  {"BatteryStats", namesAndUnits<BatteryStats>()},
                                                  {"ProcessUsage", namesAndUnits<ProcessUsage>()}};
  for (const auto& [heading, fields] : records) {
    auto rows = tables[heading];
    for (auto& row : rows) row.resize(2);
    EXPECT_THAT(rows, ElementsAreArray(fields)) << heading;
  }
}

TEST_F(JSONDocumentTests, commandsNameEveryFieldOfTheirRecordsAndNoOther) {
  struct Row {
    const char *heading, *prefix;
    std::vector<std::string> fields;
  };
  auto appFields = names<AppUsage>();
  for (const char* sum : {"cpu", "memory", "diskRead", "diskWrite", "netIn", "netOut", "power"})
    appFields.emplace_back(sum);
  const Row rows[] = {{"status", "insights[].", names<Insight>()},
                      {"status", "insights[].action.", names<Insight::Action>()},
                      {"alerts", "alerts[].", names<HealthAlert>()},
                      {"doctor", "sources[].", names<SourceReport>()},
                      {"top", "apps[].", appFields},
                      {"startup", "items[].", names<StartupItem>()},
                      {"history METRIC", "points[].", names<HistoryPoint>()},
                      {"history --top METRIC", "apps[].", names<AppTotal>()},
                      {"servers, servers list", "projects[].", names<DevProject>()},
                      {"servers, servers list", "projects[].servers[].", names<DevServer>()},
                      {"sensors", "temperatures[].", names<TemperatureReading>()},
                      {"sensors", "fans[].", names<FanReading>()},
                      {"sensors", "peripherals[].", names<PeripheralBattery>()},
                      {"sound", "", names<SoundState>()},
                      {"sound", "output.", names<OutputDevice>()},
                      {"sound", "apps[].", names<AudioApp>()},
                      {"sound", "remembered[].", names<RememberedApp>()},
                      {"storage", "categories[].items[].", names<StorageItem>()},
                      {"storage log", "entries[].", names<FreedEntry>()}};
  for (const auto& [heading, prefix, fields] : rows)
    EXPECT_THAT(documented(heading, prefix), UnorderedElementsAreArray(fields)) << heading << " " << prefix;
}

TEST_F(JSONDocumentTests, theSocketNamesEveryAction) {
  for (const auto name : actionNames()) EXPECT_THAT(text, HasSubstr("{\"do\":\"" + std::string(name) + '"'));
  EXPECT_THAT(documented("The keeper's socket", ""), IsSupersetOf(names<ActionDescription>()));
}

TEST_F(JSONDocumentTests, everyKnownPartIsNamed) {
  for (const auto& part : allCases<KnownPart>())
    EXPECT_THAT(text, HasSubstr('"' + std::string(part.rawValue) + '"'));
  for (const auto& state : allCases<Knowledge>())
    EXPECT_THAT(text, HasSubstr('"' + std::string(state.rawValue) + '"'));
}

} // namespace
} // namespace korvell
