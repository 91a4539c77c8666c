// The main window over a made-up machine with 1,500 processes and thirty days of history, 15 application rows
// a minute: switching to each section, switching a measure's range, a cycle while a section is open, each
// until everything is painted. CPU milliseconds of the main thread with what the history reads for it;
// medians. Their floor is the same window with nothing in it, painted once. Then 10,000 switches and what
// they did to the resident memory. Exits with 1 when a limit is passed.
//
// WindowBench [SWITCHES]; without a display: QT_QPA_PLATFORM=offscreen

#include "App/HistoryQueries.h"
#include "Base/FreeMemory.h"
#include "Base/LocalTime.h"
#include "Base/ManualQueue.h"
#include "Bench/History/Month.h"
#include "Bench/Measure.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Kit/Labels.h"
#include "UI/Measures/LiveDirections.h"
#include "UI/Measures/MeasureView.h"
#include "UI/Overview/HealthView.h"
#include "UI/Servers/ServersView.h"
#include "UI/Shell/MainWindow.h"
#include "UI/Startup/StartupView.h"

#include <QApplication>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <random>

namespace korvell {
namespace {

namespace fs = std::filesystem;

constexpr double sectionLimit = 50, rangeLimit = 100, cycleLimit = 4; // milliseconds
constexpr SidebarItem sections[] = {SidebarItem::overview, SidebarItem::cpu,        SidebarItem::memory,
                                    SidebarItem::disk,     SidebarItem::network,    SidebarItem::gpu,
                                    SidebarItem::energy,   SidebarItem::devServers, SidebarItem::startup,
                                    SidebarItem::alerts};
const Date now{1'781'445'600}; // a Sunday, 14:00 UTC

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

class SteppedModel final : public Model {
public:
  SteppedModel(const Queue& main, const UserDefaults& defaults) : Model(main, defaults) {}

  /// One that was made up beforehand, as the sampler's comes ready to the main thread.
  void step(Date date) {
    if (madeUp_.empty()) makeUp();
    auto& next = madeUp_[std::size_t(steps_++) % madeUp_.size()];
    next.date = date;
    Publication publication;
    publication.set(snapshot, next);
    publication.setIfChanged(hasSample, true);
    extendLiveSeries(publication);
    publication.set(cycle, *cycle + 1);
  }

private:
  void makeUp() {
    madeUp_.resize(64, SystemSnapshot::empty(now));
    for (auto& snapshot : madeUp_) fill(snapshot);
  }

  /// 250 applications of six processes; all figures move, the machine's by up to a fifth of their scale.
  void fill(SystemSnapshot& s) {
    const auto upTo = [this](double most) {
      return std::uniform_real_distribution<double>(0, most)(random_);
    };
    for (auto& level : levels_) level = std::clamp(level + upTo(0.4) - 0.2, 0.05, 0.95);
    const auto [cpu, memory, read, written, in, out, gpu, power] = levels_;
    s.cpu = {.total = cpu * 100, .user = cpu * 80, .system = cpu * 20, .perCore = {}, .load1 = cpu * 4};
    for (int i = 0; i < 16; ++i) s.cpu.perCore.push_back(upTo(cpu * 100));
    s.memory = {
        .total = 16ull << 30, .app = std::uint64_t(memory * 9e9), .wired = 2ull << 30, .cached = 3ull << 30};
    s.disk = {.readRate = read * 1e7,
              .writeRate = written * 1e7,
              .volumes = {{"System disk", "/", 249'000'000'000, std::int64_t(memory * 9e10)}}};
    s.network = {.inRate = in * 1e7, .outRate = out * 1e6, .interface = "Ethernet"};
    s.gpu = {.name = "Graphics", .utilization = gpu * 100};
    s.battery = {.present = true, .percent = 74, .health = 91, .systemPower = power * 30};
    for (int i = 0; i < 250; ++i) {
      const auto known = app(i);
      AppUsage usage{.id = known.id, .name = known.name, .bundlePath = known.path};
      for (int p = 0; p < 6; ++p)
        usage.processes.push_back({.pid = 1000 + i * 6 + p,
                                   .name = usage.name,
                                   .cpu = upTo(20),
                                   .memory = std::uint64_t(upTo(3e8)),
                                   .diskRead = upTo(1e6),
                                   .diskWrite = upTo(1e6),
                                   .netIn = upTo(1e6),
                                   .power = upTo(2)});
      s.apps.push_back(std::move(usage));
    }
  }

  std::mt19937 random_{42};
  std::array<double, 8> levels_{0.3, 0.5, 0.2, 0.2, 0.2, 0.2, 0.1, 0.3};
  std::vector<SystemSnapshot> madeUp_;
  int steps_ = 0;
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
    for (const auto& part : allCases<KnownPart>()) {
      auto parts = *model.known;
      parts.set(part.value, Knowledge::fresh);
      model.known.set(parts);
    }
    HealthReport report;
    report.score = 87;
    report.insights = {{Insight::Severity::warning, "Disk space is getting low", "41.2 GB free.", 8, {}}};
    model.report.set(report);
    std::vector<DevServer> servers(5);
    model.projects.set({{"herbarium", servers}, {"greenhouse", servers}});
    std::vector<StartupItem> items(80, {.label = "org.example.agent"});
    model.startupItems.set(items);
    std::vector<HealthAlert> alerts;
    for (int i = 0; i < 60; ++i)
      alerts.push_back({.id = std::to_string(i),
                        .kind = HealthAlert::Kind::cpu,
                        .title = "Blender is keeping the CPU busy",
                        .date = now - Seconds{i * 7000.0}});
    model.alerts.set(alerts);
    for (int i = 150; i > 0; --i) model.step(now - Seconds{i * 2.0});
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
  SteppedModel model{*main, defaults};
  LiveDirections directions{model};
  HistoryStore history{scheduler.factory(), scheduler.clock(), monthIn(folder), HistoryAccess::reader};
  HistoryQueries queries{*main, history};
  Theme theme;
  Date time = now;
  QPointer<MeasureView> measure;
  MainWindow window{
      {.model = model,
       .defaults = defaults,
       .theme = theme,
       .facts =
           [] {
             return SidebarFacts{.sections = {std::begin(sections), std::end(sections)}};
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
    case SidebarItem::devServers:
      return std::make_unique<ServersView>(
          ServersView::Services{
              .model = model, .theme = theme, .home = "/home/u", .ask = ask, .openAddress = {}},
          &parent);
    case SidebarItem::startup:
      return std::make_unique<StartupView>(
          StartupView::Services{.model = model, .theme = theme, .ask = ask, .showFile = {}}, &parent);
    case SidebarItem::alerts:
      return std::make_unique<AlertsView>(
          AlertsView::Services{.model = model,
                               .theme = theme,
                               .zone = zone,
                               .defaults = defaults,
                               .sections = {std::begin(sections), std::end(sections)},
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
  void addGrowth(long bytes, int switches) {
    constexpr long noise = 256 * 1024;
    failed_ = failed_ || bytes > noise;
    fmt::print("{} switches: resident memory grew by {} KiB\n", switches, bytes / 1024);
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
    for (const auto item : sections) {
      opening[item].push_back(milliseconds([&] { world.open(item); }));
      cycles[item].push_back(milliseconds([&] { world.cycle(); }));
    }
  for (const auto item : sections) {
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

void benchGrowth(World& world, Report& report, int switches) {
  const auto all = [&](int count) {
    for (int i = 0; i < count; ++i) world.open(sections[std::size_t(i) % std::size(sections)]);
    giveFreeMemoryBack();
  };
  all(switches / 10);
  const long before = residentBytes();
  all(switches);
  report.addGrowth(residentBytes() - before, switches);
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
