#include "App/SettingsCheck.h"

#include "Base/ManualQueue.h"
#include "Core/Health/WeeklyReport.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> texts(const std::vector<Trouble>& troubles) {
  std::vector<std::string> texts;
  for (const auto& trouble : troubles) texts.push_back(trouble.text);
  return texts;
}

TEST(SettingsCheckTests, valuesOfTheWrongKindAreNamedAndGoodOnesAreNot) {
  FakeUserDefaults defaults;
  for (const auto& [key, value] : {std::pair<const char*, Value>("menuBarStyle", "score"),
                                   {"alert.cpu", false},
                                   {"temperatureUnit", "fahrenheit"},
                                   {"weeklyReport.enabled", true},
                                   {"weeklyReport.lastSent", Date{1.5}},
                                   {"weeklyReport.last", toValue(SentReport{Date{1.5}, "Title", "Text"})},
                                   {"alerts.lastSeen", "2026-03-02T09:00:00Z"},
                                   {"storage.freedTotal", 7},
                                   {"storage.freedLog", Value::array()},
                                   {"metrics.textfile", "/var/lib/collector/korvell.prom"},
                                   {"somebody.else", "x"}})
    defaults.set(key, value);
  EXPECT_THAT(settingsTroubles(defaults), IsEmpty());

  defaults.set("alert.cpu", "off\x1b");
  defaults.set("menuBarStyle", "tiny");
  defaults.set("appearance", "blue");
  defaults.set("metrics.textfile", "korvell.prom");
  defaults.set("temperatureUnit", "kelvin");
  defaults.set("alerts.lastSeen", "yesterday");
  defaults.set("weeklyReport.last", Value::object({{"title", "Title"}}));
  defaults.set("storage.freedLog", Value(Value::Array{1}));
  defaults.fault = "No file.";
  EXPECT_THAT(
      texts(settingsTroubles(defaults)),
      ElementsAre(
          "No file.", HasSubstr("one of icon, score, cpuAndMemory and graphs, but \"tiny\" is"),
          HasSubstr("one of system, light and dark, but \"blue\" is"),
          HasSubstr("one of celsius and fahrenheit, but \"kelvin\" is"),
          "The setting alert.cpu takes true or false, but \"off\\u001b\" is stored; its default "
          "applies.",
          HasSubstr("metrics.textfile takes an absolute path that ends in .prom, but \"korvell.prom\" is"),
          HasSubstr("alerts.lastSeen takes a date and time, but \"yesterday\" is"),
          HasSubstr("weeklyReport.last takes a date, a title and a body, but"),
          HasSubstr("storage.freedLog takes a list of dates with bytes, but [1] is stored; only what")));
}

TEST(SettingsCheckTests, theWatchTellsWhatIsNewAndOnce) {
  ManualScheduler time;
  const auto queue = time.makeQueue("main");
  FakeUserDefaults defaults;
  defaults.set("alert.disk", 1);
  std::vector<std::string> told;
  const SettingsWatch watch(*queue, defaults, [&](const Trouble& trouble) { told.push_back(trouble.text); });
  time.advance(Seconds{100});
  EXPECT_THAT(told, IsEmpty()) << "it was so before";
  defaults.fault = "Line 3.";
  time.advance(Seconds{600});
  EXPECT_THAT(told, ElementsAre("Line 3."));
  defaults.fault.reset();
  time.advance(Seconds{100});
  defaults.fault = "Line 3.";
  time.advance(Seconds{100});
  EXPECT_THAT(told, ElementsAre("Line 3.", "Line 3.")) << "it was mended in between";
}

} // namespace
} // namespace korvell
