#include "Agents/Metrics.h"
#include "Agents/MetricsFile.h"
#include "App/SettingsCheck.h"
#include "Base/Text.h"
#include "Tests/App/AppFixture.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <set>

namespace korvell {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using enum MetricsFormat;
using Type = MetricsText::Type;

std::string written(MetricsFormat format) {
  MetricsText text(format);
  text.family("build", Type::info, Unit::none, "What \"runs\"");
  text.sample(1, {{"version", "1.0"}});
  text.family("heat", Type::gauge, Unit::percent, "A\\B\nC");
  text.sample(50, {{"name", "a\"b\\c\nd\x1b"}, {"other", "x"}});
  text.family("left_out", Type::gauge, Unit::bytes, "Has no sample");
  text.family("sent", Type::counter, Unit::bytes, "Sent");
  text.sample(12'345'678'901'234.0);
  return std::move(text).finish();
}

TEST(MetricsTextTests, bothFormats) {
  EXPECT_EQ(written(prometheus), "# HELP korvell_build_info What \"runs\"\n"
                                 "# TYPE korvell_build_info gauge\n"
                                 "korvell_build_info{version=\"1.0\"} 1\n"
                                 "# HELP korvell_heat_ratio A\\\\B\\nC\n"
                                 "# TYPE korvell_heat_ratio gauge\n"
                                 "korvell_heat_ratio{name=\"a\\\"b\\\\c\\\\x0ad\\\\x1b\",other=\"x\"} 0.5\n"
                                 "# HELP korvell_sent_bytes_total Sent\n"
                                 "# TYPE korvell_sent_bytes_total counter\n"
                                 "korvell_sent_bytes_total 12345678901234\n");
  const auto open = written(openMetrics);
  EXPECT_THAT(open, AllOf(HasSubstr("# TYPE korvell_build info\nkorvell_build_info{"),
                          HasSubstr("# HELP korvell_build What \\\"runs\\\"\n"),
                          HasSubstr("# TYPE korvell_sent_bytes counter\n# UNIT korvell_sent_bytes bytes\n"
                                    "korvell_sent_bytes_total 12345678901234\n"),
                          EndsWith("\n# EOF\n")));
}

/// Lines that are samples of that family.
std::vector<std::string> samples(const std::string& text, const std::string& family) {
  std::vector<std::string> found;
  for (const auto line : splitLines(text))
    if (line.starts_with("korvell_" + family + "{") || line.starts_with("korvell_" + family + " "))
      found.emplace_back(line);
  return found;
}

MetricsReading machine() {
  MetricsReading reading{.now = Date{1'800'000'000}};
  reading.snapshot.memory.total = 16'000;
  reading.snapshot.cpu.perCore = {10, 20};
  reading.known.set(KnownPart::processes, true);
  return reading;
}

TEST(MetricsTests, aSensorIsOneSeriesHoweverOftenItIsTold) {
  auto reading = machine();
  reading.sensors = SensorsSnapshot{.fans = {{"nct6775 fan1", "CPU fan", 900, 0, 0}},
                                    .temperatures = {{"Tctl", 61, SensorKind::cpu, "k10temp"},
                                                     {"Tctl", 60, SensorKind::cpu, "k10temp"},
                                                     {"Tctl", 40, SensorKind::cpu, {}}}};
  using enum PeripheralBattery::Kind;
  reading.peripherals = {{"Mouse", 20, mouse}, {"Mouse", 90, mouse}};
  const auto text = metricsText(reading, prometheus, "1");
  EXPECT_THAT(samples(text, "temperature_celsius"),
              ElementsAre("korvell_temperature_celsius{chip=\"k10temp\",sensor=\"Tctl\",kind=\"cpu\"} 61",
                          "korvell_temperature_celsius{chip=\"\",sensor=\"Tctl\",kind=\"cpu\"} 40"));
  EXPECT_THAT(samples(text, "fan_speed_revolutions_per_minute"), ElementsAre(EndsWith("} 900")));
  EXPECT_THAT(samples(text, "peripheral_charge_ratio"), ElementsAre(EndsWith("} 0.2")));
}

TEST(MetricsTests, theLargestApplicationsAndTheRestTogether) {
  auto reading = machine();
  for (int i = 0; i < 30; ++i)
    reading.snapshot.apps.push_back({.id = "app" + std::to_string(i),
                                     .name = i < 2 ? "Twins" : "App " + std::to_string(i),
                                     .processes = {{.pid = i + 1, .cpu = 10, .memory = 100u + unsigned(i)}}});
  reading.snapshot.apps.push_back({.id = "x", .name = "other", .processes = {{.pid = 99, .memory = 1}}});
  const auto lines = samples(metricsText(reading, prometheus, "1"), "app_memory_bytes");
  ASSERT_EQ(lines.size(), mostLabelled + 1);
  EXPECT_EQ(lines[0], "korvell_app_memory_bytes{app=\"Twins\"} 201") << "one series a name";
  EXPECT_EQ(lines[1], "korvell_app_memory_bytes{app=\"App 29\"} 129");
  EXPECT_THAT(lines.back(), HasSubstr("{app=\"other\"} ")) << "with the application of that name";
}

TEST(MetricsTests, namesThatAreOneWhenTheyAreCutAreOneSeries) {
  auto reading = machine();
  const auto name = [](char last) { return std::string(150, 'n') + last; };
  reading.snapshot.apps = {{.id = "a", .name = name('a'), .processes = {{.pid = 1, .memory = 3}}},
                           {.id = "b", .name = name('b'), .processes = {{.pid = 2, .memory = 4}}}};
  reading.known.set(KnownPart::volumes, true);
  reading.snapshot.disk.volumes = {{"Disk", name('a'), 10, 1}, {"Disk", name('b'), 20, 2}};
  reading.sensors = SensorsSnapshot{.fans = {{name('a'), "", 900, 0, 0}, {name('b'), "", 800, 0, 0}},
                                    .temperatures = {{name('a'), 61}, {name('b'), 60}}};
  reading.peripherals = {{name('a'), 20}, {name('b'), 90}};
  reading.today = Date{0};
  reading.aiUsage = {{.day = Date{0}, .model = name('a'), .tokens = {.input = 3}},
                     {.day = Date{0}, .model = name('b'), .tokens = {.input = 4}}};
  const auto text = metricsText(reading, prometheus, "1");
  EXPECT_THAT(samples(text, "app_memory_bytes"), ElementsAre(EndsWith("} 7")));
  EXPECT_THAT(samples(text, "ai_tokens_today"), Contains(EndsWith("kind=\"input\"} 7")));
  std::set<std::string> told;
  for (const auto line : splitLines(text))
    if (!line.starts_with("#")) {
      EXPECT_TRUE(told.emplace(line.substr(0, line.rfind(' '))).second) << line;
    }
}

TEST(MetricsTests, whatIsNotKnownIsNotTold) {
  auto reading = machine();
  auto text = metricsText(reading, prometheus, "1");
  for (const char* absent : {"cpu_usage", "memory_bytes{use", "network", "gpu", "battery", "dev_servers",
                             "alerts", "ai_tokens", "app_network", "keeper_cpu", "storage_reclaimable"})
    EXPECT_THAT(text, Not(HasSubstr("korvell_" + std::string(absent)))) << absent;
  EXPECT_THAT(samples(text, "keeper_running"), ElementsAre("korvell_keeper_running 0"));

  for (const auto& part : allCases<KnownPart>()) reading.known.set(part.value, true);
  reading.keeper = 7;
  reading.snapshot.apps = {
      {.id = "k", .name = "korvell", .processes = {{.pid = 7, .cpu = 0.2, .memory = 5}}}};
  reading.snapshot.network.totalIn = 77;
  reading.report = {.score = 92, .insights = {{.severity = Insight::Severity::warning, .penalty = 8}}};
  reading.alerts = {{.kind = HealthAlert::Kind::disk, .date = reading.now - Seconds{10}},
                    {.kind = HealthAlert::Kind::disk, .date = reading.now - Seconds{90'000}}};
  reading.reclaimable = {{StorageKind::npm, {40, Date{60}}}};
  reading.today = Date{100};
  reading.aiUsage = {{.day = Date{0}, .model = "m", .tokens = {.input = 3}, .cost = 0.5},
                     {.day = Date{100}, .model = "m", .tokens = {.input = 4}}};
  text = metricsText(reading, prometheus, "1");
  const std::pair<const char*, const char*> rows[] = {
      {"network_receive_bytes_total", "korvell_network_receive_bytes_total 77"},
      {"keeper_memory_bytes", "korvell_keeper_memory_bytes 5"},
      {"storage_reclaimable_bytes", "korvell_storage_reclaimable_bytes{kind=\"npm\"} 40"},
      {"storage_scan_timestamp_seconds", "korvell_storage_scan_timestamp_seconds{kind=\"npm\"} 60"},
      {"ai_cost_30d_dollars", "korvell_ai_cost_30d_dollars{tool=\"Claude Code\",model=\"m\"} 0.5"},
  };
  for (const auto& [family, line] : rows) EXPECT_THAT(samples(text, family), ElementsAre(line)) << family;
  EXPECT_THAT(text, HasSubstr("korvell_findings{severity=\"warning\"} 1\n"));
  EXPECT_THAT(text, HasSubstr("korvell_score_points_lost{fix=\"none\"} 8\n"));
  EXPECT_THAT(text, HasSubstr("korvell_alerts_day{kind=\"disk\"} 1\n"));
  EXPECT_THAT(text,
              HasSubstr("korvell_ai_tokens_today{tool=\"Claude Code\",model=\"m\",kind=\"input\"} 4\n"));
  EXPECT_THAT(text, HasSubstr("korvell_ai_tokens_30d{tool=\"Claude Code\",model=\"m\",kind=\"input\"} 7\n"));
  EXPECT_THAT(samples(text, "ai_cost_today_dollars"), ElementsAre()) << "no row of today has a price";
}

struct MetricsFileTests : AppFixture {
  std::vector<std::string> told;
  MetricsFile file{*main,          *model, defaults,
                   time.factory(), "1.0",  [this](const Trouble& trouble) { told.push_back(trouble.text); }};
};

TEST_F(MetricsFileTests, isKeptUpToDateWhileTheSettingNamesIt) {
  time.advance(Seconds{60});
  const auto path = folder / "korvell.prom";
  defaults.set(metricsFileKey, path);
  time.advance(Seconds{60});
  ASSERT_THAT(folder.text("korvell.prom"), HasSubstr("korvell_keeper_running 1\n"));
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0644)) << "for the collector";
  const auto before = folder.text("korvell.prom");
  time.advance(Seconds{60});
  EXPECT_NE(folder.text("korvell.prom"), before);
  EXPECT_THAT(told, ElementsAre());

  defaults.set(metricsFileKey, folder / "nowhere/korvell.prom");
  time.advance(Seconds{300});
  EXPECT_THAT(told, ElementsAre(HasSubstr("nowhere/korvell.prom: "))) << "once";
  defaults.remove(metricsFileKey);
  time.advance(Seconds{60});
  EXPECT_TRUE(std::filesystem::exists(path)) << "nobody asked to remove it";
}

} // namespace
} // namespace korvell
