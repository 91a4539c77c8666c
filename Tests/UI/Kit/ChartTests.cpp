#include "Tests/UI/Kit/KitFixture.h"

#include "Tests/Fakes/FakeTimeZone.h"
#include "UI/Kit/BarTable.h"
#include "UI/Kit/ChartView.h"
#include "UI/Kit/DayBars.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTimer>

namespace korvell {
namespace {

using testing::ElementsAre;

struct ChartTests : KitTests {
  const Date begin = *parseRFC3339("2026-03-01T12:00:00Z");
  FakeTimeZone zone;
  std::unique_ptr<ChartView> chart = std::make_unique<ChartView>(theme, zone, nullptr);
  std::vector<std::optional<double>> pins; ///< minutes after the begin

  ChartTests() {
    chart->resize(800, 300);
    show(*chart);
    chart->onPin([this](std::optional<Date> date) {
      pins.push_back(date ? std::optional((*date - begin).count() / 60) : std::nullopt);
    });
  }

  ChartData day() const {
    ChartData data{.state = ChartData::State::recorded, .time = TimeAxis::hours24};
    data.begin = begin;
    data.end = begin + Seconds{86'400};
    data.bucket = Seconds{300};
    data.lines = {{"Mean", Token::cpu, {}}};
    for (int i = 0; i < 288; ++i)
      if (i < 100 || i >= 150)
        data.lines[0].buckets.push_back({begin + Seconds{i * 300.0}, i / 6.0, i / 5.0, i / 4.0});
    data.events = {{ChartEvent::Kind::alert, begin + Seconds{6100}, "First"},
                   {ChartEvent::Kind::alert, begin + Seconds{60'010}, "Second"}};
    return data;
  }
  /// Five minutes that end so long after the begin, a value every two seconds.
  ChartData live(double seconds) const {
    ChartData data{.state = ChartData::State::recorded, .time = TimeAxis::live};
    data.end = begin + Seconds{seconds};
    data.begin = data.end - Seconds{300};
    data.lines = {{"CPU", Token::cpu, {}}};
    for (double at = std::max(0.0, seconds - 300); at <= seconds; at += 2) {
      const double value = 50 + 45 * std::sin(at / 7);
      data.lines[0].buckets.push_back({begin + Seconds{at}, value, value, value});
    }
    return data;
  }
  double x(double minutes) const {
    return ChartView::overhang + (chart->width() - ChartView::overhang - ChartView::gutter) * minutes / 1440;
  }
};

TEST_F(ChartTests, aMovedPictureIsTheSameAsAWholeOne) {
  chart->setData(live(400));
  chart->grab();
  const auto before = chart->paints();
  for (double at = 402; at <= 460; at += 2) {
    chart->setData(live(at));
    chart->grab();
  }
  EXPECT_EQ(chart->paints().whole, before.whole);
  EXPECT_EQ(chart->paints().strips, before.strips + 30);
  const auto moved = chart->grab().toImage();
  chart->setPlotHeight(ChartView::tall); // paints anew
  const auto whole = chart->grab().toImage();
  EXPECT_EQ(chart->paints().whole, before.whole + 1);
  // At the left edge the moved one still has the line to a value that has left.
  const QRect same(ChartView::overhang + 8, 0, chart->width() - ChartView::overhang - 8, chart->height());
  EXPECT_EQ(moved.copy(same), whole.copy(same));
}

TEST_F(ChartTests, whatMovingCannotShowIsPaintedAnew) {
  chart->setData(live(400));
  chart->grab();
  const auto first = chart->paints();
  const auto wholeSince = [&] {
    chart->grab();
    return chart->paints().whole - first.whole;
  };
  auto other = live(402);
  other.lines[0].buckets.front().date = begin; // a gap
  chart->setData(other);
  EXPECT_EQ(wholeSince(), 1);
  chart->setData(live(300)); // the clock was set back
  EXPECT_EQ(wholeSince(), 2);
  EXPECT_EQ(chart->paints().strips, first.strips);
  chart->resize(700, 300);
  EXPECT_EQ(wholeSince(), 3);
}

TEST_F(ChartTests, thePointerPinsABucketAndLetsItGo) {
  chart->setData(day());
  const auto press = [&](double minutes, double y = 100) {
    mouse(*chart, QEvent::MouseButtonPress, {x(minutes), y});
    mouse(*chart, QEvent::MouseButtonRelease, {x(minutes), y});
  };
  press(102);
  press(102);
  press(600);                            // nothing was recorded then
  press(101, ChartView::tall + 28 + 10); // the event's mark
  EXPECT_THAT(pins, ElementsAre(100, std::nullopt, 100));
  EXPECT_EQ(chart->spokenValue(), "13:40 – 13:45, 4%, 3 – 5%");
  // Another range: the moment is not on the new axis.
  chart->setData(live(400));
  EXPECT_EQ(chart->pinned(), std::nullopt);
}

TEST_F(ChartTests, keysMoveThroughTheBuckets) {
  std::vector<std::size_t> ranges;
  chart->onRange([&](std::size_t range) { ranges.push_back(range); });
  chart->setData(day());
  chart->setFocus();
  const auto at = [&] { return chart->spokenValue().substr(0, 5); };
  key(*chart, Qt::Key_Home);
  EXPECT_EQ(at(), "12:00");
  key(*chart, Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(at(), "12:50");
  key(*chart, Qt::Key_Left);
  EXPECT_EQ(at(), "12:45");
  key(*chart, Qt::Key_Down);
  EXPECT_EQ(at(), "13:40");
  key(*chart, Qt::Key_Down);
  EXPECT_EQ(at(), "04:40");
  key(*chart, Qt::Key_Down);
  EXPECT_EQ(at(), "04:40") << "there is no later one";
  key(*chart, Qt::Key_Up);
  EXPECT_EQ(at(), "13:40");
  key(*chart, Qt::Key_Return);
  key(*chart, Qt::Key_Left);
  key(*chart, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "13:35 – 13:40, 4%, 3 – 5%");
  key(*chart, Qt::Key_Escape);
  EXPECT_THAT(pins, ElementsAre(100, 95, std::nullopt));
  key(*chart, Qt::Key_End);
  EXPECT_EQ(at(), "11:55");
  key(*chart, Qt::Key_3);
  key(*chart, Qt::Key_6);
  EXPECT_THAT(ranges, ElementsAre(2));
}

TEST_F(ChartTests, whereTheCrosshairRestsIsTold) {
  std::vector<std::optional<double>> points;
  chart->onPoint([&](std::optional<Date> date) {
    points.push_back(date ? std::optional((*date - begin).count() / 60) : std::nullopt);
  });
  const auto rest = [&] {
    auto* timer = chart->findChild<QTimer*>();
    QTimerEvent over(timer->timerId());
    if (timer->isActive()) QApplication::sendEvent(timer, &over);
  };
  chart->setData(day());
  mouse(*chart, QEvent::MouseMove, {x(102), 100});
  mouse(*chart, QEvent::MouseMove, {x(202), 100});
  EXPECT_THAT(points, ElementsAre()) << "it passes by";
  rest();
  mouse(*chart, QEvent::MouseMove, {x(600), 100}); // nothing was recorded then
  mouse(*chart, QEvent::MouseMove, {x(203), 100});
  rest();
  EXPECT_THAT(points, ElementsAre(200)) << "it is where it was";
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(chart.get(), &leave);
  rest();
  chart->setFocus();
  key(*chart, Qt::Key_Home);
  rest();
  key(*chart, Qt::Key_Return);
  EXPECT_THAT(points, ElementsAre(200, std::nullopt, 0, std::nullopt)) << "held instead, at once";
  key(*chart, Qt::Key_Escape);
  mouse(*chart, QEvent::MouseMove, {x(102), 100});
  rest();
  chart->setData(live(400)); // it is not on that axis
  rest();
  EXPECT_THAT(points, ElementsAre(200, std::nullopt, 0, std::nullopt, 100, std::nullopt));
}

struct BarTableTests : KitTests {
  std::unique_ptr<BarTable> table = std::make_unique<BarTable>(theme, nullptr);
  std::vector<std::string> told;

  BarTableTests() {
    table->resize(800, 400);
    table->onSort(
        [this](BarTableData::Column column) { told.push_back("sort " + std::to_string(int(column))); });
    table->onUnfold([this](const std::string& key) { told.push_back("unfold " + key); });
    table->onQuit("Quit…", [this](const std::string& key) { told.push_back("quit " + key); });
    table->onMenu([this](const std::string& key, QPoint) { told.push_back("menu " + key); });
    table->setData(data(true));
    show(*table);
    table->setFocus();
  }
  static BarTableData data(bool unfolded) {
    BarTableData made{
        .title = "Applications", .nameHead = "Name", .figureHead = "CPU", .secondHead = "Memory"};
    made.rows = {{.key = "a",
                  .name = "A",
                  .unfolds = true,
                  .isUnfolded = unfolded,
                  .hasActions = true,
                  .spoken = "A, all"}};
    if (unfolded) made.rows.push_back({.key = "a1", .name = "A one", .isPart = true, .spoken = "A one"});
    made.rows.push_back({.key = "b", .name = "B", .spoken = "B, all"});
    return made;
  }
  void press(double left, double row) {
    const QPointF at(left, 25 + row);
    mouse(*table, QEvent::MouseButtonPress, at);
    mouse(*table, QEvent::MouseButtonRelease, at);
  }
};

TEST_F(BarTableTests, thePointerIsOverTheTableUntilItLeavesTheHeadsToo) {
  table->onHover([this](bool over) { told.push_back(over ? "over" : "left"); });
  const QPointF row(100, 40);
  QEnterEvent enter(row, row, table->mapToGlobal(row));
  QApplication::sendEvent(table.get(), &enter);
  const auto first = [&] { return table->grab(QRect(0, 26, 800, 28)).toImage(); };
  const auto before = first();
  mouse(*table, QEvent::MouseMove, row, Qt::NoButton);
  EXPECT_NE(first(), before) << "it lights up";
  auto* head = table->findChildren<QWidget*>().front();
  QApplication::sendEvent(head, &enter); // as the toolkit does: the table is told nothing
  EXPECT_EQ(first(), before);
  EXPECT_THAT(told, ElementsAre("over"));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(table.get(), &leave);
  EXPECT_THAT(told, ElementsAre("over", "left"));
}

TEST_F(BarTableTests, rowsAnswerToMouseAndKeysAlike) {
  press(14, 10);
  press(745, 10);
  press(775, 10);
  press(745, 66); // no actions
  key(*table, Qt::Key_Home);
  key(*table, Qt::Key_Delete);
  key(*table, Qt::Key_Return);
  key(*table, Qt::Key_Right); // it is unfolded
  key(*table, Qt::Key_Down);
  key(*table, Qt::Key_Left); // from the part: to its application, which folds
  EXPECT_EQ(table->current(), "a");
  key(*table, Qt::Key_End);
  key(*table, Qt::Key_Delete);
  EXPECT_EQ(table->spokenValue(), "B, all");
  EXPECT_THAT(told, ElementsAre("unfold a", "quit a", "menu a", "quit a", "unfold a", "unfold a"));
}

TEST_F(BarTableTests, theRowWithTheFocusStaysWhenOthersCome) {
  key(*table, Qt::Key_End);
  auto next = data(false);
  next.rows.insert(next.rows.begin(), {.key = "new", .name = "New"});
  table->setData(next);
  EXPECT_EQ(table->current(), "b");
  next.rows.pop_back();
  table->setData(next);
  EXPECT_EQ(table->spokenValue(), "") << "it is gone";
  key(*table, Qt::Key_Down);
  EXPECT_EQ(table->current(), "new");
}

TEST_F(BarTableTests, headsSortWhereThereIsSomethingToSort) {
  for (auto* head : all<Control>(*table)) head->press();
  EXPECT_THAT(told, ElementsAre("sort 0", "sort 1", "sort 2"));
  auto past = data(false);
  past.sorts = false;
  table->setData(past);
  for (auto* head : all<Control>(*table)) head->press();
  EXPECT_EQ(told.size(), 3u);
}

TEST_F(ChartTests, daysAreWalkedThroughAndStayPointedAt) {
  DayBars bars(theme, nullptr);
  bars.resize(700, bars.sizeHint().height());
  const auto days = [](int first) {
    DayBarsData data{.series = {"A"}, .bars = {}, .top = 7, .ticks = {}, .spoken = "Days"};
    for (int day = first; day < first + 7; ++day)
      data.bars.push_back({.parts = {{1, "A"}}, .spoken = "day " + std::to_string(day)});
    return data;
  };
  bars.setData(days(1));
  show(bars);
  bars.setFocus(Qt::TabFocusReason);
  key(bars, Qt::Key_Left);
  EXPECT_EQ(bars.spokenValue(), "day 7") << "from the newest";
  key(bars, Qt::Key_Right);
  key(bars, Qt::Key_Left);
  EXPECT_EQ(bars.spokenValue(), "day 6");
  key(bars, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "day 6");
  bars.setData(days(2));
  EXPECT_EQ(bars.spokenValue(), "day 7") << "the last but one, as before";
  bars.point(0);
  auto fewer = days(1);
  fewer.bars.resize(1);
  bars.setData(fewer);
  EXPECT_EQ(bars.pointed(), std::nullopt);
  key(bars, Qt::Key_Home);
  key(bars, Qt::Key_Escape);
  EXPECT_EQ(bars.spokenValue(), "");
}

} // namespace
} // namespace korvell
