#include "Tool/WatchScreen.h"

#include "Base/Text.h"
#include "Tool/Keys.h"
#include "Tool/LiveGraphs.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::Not;
using Reply = WatchScreen::Reply;

struct WatchScreenTests : testing::Test {
  std::string sink;
  Terminal terminal{sink, 80, true, true};
  SystemSnapshot snapshot;
  KnownParts known;
  HealthReport report{72, {}};
  LiveSeries live;
  WatchScreen screen;
  bool hasSample = true;
  KeeperAnswer keeper;

  WatchScreenTests() {
    for (const auto& part : allCases<KnownPart>()) known.set(part.value, true);
    snapshot.date = Date{1'772'323'200};
    snapshot.cpu = {.total = 42, .user = 30, .system = 12, .perCore = std::vector<double>(128, 50)};
    snapshot.memory = {.total = 16ull << 30, .app = 4ull << 30, .free = 12ull << 30};
    for (int i = 0; i < 20; ++i)
      snapshot.disk.volumes.push_back({"Volume " + std::to_string(i), "/media/volume", 1'000'000, 1000});
    for (int i = 0; i < 40; ++i)
      snapshot.apps.push_back(
          {.id = std::to_string(i),
           .name = "日本 Program " + std::to_string(i),
           .processes = {{.pid = 100 + i, .name = "worker", .cpu = 400.0 - i, .power = 1},
                         {.pid = 900 + i, .name = "näher", .cpu = 1, .memory = 1u << 30}}});
    for (int i = 0; i < 5; ++i)
      report.insights.push_back({Insight::Severity::warning, "A finding with a long title",
                                 "And a detail that is long: " + std::string(90, 'x'), 5,
                                 Insight::Action{.kind = Insight::Action::Kind::freeUpSpace}});
    for (const auto& metric : allCases<Metric>())
      for (int i = 0; i < 100; ++i)
        live[metric.value].push_back({snapshot.date - Seconds{200.0 - 2 * i}, double(i)});
    screen.setApps(snapshot.apps);
  }
  std::vector<std::string> frame(int columns, int rows) {
    return screen.frame(terminal, {snapshot, known, report, live, hasSample, true, keeper}, columns, rows);
  }
  std::string text(int columns, int rows) {
    std::string all;
    for (const auto& line : frame(columns, rows)) all += line + "\n";
    return all;
  }
  void type(std::string_view keys) {
    for (const char key : keys) screen.handleKey(static_cast<unsigned char>(key));
  }
  /// The line above the list, on a terminal without colours.
  std::string titlesAt(int columns) {
    const Terminal plain(sink, columns);
    for (auto& line : screen.frame(plain, {snapshot, known, report, live, true, true}, columns, 30))
      if (line.find("▾") != line.npos) return line;
    return {};
  }
  int listed(int columns, int rows) {
    return int(std::ranges::count_if(frame(columns, rows),
                                     [](const std::string& line) { return line.find("+ ") != line.npos; }));
  }
};

TEST_F(WatchScreenTests, everyFrameFitsWhateverTheSize) {
  const std::vector<std::string> states = {"", "?", "?/wor"};
  for (const auto& keys : states) {
    type(keys);
    for (const bool ready : {true, false})
      for (const int columns : {1, 2, 5, 9, 11, 16, 23, 40, 60, 80, 128, 400})
        for (const int rows : {1, 2, 3, 4, 5, 6, 9, 13, 24, 60}) {
          hasSample = ready;
          const auto lines = frame(columns, rows);
          ASSERT_EQ(lines.size(), std::size_t(rows)) << columns << " x " << rows << keys;
          for (const auto& line : lines)
            ASSERT_LE(inkedWidth(line), columns) << columns << " x " << rows << line;
        }
  }
}

TEST_F(WatchScreenTests, smallScreensKeepTheListAndItsSortedFigure) {
  for (const int rows : {3, 4, 7, 10, 13, 14, 24}) EXPECT_GE(listed(80, rows), 3) << rows;
  type("?");
  EXPECT_GE(listed(40, 10), 3) << "the help does not take its place";
  screen.handleKey(Key::escape);
  struct Row {
    int columns;
    char key;
    const char* titles;
  };
  for (const auto& [columns, key, titles] :
       {Row{70, 'c', "▾ CPU/core     Memory       Disk    Network    ~Energy"},
        Row{59, 'c', "▾ CPU/core     Memory       Disk    Network"},
        Row{50, 'c', "▾ CPU/core     Memory       Disk"}, Row{50, 'e', "CPU/core     Memory  ▾ ~Energy"},
        Row{40, 'n', "CPU/core  ▾ Network"}, Row{30, 'm', "▾ Memory"}}) {
    type({&key, 1});
    EXPECT_TRUE(titlesAt(columns).ends_with(titles)) << columns << titlesAt(columns);
  }
}

TEST_F(WatchScreenTests, largeScreensShowTheLastMinutes) {
  EXPECT_THAT(text(80, 24), Not(HasSubstr("5 min ago")));
  snapshot.disk.volumes.resize(1);
  for (const auto& [columns, rows] : {std::pair(80, 60), std::pair(40, 70), std::pair(160, 24)}) {
    const auto all = text(columns, rows);
    for (const char* expected : {"CPU\x1b[0m  99%", "peak 99%", "of 16.0 GB", "peak 99 B/s", "5 min ago"})
      EXPECT_THAT(all, HasSubstr(expected)) << columns;
    EXPECT_GE(listed(columns, rows), 3) << columns;
  }
  const auto lines = liveGraphs(Terminal(sink, 80), live, snapshot, known, 30, 21);
  ASSERT_EQ(lines.size(), 21u);
  EXPECT_EQ(lines[0], "CPU  99%              peak 99%");
  EXPECT_EQ(lines[4].substr(0, 9), std::string(9, ' ')) << "nothing was measured yet then";
  EXPECT_TRUE(lines[1].ends_with("▆▇")) << lines[1];
  EXPECT_TRUE(liveGraphs(terminal, live, snapshot, known, 30, 8).empty());
  EXPECT_FALSE(liveGraphs(terminal, {}, snapshot, known, 80, 8).empty());
}

TEST_F(WatchScreenTests, whatIsNotKnownIsADashInEveryPartOfTheScreen) {
  snapshot.disk.volumes.resize(1);
  known.set(KnownPart::processor, false);
  known.set(KnownPart::disks, false);
  known.set(KnownPart::processTraffic, false);
  known.set(KnownPart::processEnergy, false);
  known.set(KnownPart::tenMinuteAverage, false);
  const auto all = text(80, 60);
  for (const char* expected : {"72 Fair so far", "CPU\x1b[0m  –", "Memory\x1b[0m  99 B", "Disk\x1b[0m  –"})
    EXPECT_THAT(all, HasSubstr(expected));
  EXPECT_THAT(all, Not(HasSubstr("Energy")));
  const auto lines = liveGraphs(Terminal(sink, 80), live, snapshot, known, 30, 21);
  EXPECT_EQ(lines[0], "CPU  –" + std::string(24, ' '));
  EXPECT_EQ(lines[4], std::string(30, ' ')) << "zeros that nobody measured are not drawn";
}

TEST_F(WatchScreenTests, searchingFindsApplicationsAndProcesses) {
  EXPECT_EQ(screen.handleKey('/'), Reply::redraw);
  type("program 3"); // 3 and 30 to 39; q and c are letters now
  EXPECT_EQ(listed(80, 60), 11);
  EXPECT_THAT(text(80, 40), HasSubstr("/program 3▏"));
  EXPECT_THAT(text(80, 40), HasSubstr("11 of 40 applications · Enter keeps it"));
  EXPECT_THAT(text(40, 40), HasSubstr("11 of 40 applications\x1b"));
  for (int i = 0; i < 20; ++i) screen.handleKey(Key::backspace);
  type("N\xc3\xa4H");
  screen.handleKey(Key::backspace);
  screen.handleKey(Key::backspace);
  EXPECT_THAT(text(80, 40), HasSubstr("/N▏")) << "a character goes with all its bytes";
  screen.handleKey(Key::escape);
  EXPECT_THAT(text(80, 40), Not(HasSubstr("applications ·")));
  type("/912\r");
  EXPECT_THAT(text(80, 40), HasSubstr("912     näher"));
  EXPECT_THAT(text(80, 40), HasSubstr("1 of 40 applications")) << "by the id of a process";
  EXPECT_EQ(screen.handleKey('x'), Reply::nothing);
  EXPECT_EQ(screen.handleKey(Key::escape), Reply::redraw);
  EXPECT_EQ(screen.handleKey('q'), Reply::quit);
}

TEST_F(WatchScreenTests, theHelpSaysWhatTheKeysAndTheFiguresMean) {
  EXPECT_THAT(text(80, 30), Not(HasSubstr("percent of one core")));
  EXPECT_EQ(screen.handleKey('?'), Reply::redraw);
  const auto all = text(200, 30);
  for (const char* expected : {"q: quit.", "/: search", "CPU at the top: percent of the machine.",
                               "CPU/core in the list: percent of one core."})
    EXPECT_THAT(all, HasSubstr(expected));
  screen.handleKey('?');
  EXPECT_THAT(text(200, 30), Not(HasSubstr("q: quit.")));
}

TEST_F(WatchScreenTests, figuresOfItsOwnBesideASilentKeeperAreSaidToBe) {
  EXPECT_THAT(text(80, 24), Not(HasSubstr("own figures")));
  keeper = {.isSilent = true, .pid = 1234567};
  for (const bool measured : {false, true}) {
    hasSample = measured;
    EXPECT_THAT(text(80, 24),
                HasSubstr("Korvell (process 1234567) does not answer. These are watch's own fig"));
    EXPECT_THAT(text(40, 12), HasSubstr("Korvell (process 1234567) is silent"));
  }
  keeper = {.isStarting = true};
  EXPECT_THAT(text(80, 24), HasSubstr("Korvell has just started."));
}

} // namespace
} // namespace korvell
