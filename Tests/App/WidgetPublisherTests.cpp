#include "App/WidgetPublisher.h"

#include "App/WidgetDocument.h"
#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeWidgetCenter.h"
#include "Words/Languages.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <sys/resource.h>
#include <thread>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Insight finding(std::string title, std::optional<Insight::Action::Kind> action = {},
                Insight::Severity severity = Insight::Severity::warning) {
  Insight insight{.severity = severity, .title = std::move(title), .detail = "why"};
  if (action) insight.action = Insight::Action{.kind = *action};
  return insight;
}

AppUsage app(std::string name, std::vector<std::uint64_t> memory) {
  AppUsage app{.id = name, .name = name};
  for (const auto bytes : memory) app.processes.push_back({.memory = bytes});
  return app;
}

constexpr const char* systemGroup = "macOS";

struct WidgetPublisherTests : testing::Test {
  ManualScheduler time;
  TemporaryFolder folder;
  const std::string path = folder / "Widget/widget.json";
  FakeWidgetCenter center;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};
  WidgetPublisher publisher{*main, {center, time.factory(), path, systemGroup}};
  HealthReport report{.score = 82, .insights = {finding("Disk space is getting low")}};
  SystemSnapshot snapshot;

  void publish() {
    publisher.publish(report, snapshot, history);
    time.run();
  }
  void publishAfter(double seconds) {
    time.advance(Seconds(seconds));
    publish();
  }
  void place() {
    publish();
    center.answer(1);
    time.run();
  }
  /// Of the document that lies there; nothing without one.
  std::optional<int> score() const {
    const auto document = WidgetShared::read(path);
    return document ? std::optional(document->score) : std::nullopt;
  }
};

TEST_F(WidgetPublisherTests, WritesNothingWhileNoWidgetIsPlaced) {
  publish();
  center.answer(0);
  for (int cycle = 0; cycle < 500; ++cycle) publishAfter(10);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(center.asked(), 2u); // after half an hour and after an hour
  EXPECT_EQ(center.reloads, 0);
}

TEST_F(WidgetPublisherTests, AsksAgainEveryHalfHourAndAtOnceWhereAPlacingShows) {
  place();
  EXPECT_FALSE(score()) << "the answer comes after the first";
  publish();
  EXPECT_EQ(score(), 82);

  publishAfter(1799);
  EXPECT_EQ(center.asked(), 0u);
  publishAfter(1);
  EXPECT_EQ(center.asked(), 1u);
  center.answer(std::nullopt); // unanswered changes nothing
  time.run();
  report.score = 70;
  publishAfter(60);
  EXPECT_EQ(score(), 70);

  center.current = 1; // removed
  publishAfter(10);
  EXPECT_EQ(center.asked(), 1u);
  center.answer(0);
  time.run();
  report.score = 60;
  publishAfter(100);
  EXPECT_EQ(score(), 70) << "never deleted, no longer written";
  EXPECT_EQ(center.asked(), 0u);
}

TEST_F(WidgetPublisherTests, WritesEnglishAndItsOwnLanguageBeside) {
  setLanguages(languages("de"));
  snapshot.cpu.load1 = 2.1;
  auto& finding = report.insights.front();
  finding.wordings = {{"en", {finding.title, finding.detail}}, {"de", {"Speicherplatz wird knapp", "warum"}}};
  speakHere(finding);
  place();
  publish();
  const auto here = WidgetShared::read(path);
  setLocalization({});
  const auto english = WidgetShared::read(path);
  ASSERT_TRUE(here && english);
  EXPECT_EQ(here->fixes.front().title, "Speicherplatz wird knapp");
  EXPECT_EQ(here->tiles.front().detail, "Last 2,1");
  EXPECT_EQ(english->fixes.front().title, "Disk space is getting low");
  EXPECT_EQ(english->tiles.front().detail, "load 2.1");
}

TEST_F(WidgetPublisherTests, WritesOnceAMinuteAndReloadsEveryQuarterHourForWhatIsNew) {
  place();
  publish();
  EXPECT_EQ(center.reloads, 1);
  report.score = 81;
  publishAfter(59);
  EXPECT_EQ(score(), 82);
  publishAfter(1);
  EXPECT_EQ(score(), 81);
  report.score = 80;
  publishAfter(180);
  EXPECT_EQ(score(), 80);
  EXPECT_EQ(center.reloads, 1);
  publishAfter(599);
  publishAfter(61); // 900 seconds after the reload
  EXPECT_EQ(center.reloads, 2);
  for (int minute = 0; minute < 300; ++minute) publishAfter(60);
  EXPECT_EQ(center.reloads, 2) << "nothing is new";
  report.insights[0].title = "2 idle dev servers";
  publishAfter(60);
  EXPECT_EQ(center.reloads, 3);

  time.clock().setNow(time.clock().now() - Seconds(86400));
  report.score = 50;
  publish();
  EXPECT_EQ(score(), 50) << "the clock was set back";
}

TEST_F(WidgetPublisherTests, KeepsTheOldDocumentWhereItCannotWrite) {
  place();
  publish();
  report.score = 40;
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit full{64, limit.rlim_max}; // the disk is full after 64 bytes
  std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &full);
  publishAfter(60);
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(score(), 82);
  EXPECT_THAT(folder.names("Widget"), ElementsAre("widget.json"));
  publishAfter(60);
  EXPECT_EQ(score(), 40);

  std::filesystem::remove_all(folder.path() / "Widget");
  folder.write("Widget", "a file where the folder should be");
  publishAfter(60);
  EXPECT_EQ(folder.text("Widget"), "a file where the folder should be");
  std::filesystem::remove(folder.path() / "Widget");
  publishAfter(60);
  EXPECT_EQ(score(), 40);
}

TEST_F(WidgetPublisherTests, AReaderNeverSeesHalfADocument) {
  std::filesystem::create_directories(folder.path() / "Widget");
  WidgetSnapshot document{.date = time.clock().now(), .label = "Good"};
  const auto write = [&](int turn) {
    document.score = turn % 101;
    document.label.assign(std::size_t(turn % 5000), 'x');
    return replaceFile(path, document.encoded(), Readers::owner, Flush::none);
  };
  ASSERT_TRUE(write(0));
  std::atomic<bool> ended = false;
  int read = 0, halves = 0;
  std::thread reader([&] {
    do {
      const auto seen = WidgetShared::read(path);
      halves += seen && (seen->label.empty() || seen->label.back() == 'x') ? 0 : 1;
      ++read;
    } while (!ended);
  });
  int written = 0;
  for (int turn = 0; turn < 10'000; ++turn) written += write(turn) ? 1 : 0;
  ended = true;
  reader.join();
  EXPECT_EQ(written, 10'000);
  EXPECT_EQ(halves, 0);
  EXPECT_GT(read, 0);
}

TEST(WidgetDocumentTests, FindingsOpenTheirSections) {
  using enum Insight::Action::Kind;
  const auto pages = [](std::vector<Insight> insights) {
    std::vector<std::string> pages;
    for (const auto& fix : widgetFixes({.insights = std::move(insights)})) pages.push_back(fix.page);
    return pages;
  };
  EXPECT_THAT(pages({finding("a", stopIdleServers), finding("b", freeUpSpace), finding("c", showStartupItems),
                     finding("d")}),
              ElementsAre("devServers", "storage", "startup"));
  EXPECT_THAT(pages({finding("a", openBatterySettings), finding("b", quitApp), finding("c")}),
              ElementsAre("energy", "overview", "overview"));
  EXPECT_THAT(pages({}), IsEmpty());
  const auto fixes =
      widgetFixes({.insights = {finding("a", {}, Insight::Severity::critical), finding("b", quitApp)}});
  EXPECT_EQ(fixes[0], (WidgetSnapshot::Fix{"a", "why", true, "overview"}));
  EXPECT_FALSE(fixes[1].critical);
  EXPECT_EQ(
      widgetContentKey({.score = 87, .insights = {finding("a"), finding("b"), finding("c"), finding("d")}}),
      "87|Good|a|b|c");
}

TEST(WidgetDocumentTests, ApplicationsByMemoryWithoutTheSystem) {
  const auto gigabyte = std::uint64_t(1) << 30;
  const auto rows = widgetApps({app("a", {gigabyte}), app(systemGroup, {9 * gigabyte}),
                                app("b", {gigabyte, gigabyte}), app("c", {4 * gigabyte}), app("d", {1})},
                               systemGroup);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], (WidgetSnapshot::TopApp{"c", {}, "4.00 GB", 1}));
  EXPECT_EQ(rows[1], (WidgetSnapshot::TopApp{"b", {}, "2.00 GB", 0.5}));
  EXPECT_EQ(rows[2].fraction, 0.25);
  EXPECT_THAT(widgetApps({app(systemGroup, {gigabyte})}, systemGroup), IsEmpty());
  EXPECT_EQ(widgetApps({app("a", {0})}, systemGroup)[0].fraction, 0);
}

TEST(WidgetDocumentTests, TilesShowTheMomentAndTheHalfHour) {
  ManualScheduler time;
  TemporaryFolder folder;
  HistoryStore history(time.factory(), time.clock(), folder.path().string());
  SystemSnapshot snapshot;
  for (int minute = 0; minute < 40; ++minute) {
    snapshot.date = time.clock().now();
    snapshot.cpu.total = minute;
    history.record(snapshot, 90);
    time.advance(Seconds(60));
  }
  snapshot.date = time.clock().now();
  history.record(snapshot, 90); // closes the last of the minutes
  time.run();
  snapshot.cpu.load1 = 2.06;
  snapshot.memory = {
      .total = std::uint64_t(16) << 30, .app = std::uint64_t(3) << 30, .wired = std::uint64_t(1) << 30};
  snapshot.network.inRate = 1.8e6;
  snapshot.network.outRate = 86e3;
  auto tiles = widgetTiles(snapshot, history);
  ASSERT_EQ(tiles.size(), 4u);
  ASSERT_GE(tiles[0].points.size(), 29u);
  EXPECT_LE(tiles[0].points.size(), 30u);
  EXPECT_EQ(tiles[0].points.back(), 39);
  for (auto& tile : tiles) tile.points.clear();
  EXPECT_EQ(tiles[0], (WidgetSnapshot::Tile{"cpu", "39%", "load 2.1", {}, 100}));
  EXPECT_EQ(tiles[1],
            (WidgetSnapshot::Tile{"memory", "4.00 GB", "of 16.0 GB", {}, double(snapshot.memory.total)}));
  EXPECT_EQ(tiles[2], (WidgetSnapshot::Tile{"disk", "–", "free", {}, {}}));
  EXPECT_EQ(tiles[3], (WidgetSnapshot::Tile{"network", "↓ 1.8 MB/s", "↑ 86 KB/s", {}, {}}));
  snapshot.disk.volumes = {{"System", "/", 249'000'000'000, 41'200'000'000}, {"Other", "/mnt", 2, 1}};
  EXPECT_EQ(widgetTiles(snapshot, history)[2].value, "41.2 GB");
}

/// The whole of it, from the cycle to the file.
TEST_F(AppFixture, EveryReportGoesToTheWidgets) {
  FakeWidgetCenter center;
  auto history = std::make_unique<HistoryStore>(time.factory(), time.clock(), folder.path().string());
  auto sampler = makeSampler(*history);
  const auto path = folder / "Widget/widget.json";
  model.reset();
  model = std::make_unique<AppModel>(
      *main,
      AppModel::Parts{.history = std::move(history),
                      .sampler = std::move(sampler),
                      .widgets = std::make_unique<WidgetPublisher>(
                          *main, WidgetPublisher::Seams{center, time.factory(), path, systemGroup})},
      attention,
      AppModel::Seams{
          state, defaults, notifications, {table, applications, table}, launchItems, trash, time.factory()});
  time.advance(Seconds(1));
  EXPECT_EQ(center.asked(), 0u) << "the first cycle has no report";
  time.advance(Seconds(2));
  EXPECT_EQ(center.asked(), 1u);
  center.answer(2);
  time.advance(Seconds(2));
  const auto document = WidgetShared::read(path);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->score, model->report->score);
  EXPECT_EQ(document->tiles.size(), 4u);
}

} // namespace
} // namespace korvell
