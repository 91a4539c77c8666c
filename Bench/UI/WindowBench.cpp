// The main window over a made-up large machine and thirty days of history, 15 application rows a minute:
// switching to each section, switching a measure's range, a cycle while a section is open, each until
// everything is painted. CPU milliseconds of the main thread with what the history reads for it; medians.
// Their floor is the same window with nothing in it, painted once. Then 10,000 switches and what they did to
// the resident memory. Exits with 1 when a limit is passed.
//
// WindowBench [SWITCHES]; without a display: QT_QPA_PLATFORM=offscreen

#include "App/HistoryQueries.h"
#include "Base/FreeMemory.h"
#include "Base/LocalTime.h"
#include "Base/ManualQueue.h"
#include "Bench/History/Month.h"
#include "Bench/Measure.h"
#include "Bench/UI/BusyMachine.h"
#include "Core/Storage/StorageScanner.h"
#include "UI/AIUsage/AIUsageView.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Kit/Labels.h"
#include "UI/Measures/LiveDirections.h"
#include "UI/Measures/MeasureView.h"
#include "UI/Overview/HealthView.h"
#include "UI/Sensors/SensorsView.h"
#include "UI/Servers/ServersView.h"
#include "UI/Shell/MainWindow.h"
#include "UI/Sound/SoundView.h"
#include "UI/Startup/StartupView.h"
#include "UI/Storage/StorageView.h"

#include <QApplication>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <set>

namespace korvell {
namespace {

namespace fs = std::filesystem;

constexpr double sectionLimit = 50, rangeLimit = 100, cycleLimit = 4; // milliseconds
const Date now{1'781'445'600};                                        // a Sunday, 14:00 UTC

const std::set<SidebarItem>& sections() {
  static const std::set<SidebarItem> all = [] {
    std::set<SidebarItem> items;
    for (const auto& item : allCases<SidebarItem>()) items.insert(item.value);
    return items;
  }();
  return all;
}

class Defaults final : public UserDefaults {
public:
  std::optional<Value> value(std::string_view) const override { return std::nullopt; }
  bool update(std::string_view, const std::function<std::optional<Value>(std::optional<Value>)>&) override {
    return false;
  }
  std::string place() const override { return "nowhere"; }
};

class Zone final : public TimeZone {
public:
  int secondsFromGMT(std::int64_t) const override { return 0; }
};

class Folder {
public:
  Folder() : path_(fs::temp_directory_path() / fmt::format("korvell-window-bench-{}", ::getpid())) {
    fs::create_directories(path_);
  }
  ~Folder() { fs::remove_all(path_); }
  std::string path() const { return path_.string(); }

private:
  fs::path path_;
};

std::string monthIn(const Folder& folder) {
  generateMonth(folder.path() + "/" + std::string(HistoryStore::fileName), std::int64_t(now.sinceEpoch), 15);
  return folder.path();
}

/// Everything that a window shows, on one thread: what the queues and the toolkit have to do is done at once.
class World {
public:
  World() {
    usage.summary.set(busyAIUsage(now, zone));
    scanner.result.set(fullScan(now));
    window.show(SidebarItem::overview);
    settle();
  }

  void settle() {
    scheduler.run();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    scheduler.run();
    QCoreApplication::processEvents();
  }
  void open(SidebarItem item) {
    model.selection.set(item);
    settle();
  }
  void cycle() {
    time = time + Seconds{2};
    scheduler.clock().setNow(time);
    model.step(time);
    for (auto& app : heard.apps) app.level = std::fmod(*app.level + 0.3, 1.0);
    sound.set(heard);
    settle();
  }
  void setRange(HistoryRange range) {
    measure->session().setRange(range);
    settle();
  }

  ManualScheduler scheduler{now};
  Defaults defaults;
  Zone zone;
  Folder folder;
  std::unique_ptr<Queue> main = scheduler.makeMainQueue();
  std::unique_ptr<Queue> slow = scheduler.makeQueue("Korvell.storage");
  BusyMachine model{*main, defaults, now};
  AIUsageStore usage{
      *main,
      scheduler.factory(),
      scheduler.clock(),
      [](const Cancellation&) { return std::unique_ptr<AIUsageScanner>(); },
      {defaults, zone, [] { return std::string(); }, [](const HealthAlert&) { return false; }}};
  AIPeriod period = AIPeriod::month;
  StorageScanner scanner{{}, defaults, *main, *slow};
  SoundState heard = busySound();
  Published<SoundState> sound{*main, heard};
  LiveDirections directions{model};
  HistoryStore history{scheduler.factory(), scheduler.clock(), monthIn(folder), HistoryAccess::reader};
  HistoryQueries queries{*main, history};
  Theme theme;
  Date time = now;
  QPointer<MeasureView> measure;
  QPointer<StorageView> storage;
  MainWindow window{
      {.model = model,
       .defaults = defaults,
       .theme = theme,
       .facts =
           [this] {
             return SidebarFacts{.sections = sections(),
                                 .reclaimable = scanner.reclaimableBytes(),
                                 .aiCostToday = costToday(*usage.summary, time, zone)};
           },
       .makePage = [this](SidebarItem item, QWidget& parent, Banner&) { return makePage(item, parent); },
       .keepFrame = [](const Value&) {},
       .openSettings = [] {},
       .quit = [] {},
       .closed = [] {}}};

private:
  std::unique_ptr<Page> makePage(SidebarItem item, QWidget& parent) {
    const auto ask = [](const ActionRequest&) {};
    if (const auto metric = korvell::metric(item)) {
      auto page = std::make_unique<MeasureView>(
          MeasureView::Services{.session = {model, queries, directions, zone, defaults},
                                .theme = theme,
                                .ask = ask,
                                .open = [](SidebarItem) {}},
          *metric);
      measure = page.get();
      return page;
    }
    switch (item) {
    case SidebarItem::storage: {
      auto page = std::make_unique<StorageView>(StorageView::Services{.scanner = scanner,
                                                                      .model = model,
                                                                      .zone = zone,
                                                                      .defaults = defaults,
                                                                      .home = "/home/u",
                                                                      .theme = theme,
                                                                      .ask = ask,
                                                                      .reveal = {}});
      storage = page.get();
      return page;
    }
    case SidebarItem::aiUsage:
      return std::make_unique<AIUsageView>(
          AIUsageView::Services{.store = usage, .model = model, .theme = theme, .period = period}, &parent);
    case SidebarItem::sound:
      return std::make_unique<SoundView>(
          SoundView::Services{.sound = {.state = &sound}, .theme = theme, .openPermission = {}}, &parent);
    case SidebarItem::sensors:
      return std::make_unique<SensorsView>(
          SensorsView::Services{.model = model, .defaults = defaults, .theme = theme}, &parent);
    case SidebarItem::devServers:
      return std::make_unique<ServersView>(
          ServersView::Services{
              .model = model, .theme = theme, .home = "/home/u", .ask = ask, .openAddress = {}},
          &parent);
    case SidebarItem::startup:
      return std::make_unique<StartupView>(
          StartupView::Services{.model = model, .theme = theme, .ask = ask, .showFile = {}}, &parent);
    case SidebarItem::alerts:
      return std::make_unique<AlertsView>(AlertsView::Services{.model = model,
                                                               .theme = theme,
                                                               .zone = zone,
                                                               .defaults = defaults,
                                                               .sections = sections(),
                                                               .ask = ask,
                                                               .open = [](SidebarItem) {},
                                                               .showMoment = [](SidebarItem, Date) {},
                                                               .see = [] {}},
                                          &parent);
    default:
      return makeHealthPage(parent);
    }
  }

  std::unique_ptr<Page> makeHealthPage(QWidget& parent) {
    auto page = std::make_unique<HealthView>(theme, &parent);
    auto* view = page.get();
    const auto refresh = [this, view] { view->show(healthPage(model, {zone, 84.0, true})); };
    view->onOpen([](SidebarItem) {});
    view->onStep([](const Step&) {});
    QObject::connect(view, &QObject::destroyed,
                     [kept = model.cycle.observe([refresh](std::int64_t) { refresh(); })] {});
    refresh();
    return page;
  }
};

template <class Work>
double milliseconds(const Work& work) {
  const double start = cpuMilliseconds();
  work();
  return cpuMilliseconds() - start;
}

/// The same size with nothing in it.
double emptyWindow() {
  const Theme theme;
  Ground window(theme, Token::surface, nullptr);
  window.resize(MainWindow::width, MainWindow::height);
  window.show();
  QCoreApplication::processEvents();
  std::vector<double> times;
  for (int i = 0; i < 31; ++i) times.push_back(milliseconds([&] { window.repaint(); }));
  return median(times);
}

class Report {
public:
  explicit Report(double floor) : floor_(floor) {
    fmt::print("an empty window, painted      {:8.2f} ms\n", floor);
  }
  void add(const std::string& what, std::vector<double> times, double limit) {
    const double typical = median(times);
    failed_ = failed_ || typical > limit;
    fmt::print("{:<29} {:8.2f} ms {:8.1f} floors   limit {} ms{}\n", what, typical, typical / floor_, limit,
               typical > limit ? "  OVER" : "");
  }
  /// Of the process before the first of so many switches, and after each of some equal parts of them.
  /// By the median tenth: what is left behind is left in each, while the allocator takes or gives back a
  /// stretch of up to a mebibyte at once, now and then.
  void addGrowth(const std::vector<long>& sizes, int switches) {
    constexpr double limit = 256; // KiB: less than if each of 10,000 left the smallest block behind
    std::vector<double> parts;
    for (std::size_t i = 1; i < sizes.size(); ++i) parts.push_back(double(sizes[i] - sizes[i - 1]) / 1024);
    const auto [least, most] = std::ranges::minmax(parts);
    const double growth = median(parts) * double(parts.size());
    failed_ = failed_ || growth > limit;
    fmt::print("{} switches: resident memory grew by {:.0f} KiB by the median of {} parts, which are {:.0f} "
               "to {:.0f} "
               "KiB; limit {} KiB{}\n",
               switches, growth, parts.size(), least, most, limit, growth > limit ? "  OVER" : "");
  }
  int status() const { return failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

private:
  const double floor_;
  bool failed_ = false;
};

void benchSections(World& world, Report& report) {
  constexpr int rounds = 15;
  std::map<SidebarItem, std::vector<double>> opening, cycles;
  for (int round = 0; round < rounds; ++round)
    for (const auto item : sections()) {
      opening[item].push_back(milliseconds([&] { world.open(item); }));
      cycles[item].push_back(milliseconds([&] { world.cycle(); }));
    }
  for (const auto item : sections()) {
    const auto name = std::string(rawValue(item));
    report.add(name + ", opened", opening[item], sectionLimit);
    report.add(name + ", a cycle", cycles[item], cycleLimit);
  }
}

void benchRanges(World& world, Report& report) {
  constexpr int rounds = 9;
  for (const auto item : {SidebarItem::cpu, SidebarItem::disk}) {
    world.open(item);
    std::map<HistoryRange, std::vector<double>> times;
    for (int round = 0; round < rounds; ++round)
      for (const auto& range : allCases<HistoryRange>())
        times[range.value].push_back(milliseconds([&] { world.setRange(range.value); }));
    for (const auto& [range, values] : times)
      report.add(fmt::format("{}, {}", rawValue(item), rawValue(range)), values, rangeLimit);
  }
}

/// After a fifth as many, so that what the toolkit caches is there; in parts, of which each shows how much
/// the measuring itself moves.
void benchGrowth(World& world, Report& report, int switches) {
  constexpr int parts = 10;
  const auto all = [&](int count) {
    for (int i = 0; i < count;)
      for (const auto item : sections())
        if (i++ < count) world.open(item);
    giveFreeMemoryBack();
    return residentBytes();
  };
  std::vector<long> sizes{all(switches / 5)};
  for (int part = 0; part < parts; ++part) sizes.push_back(all(switches / parts));
  report.addGrowth(sizes, switches);
}

int run(int argc, char** argv) {
  QApplication application(argc, argv);
  World world;
  Report report(emptyWindow());
  benchSections(world, report);
  benchRanges(world, report);
  benchGrowth(world, report, argc > 1 ? std::atoi(argv[1]) : 10'000);
  return report.status();
}

} // namespace
} // namespace korvell

int main(int argc, char** argv) { return korvell::run(argc, argv); }
