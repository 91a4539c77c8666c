#include "Words/Languages.h"

#include "Base/Format.h"
#include "Base/LaterSpeech.h"
#include "Base/LocalTime.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/HealthReport.h"
#include "Platform/Formats/LinuxWords.h"
#include "Shared/WidgetSnapshot.h"
#include "Words/German/Tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

namespace korvell {
namespace {

/// "de" as the process's own language, with Linux' words.
struct Languages : testing::Test {
  void SetUp() override { speak("de"); }
  void TearDown() override { setLocalization({}); }
  static void speak(std::string_view code) {
    setLanguages(languages(code, {linuxWords(), german::onLinux()}));
  }
};

TEST(LanguageFor, followsTheListAndThenTheLocale) {
  const struct {
    const char *locale, *list, *expected;
  } rows[] = {
      {"de_DE.UTF-8", "", "de"},
      {"de-AT", "", "de"},
      {"de", "", "de"},
      {"en_GB.UTF-8", "", "en"},
      {"fr_FR.UTF-8", "", "en"}, // not spoken
      {"", "de", "en"},          // no locale is the locale C
      {"C.UTF-8", "de", "en"},   // where the list means nothing
      {"POSIX", "de", "en"},
      {"en_US.UTF-8", "de:en", "de"},
      {"de_DE.UTF-8", "fr:en:de", "en"}, // the first that is spoken
      {"de_DE.UTF-8", "fr:it", "de"},
      {"de_DE.UTF-8", ":", "de"},
      {"den_CA", "", "en"}, // another language whose code begins so
  };
  for (const auto& row : rows)
    EXPECT_EQ(languageFor(row.locale, row.list), row.expected) << row.locale << " " << row.list;
}

TEST_F(Languages, aPlatformsWordsComeBeforeTheOthers) {
  EXPECT_EQ(localized("Your Mac"), "Dieser Rechner");
  EXPECT_EQ(localized("Settings…"), "Einstellungen…");
  EXPECT_EQ(localized("A name of somebody's"), "A name of somebody's");
  setLanguages(languages("de"));
  EXPECT_EQ(localized("Your Mac"), "Dieser Mac");
  speak("en");
  EXPECT_EQ(localized("Your Mac"), "Your computer");
  speak("fr");
  EXPECT_EQ(currentLanguage().code, "en");
}

TEST_F(Languages, aThreadMaySpeakAnother) {
  {
    const InLanguage outer("en");
    EXPECT_EQ(localized("Trash"), "Trash");
    {
      const InLanguage unknown("fr"), inner("de");
      EXPECT_EQ(localized("Trash"), "Papierkorb");
    }
    EXPECT_EQ(Format::percent(12), "12%");
    std::thread([] { EXPECT_EQ(localized("Trash"), "Papierkorb"); }).join();
  }
  EXPECT_EQ(localized("Trash"), "Papierkorb");
}

TEST_F(Languages, theProcessChangesItsOwnWhileOthersSpeak) {
  std::atomic<bool> hasEnded = false;
  std::set<std::string> heard;
  std::thread other([&] {
    const InLanguage fixed("en");
    while (!hasEnded) std::thread([&] { heard.insert(localized("Trash")); }).join();
    EXPECT_EQ(localized("Trash"), "Trash");
  });
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(speakLanguage(i % 2 == 0 ? "en" : "de"));
  hasEnded = true;
  other.join();
  EXPECT_THAT(heard, testing::IsSubsetOf({"Trash", "Papierkorb"}));
  EXPECT_FALSE(speakLanguage("de")) << "already";
  EXPECT_FALSE(speakLanguage("fr"));
  EXPECT_EQ(localized("Trash"), "Papierkorb");
}

TEST_F(Languages, whatIsToldLaterSpeaksAsItWasAskedFor) {
  const auto trash = [] { return localized("Trash"); };
  const auto own = inThisLanguage(trash);
  const InLanguage reader("en");
  const auto asked = inThisLanguage(trash);
  EXPECT_EQ(ownLanguage(), "de");
  {
    const InLanguage views(ownLanguage());
    EXPECT_EQ(asked(), "Trash");
  }
  std::thread([&] {
    EXPECT_EQ(asked(), "Trash");
    EXPECT_EQ(own(), "Papierkorb");
    speakLanguage("en");
    EXPECT_EQ(own(), "Trash") << "the process speaks another language by now";
  }).join();
}

TEST_F(Languages, numbersAndDaysAreWrittenAsInGerman) {
  EXPECT_EQ(Format::bytes(1'234'000'000), "1,23 GB");
  EXPECT_EQ(Format::rate(1.5e6), "1,5 MB/s");
  EXPECT_EQ(Format::percent(42), "42\u202f%");
  EXPECT_EQ(Format::celsius(54), "54\u202f°C");
  EXPECT_EQ(Format::figure(Unit::corePercent, 12.34), "12,3\u202f%");
  EXPECT_EQ(Format::grouped(-1'234'567), "-1.234.567");
  EXPECT_EQ(Format::dollars(-1234.5), "-1.234,50 $");
  EXPECT_EQ(Format::shortCount(45'200'000), "45,2 Mio.");
  EXPECT_EQ(Format::shortCount(999), "999");
  EXPECT_EQ(Format::duration(Seconds{86'400}), "1 Tag");
  EXPECT_EQ(Format::duration(Seconds{3 * 86'400}), "3 Tage");
  EXPECT_EQ(Format::duration(Seconds{3 * 3'600 + 300}), "3 h 5 min");
  EXPECT_EQ(shownDay(CalendarDay::of(2026, 3, 1)), "01.03.2026");
  EXPECT_EQ(dayText(CalendarDay::of(2026, 3, 1)), "2026-03-01"); // as files have it
}

TEST_F(Languages, whatIsToldOnIsEnglishAndReadInOnesOwnLanguage) {
  const auto wording = [] {
    return Wording{localized("{app} is hammering the disk", {{"app", "Files"}}),
                   localized("{rate} on average for 5 minutes.", {{"rate", Format::rate(1.5e6)}})};
  };
  const auto own = wording();
  const HealthAlert alert{
      .id = "1", .title = own.title, .detail = own.detail, .date = Date{1}, .wordings = wordingsOf(wording)};
  const auto told = toldValue(std::vector{alert});
  EXPECT_EQ(*(*told.asArray())[0].find("title")->asString(), "Files is hammering the disk");

  std::vector<HealthAlert> read;
  ASSERT_TRUE(fromValue(told, read));
  EXPECT_EQ(read, std::vector{alert});
  speak("en");
  ASSERT_TRUE(fromValue(told, read));
  EXPECT_EQ(read[0].detail, "1.5 MB/s on average for 5 minutes.");
  EXPECT_EQ(toldValue(read), told); // nothing is lost where another language was spoken

  // An older keeper, or one of a single language, told one text.
  ASSERT_TRUE(fromValue(
      *parseJSON(R"([{"id": "2", "title": "Alt", "detail": "", "date": "1970-01-01T00:00:01Z"}])"), read));
  EXPECT_EQ(read[0].title, "Alt");
}

TEST_F(Languages, theWidgetsDocumentIsEnglishAndShownInOnesOwnLanguage) {
  const WidgetSnapshot german{.label = "Gut",
                              .fixes = {{.title = "Untätige Dev-Server: 2", .detail = "…"}},
                              .tiles = {{.page = "cpu", .value = "24\u202f%", .detail = "Last 2,1"}},
                              .apps = {{.name = "Files", .memory = "1,2 GB", .fraction = 1}}};
  WidgetSnapshot document{.score = 87,
                          .label = "Good",
                          .fixes = {{.title = "2 idle dev servers", .detail = "…"}},
                          .tiles = {{.page = "cpu", .value = "24%", .detail = "load 2.1", .points = {1, 2}}},
                          .apps = {{.name = "Files", .memory = "1.2 GB", .fraction = 1}}};
  document.others.emplace("de", german);
  const auto text = document.encoded();

  const auto here = WidgetSnapshot::decoded(text);
  ASSERT_TRUE(here);
  EXPECT_EQ(here->label, "Gut");
  EXPECT_EQ(here->fixes[0].title, german.fixes[0].title);
  EXPECT_EQ(here->tiles[0].detail, "Last 2,1");
  EXPECT_EQ(here->tiles[0].points, document.tiles[0].points);
  EXPECT_EQ(here->apps[0].memory, "1,2 GB");
  speak("en");
  EXPECT_EQ(WidgetSnapshot::decoded(text)->tiles[0].value, "24%");
}

} // namespace
} // namespace korvell
