#include "Tests/UI/MeasureFixture.h"
#include "UI/Kit/ChartRules.h"

using namespace testing;

namespace korvell {
namespace {

using MeasureTests = MeasureFixture;

std::vector<std::string> numbers(const MeasurePage& page) {
  std::vector<std::string> result{page.now.number};
  for (const auto& fact : page.facts) result.push_back(fact.figure.number);
  return result;
}

TEST_F(MeasureTests, whatNobodyToldIsADash) {
  const StillModel unread{*main, defaults};
  auto& all = const_cast<StillModel&>(unread);
  all.known.set({});
  for (const auto& metric : allCases<Metric>()) {
    SCOPED_TRACE(metric.rawValue);
    EXPECT_THAT(numbers(measurePage(unread, metric.value, {})), Each("–"));
    EXPECT_EQ(liveChart(unread, directions, metric.value, {}).state, ChartData::State::measuring);
  }
  model.step(snapshot(start, 24));
  model.forget(KnownPart::load);
  EXPECT_THAT(numbers(page(Metric::cpu)), ElementsAre("24", "24", "0", "–", "–", "–"));
  EXPECT_EQ(page(Metric::cpu).facts[2].reason, "Not measured on this machine");
  EXPECT_EQ(page(Metric::cpu).facts[0].reason, "");
  EXPECT_EQ(page(Metric::energy).absent, "This machine has no battery.");
  EXPECT_TRUE(appList(model, Metric::energy, {}, {}).isThere) << "on mains the energy of apps is told too";
  model.forget(KnownPart::processEnergy);
  EXPECT_FALSE(appList(model, Metric::energy, {}, {}).isThere);

  // Totals that nobody could add up are not 0.
  EXPECT_THAT(numbers(page(Metric::network)), Contains("0"));
  model.historyProblem.set(HistoryProblem{.detail = "The history is locked."});
  const auto network = page(Metric::network);
  for (std::size_t i = 2; i < network.facts.size(); ++i) {
    EXPECT_EQ(textOf(network.facts[i].figure), "–") << network.facts[i].caption;
    EXPECT_EQ(network.facts[i].reason, "The history is locked.");
  }
  EXPECT_EQ(page(Metric::disk).facts[1].reason, "The history is locked.");
  model.totals.set({.diskWrittenToday = 2e9});
  EXPECT_EQ(textOf(page(Metric::disk).facts[1].figure), "2.00 GB") << "what was added up before stands";
}

TEST_F(MeasureTests, whatHappensWhileOneLooksIsMarked) {
  for (int second : {0, 2, 4}) model.step(snapshot(start + Seconds{double(second)}, 24));
  HealthAlert alert{.id = "1", .kind = HealthAlert::Kind::cpu, .title = "Busy", .date = start + Seconds{2}};
  model.alerts.set({alert});
  const auto events = [&](Metric metric) {
    return liveChart(model, directions, metric, {{.date = start + Seconds{3}, .bytes = 5'000'000}}).events;
  };
  ASSERT_EQ(events(Metric::cpu).size(), 2u);
  EXPECT_EQ(events(Metric::cpu)[0], (ChartEvent{ChartEvent::Kind::alert, alert.date, "Busy"}));
  EXPECT_EQ(events(Metric::cpu)[1].title, "5.00 MB freed");
  EXPECT_EQ(events(Metric::disk).size(), 1u) << "an alert stands where its measure is";
}

TEST_F(MeasureTests, reasonsAreThoseOfTheSourcesOnceTheyWereExamined) {
  MeasureSession::Services services{model, queries, directions, zone, defaults};
  std::vector<MeasureSession::Services::Examined> asked;
  services.examine = [&](auto done) { asked.push_back(std::move(done)); };
  MeasureSession session(services, Metric::energy, HistoryRange::live, [] {});
  auto now = snapshot(start, 24, {app("browser", {1})});
  now.battery.present = true;
  model.forget(KnownPart::battery);
  model.forget(KnownPart::processEnergy);
  model.step(now);
  EXPECT_EQ(session.page().nowReason, "Not measured on this machine");
  EXPECT_EQ(session.list().note, "The system does not tell the energy of each app.");
  model.step(now);
  ASSERT_EQ(asked.size(), 1u) << "once for what is missing";
  using enum SourceReport::State;
  asked[0](
      {{.name = "Charge",
        .state = refused,
        .reason = "It is locked.",
        .remedy = "Unlock it.",
        .parts = {KnownPart::battery}},
       {.name = "Packages", .state = missing, .reason = "No counter.", .parts = {KnownPart::processEnergy}},
       {.name = "Power", .reason = "Readable, in part.", .parts = {KnownPart::battery}}});
  EXPECT_EQ(session.page().nowReason, "It is locked. Unlock it.");
  EXPECT_EQ(session.list().note, "The system does not tell the energy of each app. No counter.");
  EXPECT_EQ(pastAppList(model, Metric::energy, {}, {}, {}).empty, "") << "the note says why";
  model.forget(KnownPart::batteryHealth);
  model.step(now);
  EXPECT_EQ(asked.size(), 2u);

  MeasureSession whole(services, Metric::memory, HistoryRange::live, [] {});
  EXPECT_EQ(asked.size(), 2u) << "nothing is missing there";
}

TEST_F(MeasureTests, memorysPartsAreAllOfIt) {
  model.step(snapshot(start, 1));
  const auto parts = page(Metric::memory).composition;
  double sum = 0;
  for (const auto& part : parts) sum += part.amount;
  EXPECT_EQ(sum, double(16ull << 30));
  EXPECT_EQ(page(Metric::memory).now, (Figure{"5.00", "GB"}));
}

TEST_F(MeasureTests, coresAreGroupedOnlyWhereBothKindsAddUp) {
  auto now = snapshot(start, 10);
  now.cpu.perCore = {1, 2, 3};
  now.cpu.performanceCores = 1;
  now.cpu.efficiencyCores = 2;
  model.step(now);
  EXPECT_THAT(page(Metric::cpu).cores,
              ElementsAre(CoreGroup{"Performance", 0, {1}}, CoreGroup{"Efficiency", 1, {2, 3}}));
  now.cpu.efficiencyCores = 7;
  model.step(now);
  EXPECT_THAT(page(Metric::cpu).cores, ElementsAre(CoreGroup{"", 0, {1, 2, 3}}));
}

TEST_F(MeasureTests, volumesWarnByWhatIsFree) {
  auto now = snapshot(start, 1);
  now.disk.volumes = {
      {"A", "/", 1000, 99}, {"B", "/b", 1000, 199}, {"C", "/c", 1000, 200}, {"D", "/d", 0, 0}};
  model.step(now);
  std::vector<std::optional<Tone>> tones;
  const auto disk = page(Metric::disk);
  for (const auto& volume : *disk.volumes) tones.push_back(volume.tone);
  EXPECT_THAT(tones, ElementsAre(Tone::critical, Tone::warning, std::nullopt, std::nullopt));
}

TEST_F(MeasureTests, aPlaceIsRestoredWhenItsRangeIsWhole) {
  record(0, 30, 50, {app("build", {200})});
  model.step(snapshot(scheduler.clock().now(), 10));
  const auto before = open(Metric::cpu);
  before->setRange(HistoryRange::h12);
  scheduler.run();
  before->pin(start + Seconds{600});
  const auto pinned = before->pinned();
  ASSERT_TRUE(pinned);
  const auto session = open(Metric::cpu);
  session->restore(HistoryRange::h12, pinned);
  EXPECT_EQ(session->pinned(), std::nullopt);
  scheduler.run();
  EXPECT_EQ(session->range(), HistoryRange::h12);
  EXPECT_EQ(session->pinned(), pinned);
}

TEST_F(MeasureTests, theOldPictureStaysUntilTheNewOneIsWhole) {
  record(0, 30, 50, {app("build", {200})});
  model.step(snapshot(scheduler.clock().now(), 10));
  const auto session = open(Metric::cpu);
  EXPECT_EQ(session->chart().time, TimeAxis::live);
  session->setRange(HistoryRange::h12);
  EXPECT_EQ(session->range(), HistoryRange::h12);
  EXPECT_TRUE(session->isLoading());
  EXPECT_EQ(session->chart().time, TimeAxis::live);
  session->setRange(HistoryRange::h24); // before the first one's answer
  scheduler.run();
  EXPECT_FALSE(session->isLoading());
  EXPECT_EQ(session->chart().time, TimeAxis::hours24);
  EXPECT_EQ(session->page().range[0].caption, "Mean, 24 hours");
  EXPECT_EQ(session->page().range[0].figure.number, "50");
  EXPECT_EQ(session->page().facts[3].figure.number, "50") << "the ten minutes";

  session->setRange(HistoryRange::d7);
  session->setRange(HistoryRange::live);
  scheduler.run();
  EXPECT_EQ(session->chart().time, TimeAxis::live) << "the answer came too late";
  EXPECT_FALSE(session->isLoading());
}

TEST_F(MeasureTests, aPinnedMomentTellsWhoItWas) {
  record(0, 9, 90, {app("build", {350}), app("mail", {10})});
  record(10, 40, 10, {app("mail", {20})});
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5})}));
  const auto session = open(Metric::cpu, HistoryRange::h24);
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("now"));
  session->pin(start);
  scheduler.run();
  EXPECT_EQ(session->listTitle(), "Top apps, 08:00 – 08:05");
  EXPECT_THAT(names(session->list()), ElementsAre("build", "mail"));
  EXPECT_EQ(session->list().table.rows[0].figure, "350.0%");
  EXPECT_EQ(session->otherList(), "Show all 24 hours");
  session->pin(start + Seconds{1200});
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("mail"));
  session->showOtherList();
  scheduler.run();
  EXPECT_EQ(session->listTitle(), "Top apps, 24 hours");
  EXPECT_EQ(session->pinned(), std::nullopt);
  EXPECT_THAT(names(session->list()), ElementsAre("build", "mail"));
  session->pin(start);
  session->pin(std::nullopt);
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("now"));

  // As an alert leads there: the range is chosen by how long ago it was.
  const auto shown = open(Metric::cpu);
  shown->show(start + Seconds{130});
  scheduler.run();
  EXPECT_EQ(shown->range(), HistoryRange::h12);
  EXPECT_EQ(shown->listTitle(), "Top apps, 08:00 – 08:03");
}

TEST_F(MeasureTests, aPastListIsAskedAgainWhenAMinuteEnds) {
  record(0, 1, 50, {app("build", {200})});
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5})}));
  const auto session = open(Metric::cpu);
  session->pin(start + Seconds{60});
  scheduler.run();
  EXPECT_EQ(session->list().empty, "This minute is recorded when it ends.");
  const auto range = open(Metric::cpu, HistoryRange::h12);
  scheduler.run();
  range->showOtherList();
  scheduler.run();
  EXPECT_THAT(names(range->list()), ElementsAre("build"));

  record(2, 2, 50, {app("late", {900})});
  record(3, 3, 50, {});
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5})}));
  EXPECT_EQ(session->list().empty, "This minute is recorded when it ends.") << "until it is answered";
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("build"));
  EXPECT_EQ(session->listTitle(), "Top apps, 08:01");
  EXPECT_THAT(names(range->list()), ElementsAre("late", "build"));
  EXPECT_EQ(pastAppList(model, Metric::cpu, {}, {}, {}).empty, "No app was recorded in this time.");
}

TEST_F(MeasureTests, pointingTellsWhoItWasUntilItIsOver) {
  record(0, 9, 90, {app("build", {350})});
  record(10, 40, 10, {app("mail", {20})});
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5})}));
  const auto session = open(Metric::cpu, HistoryRange::h24);
  scheduler.run();
  const auto point = [&](std::optional<Date> moment) {
    session->point(moment);
    return names(session->list());
  };
  EXPECT_THAT(point(start), ElementsAre("now")) << "the old rows stay until the answer is there";
  EXPECT_EQ(session->listTitle(), "Applications");
  EXPECT_THAT(point(start + Seconds{1200}), ElementsAre("now"));
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("mail")) << "the first answer came too late";
  EXPECT_THAT(point(start), ElementsAre("mail"));
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("build"));
  EXPECT_EQ(session->pinned(), std::nullopt);

  session->pin(start);
  point(start + Seconds{1200});
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("build")) << "what is held stays";
  session->pin(std::nullopt);
  point(start);
  EXPECT_THAT(point(std::nullopt), ElementsAre("now"));
  scheduler.run();
  EXPECT_THAT(names(session->list()), ElementsAre("now")) << "what was asked came too late";

  // A live chart: the minute that is under way is the list of now.
  const auto live = open(Metric::cpu);
  live->point(scheduler.clock().now());
  scheduler.run();
  EXPECT_THAT(names(live->list()), ElementsAre("now"));
}

TEST_F(MeasureTests, theChartMarksWhatHappened) {
  record(0, 5, 50, {});
  record(30, 35, 50, {});
  StorageLog::record(1'000'000, start + Seconds{120}, defaults);
  model.alerts.set(
      {{.id = "2", .kind = HealthAlert::Kind::cpu, .title = "busy", .date = start + Seconds{1900}},
       {.id = "1", .kind = HealthAlert::Kind::disk, .title = "hammered", .date = start + Seconds{60}}});
  model.step(snapshot(scheduler.clock().now(), 10));
  const auto session = open(Metric::cpu, HistoryRange::h12);
  scheduler.run();
  std::vector<std::string> titles;
  for (const auto& event : session->chart().events) titles.push_back(event.title);
  EXPECT_THAT(titles, ElementsAre("Recording began again", "1.00 MB freed", "Recording began again", "busy"));
  EXPECT_EQ(session->chart().spoken, "CPU, last 12 hours, mean 50 percent, maximum 50 percent");

  const auto disk = open(Metric::disk, HistoryRange::h12);
  scheduler.run();
  ASSERT_EQ(disk->chart().lines.size(), 2u);
  EXPECT_EQ(disk->chart().lines[0].buckets[0].mean, 500'000);
  EXPECT_EQ(disk->chart().lines[1].buckets[0].mean, 50'000);
}

TEST_F(MeasureTests, noRowsAreNotZeros) {
  model.step(snapshot(start, 10));
  const auto empty = open(Metric::cpu, HistoryRange::h24);
  scheduler.run();
  EXPECT_EQ(empty->chart().state, ChartData::State::empty);
  EXPECT_EQ(empty->chart().sentence, "Nothing was recorded in this time.");
  EXPECT_EQ(empty->page().range[0].figure.number, "–");

  // No graphics processor that tells its load: the history has noughts, which are no figures.
  record(0, 5, 50, {});
  model.forget(KnownPart::graphics);
  model.step(snapshot(scheduler.clock().now(), 10));
  const auto graphics = open(Metric::gpu, HistoryRange::h24);
  scheduler.run();
  EXPECT_EQ(graphics->chart().state, ChartData::State::empty);
  EXPECT_EQ(graphics->chart().sentence, "The GPU does not tell its load here.");
  EXPECT_EQ(graphics->chart().spoken, "GPU, last 24 hours");
  EXPECT_EQ(graphics->page().range[0].figure.number, "–");
}

TEST_F(MeasureTests, aRangeIsAskedAgainEveryMinuteAndNothingAfterTheEnd) {
  record(0, 5, 50, {});
  model.step(snapshot(scheduler.clock().now(), 10));
  auto session = open(Metric::cpu, HistoryRange::h24);
  scheduler.run();
  const auto points = [&] { return session->chart().lines.at(0).buckets.size(); };
  EXPECT_EQ(points(), 1u);
  record(6, 12, 50, {});
  model.step(snapshot(scheduler.clock().now(), 10));
  scheduler.run();
  EXPECT_EQ(points(), 3u);
  session->refresh();
  session.reset();
  const int before = changes;
  scheduler.run();
  EXPECT_EQ(changes, before);
}

} // namespace
} // namespace korvell
