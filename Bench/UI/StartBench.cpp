// The application as a person meets it: from its start to the first paint of its window and to its item in
// the tray, from a click on the item to the panel's first paint, and what it takes in memory and processor
// time closed, open, and closed again; then what each section takes over a home with a month behind it, one
// after the other in one window. Needs an X server (xvfb-run), brings a session bus and a tray of its own,
// and uses homes that it removes. The floor of a start is an empty window of the same size, in turns. Exits
// with 1 when a limit is passed; not for a machine that is busy with something else.
//
// StartBench APPLICATION [SECONDS] [--sections]; SECONDS is how long each state is watched, 30 unless told
// otherwise, a section a third of that; --sections watches nothing else

#include "Base/Date.h"
#include "Bench/Measure.h"
#include "Bench/UI/BusyHome.h"
#include "Bench/UI/XWindows.h"
#include "UI/Shell/Instants.h"
#include "UI/Shell/MainWindow.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <map>
#include <optional>

namespace korvell {
namespace {

namespace fs = std::filesystem;

constexpr const char *floorArgument = "--empty-window", *sectionsArgument = "--sections";
constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr Seconds patience{10};

double instantNow() { return SystemClock().monotonic().count(); }

/// Runs the event loop until it is true; false after the patience.
bool await(const std::function<bool()>& isTrue, Seconds limit = patience) {
  const double end = instantNow() + limit.count();
  while (!isTrue()) {
    if (instantNow() > end) return false;
    QEventLoop loop;
    QTimer::singleShot(2, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return true;
}

void pass(Seconds time) {
  await([] { return false; }, time);
}

/// The desktop's side of the tray: takes note of items.
class Tray final : public QDBusVirtualObject {
public:
  struct Item {
    double instant = 0;
    QString service;
  };

  explicit Tray(QDBusConnection bus) : bus_(std::move(bus)) {
    bus_.registerVirtualObject("/StatusNotifierWatcher", this);
    bus_.registerService(watcherName);
  }

  QString introspect(const QString&) const override {
    return R"(<interface name="org.kde.StatusNotifierWatcher">
      <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
      <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    </interface>)";
  }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() == "Introspect") return false; // answered from the above
    QDBusMessage reply = message.createReply();
    if (message.member() == "RegisterStatusNotifierItem")
      item = Item{instantNow(), message.service()};
    else if (message.member() == "Get")
      reply << QVariant::fromValue(QDBusVariant(true));
    connection.send(reply);
    return true;
  }

  void click() const {
    auto call = QDBusMessage::createMethodCall(item->service, "/StatusNotifierItem",
                                               "org.kde.StatusNotifierItem", "Activate");
    call << 0 << 0;
    bus_.asyncCall(call);
  }

  std::optional<Item> item;

private:
  QDBusConnection bus_;
};

struct Painted {
  double instant = 0;
  std::uint32_t window = 0;
};

/// A program that tells its instants; ended with this object.
class Program {
public:
  Program(const QString& path, const QStringList& arguments, const QProcessEnvironment& environment) {
    process_.setProcessEnvironment(environment);
    process_.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    QObject::connect(&process_, &QProcess::readyReadStandardError, [this] { read(); });
    started_ = instantNow();
    process_.start(path, arguments);
    process_.setReadChannel(QProcess::StandardError); // start() has set the other one
  }
  ~Program() { end(); }

  void end() {
    process_.terminate();
    if (process_.state() != QProcess::NotRunning) process_.waitForFinished(10'000);
  }
  double started() const { return started_; }
  std::int64_t pid() const { return process_.processId(); }
  void forget() { painted_.clear(); }
  /// The first since forget(), by its window's title.
  std::optional<Painted> painted(const std::string& title) {
    await([&] { return painted_.contains(title); });
    const auto found = painted_.find(title);
    return found == painted_.end() ? std::nullopt : std::optional(found->second);
  }

private:
  void read() {
    while (process_.canReadLine()) {
      const auto line = process_.readLine().trimmed().split(' ');
      if (line.size() < 5 || line[1] != "instant" || line[3] != "painted") {
        if (line.size() > 1) fmt::print(stderr, "{}\n", line.join(' ').toStdString());
        continue;
      }
      const auto title = line.mid(5).join(' ').toStdString();
      painted_.try_emplace(title, Painted{line[2].toDouble(), line[4].toUInt(nullptr, 16)});
    }
  }

  QProcess process_;
  double started_;
  std::map<std::string, Painted> painted_;
};

struct Cost {
  double mebibytes = 0; ///< proportional set size
  double resident = 0;  ///< the same if nobody shared anything with it
  double processor = 0; ///< percent of a core
  double wakeUps = 0;   ///< a second, of all threads
};

double figure(const fs::path& file, const std::string& name) {
  std::ifstream stream(file);
  for (std::string word; stream >> word;)
    if (word == name && stream >> word) return std::atof(word.c_str());
  return 0;
}

/// What all threads of a process took so far.
Cost sums(const fs::path& process) {
  const auto memory = process / "smaps_rollup";
  Cost cost{.mebibytes = figure(memory, "Pss:") / 1024, .resident = figure(memory, "Rss:") / 1024};
  for (const auto& thread : fs::directory_iterator(process / "task")) {
    cost.wakeUps += figure(thread.path() / "status", "voluntary_ctxt_switches:");
    double nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    cost.processor += nanoseconds / 1e9;
  }
  return cost;
}

Cost watch(std::int64_t pid, Seconds time) {
  const fs::path process = fmt::format("/proc/{}", pid);
  const auto before = sums(process);
  pass(time);
  auto cost = sums(process);
  cost.processor = (cost.processor - before.processor) / time.count() * 100;
  cost.wakeUps = (cost.wakeUps - before.wakeUps) / time.count();
  return cost;
}

class Report {
public:
  void add(const std::string& what, double value, const char* unit, double limit, double floor = 0) {
    failed_ = failed_ || value > limit;
    fmt::print("{:<42} {:8.2f} {}", what, value, unit);
    if (floor > 0) fmt::print("{:8.2f} floors", value / floor);
    fmt::print("   limit {} {}{}\n", limit, unit, value > limit ? "  OVER" : "");
  }
  void add(const std::string& what, const Cost& cost, double mostMebibytes, double mostProcessor) {
    add(what + ", memory (PSS)", cost.mebibytes, "MiB", mostMebibytes);
    add(what + ", of a core", cost.processor, "%", mostProcessor);
    fmt::print("{:<42} {:8.2f} a second\n", what + ", wake-ups", cost.wakeUps);
  }
  void fail(const char* what) {
    fmt::print("{}: did not happen\n", what);
    failed_ = true;
  }
  int status() const { return failed_ ? EXIT_FAILURE : EXIT_SUCCESS; }

private:
  bool failed_ = false;
};

class Bench {
public:
  Bench(QString application, const QProcessEnvironment& environment, Tray& tray, Report& report)
      : application_(std::move(application)), environment_(environment), tray_(tray), report_(report) {}

  /// In a home where nothing is yet.
  void runEmpty(Seconds watched) {
    benchStart();
    runOne([&](Program& korvell) {
      benchPanel(korvell);
      benchStates(korvell, watched);
    });
  }
  /// In one with much to show.
  void runBusy(Seconds watched) {
    runOne([&](Program& korvell) { benchSections(korvell, watched); });
  }

private:
  void runOne(const std::function<void(Program&)>& bench) {
    tray_.item.reset();
    Program korvell(application_, {}, environment_);
    if (!await([&] { return tray_.item.has_value(); })) return report_.fail("the item in the tray");
    pass(Seconds{3});
    bench(korvell);
  }

  void benchStart() {
    constexpr int rounds = 11;
    std::vector<double> floors, windows, items;
    for (int i = 0; i < rounds; ++i) {
      floors.push_back(start(QCoreApplication::applicationFilePath(), floorArgument));
      tray_.item.reset();
      windows.push_back(start(application_, "korvell://page/overview", &items));
    }
    report_.add("start to the window's first paint", median(windows), "ms", 150, median(floors));
    if (items.empty()) return report_.fail("the item in the tray");
    report_.add("start to the item in the tray", median(items), "ms", 80, median(floors));
    fmt::print("start to an empty window's first paint     {:8.2f} ms\n", median(floors));
  }

  double start(const QString& path, const char* argument, std::vector<double>* items = nullptr) {
    Program program(path, {argument}, environment_);
    const auto painted = program.painted("Korvell");
    if (!painted) report_.fail("a window's first paint");
    if (items && await([&] { return tray_.item.has_value(); }))
      items->push_back((tray_.item->instant - program.started()) * 1000);
    return painted ? (painted->instant - program.started()) * 1000 : patience.count() * 1000;
  }

  void benchPanel(Program& korvell) {
    constexpr int rounds = 9;
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
      korvell.forget();
      const double clicked = instantNow();
      tray_.click();
      const auto painted = korvell.painted("Korvell panel");
      if (!painted) return report_.fail("the panel");
      times.push_back((painted->instant - clicked) * 1000);
      tray_.click(); // closes it
      pass(Seconds{0.6});
    }
    fmt::print("the first click to the panel's paint       {:8.2f} ms\n", times.front());
    report_.add("a click to the panel's paint", median(times), "ms", 16);
  }

  void benchStates(Program& korvell, Seconds watched) {
    const auto closed = watch(korvell.pid(), watched);
    korvell.forget();
    const Program second(application_, {"korvell://page/overview"}, environment_);
    const auto window = korvell.painted("Korvell");
    if (!window) return report_.fail("opening the window");
    const auto open = watch(korvell.pid(), watched);
    closeWindow(window->window);
    pass(Seconds{2});
    const auto after = watch(korvell.pid(), watched);
    report_.add("window closed", closed, 30, 0.10);
    report_.add("window open on Health", open, 40, 0.6);
    report_.add("closed again, more than before", after.mebibytes - closed.mebibytes, "MiB", 2);
  }

  /// Each as full as it gets: the longest range of a measure, a scan's largest group unfolded.
  void fill(SidebarItem section, std::uint32_t window) {
    const bool isMeasure = metric(section).has_value();
    if (section == SidebarItem::storage) pressKey(window, Key::r, true);
    if (!isMeasure && section != SidebarItem::storage && section != SidebarItem::aiUsage) return;
    pass(Seconds{1});
    pressKey(window, Key::f6); // to the header's control
    if (section != SidebarItem::storage) return pressKey(window, Key::end);
    pressKey(window, Key::f6);
    pressKey(window, Key::right);
  }

  void open(SidebarItem section) {
    const auto address = fmt::format("korvell://page/{}", rawValue(section));
    const Program link(application_, {address.c_str()}, environment_);
    pass(Seconds{2});
  }

  void benchSections(Program& korvell, Seconds watched) {
    korvell.forget();
    open(SidebarItem::overview);
    const auto window = korvell.painted("Korvell");
    if (!window) return report_.fail("opening the window");
    Cost most;
    for (const auto& section : allCases<SidebarItem>()) {
      open(section.value);
      fill(section.value, window->window);
      pass(Seconds{3});
      const auto cost = watch(korvell.pid(), watched);
      fmt::print("{:<42} {:8.2f} MiB {:8.2f} % of a core {:8.2f} MiB resident\n", section.title,
                 cost.mebibytes, cost.processor, cost.resident);
      most.mebibytes = std::max(most.mebibytes, cost.mebibytes);
      most.processor = std::max(most.processor, cost.processor);
    }
    report_.add("the section with the most, memory (PSS)", most.mebibytes, "MiB", 45);
    report_.add("the section with the most, of a core", most.processor, "%", 0.6);
  }

  const QString application_;
  const QProcessEnvironment environment_;
  Tray& tray_;
  Report& report_;
};

int showEmptyWindow(QApplication& application) {
  const Instants instants;
  QWidget window;
  window.setWindowTitle("Korvell");
  window.resize(MainWindow::width, MainWindow::height);
  window.show();
  return QApplication::exec() + 0 * application.applicationPid();
}

/// A private session bus; its address comes as the first line.
QString startBus(QProcess& bus) {
  bus.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
  return bus.waitForReadyRead(5000) ? QString(bus.readLine()).trimmed() : QString();
}

QProcessEnvironment environmentIn(const QString& home, const QString& bus) {
  auto environment = QProcessEnvironment::systemEnvironment();
  for (const auto* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
    environment.remove(name);
  fs::create_directories((home + "/run").toStdString());
  fs::permissions((home + "/run").toStdString(), fs::perms::owner_all);
  fs::create_directories((home + "/.config/korvell").toStdString());
  std::ofstream((home + "/.config/korvell/settings.json").toStdString()) << "{\"hasLaunched\": true}\n";
  environment.insert("HOME", home);
  environment.insert("XDG_RUNTIME_DIR", home + "/run");
  environment.insert("DBUS_SESSION_BUS_ADDRESS", bus);
  environment.insert("KORVELL_TELL_INSTANTS", "1");
  return environment;
}

int run(int argc, char** argv) {
  QApplication toolkit(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.contains(floorArgument)) return showEmptyWindow(toolkit);
  if (arguments.size() < 2 || QApplication::platformName() != "xcb") {
    fmt::print(stderr, "usage: StartBench APPLICATION [SECONDS] [--sections], on an X server (xvfb-run)\n");
    return 2;
  }
  QProcess bus;
  const auto address = startBus(bus);
  if (address.isEmpty()) {
    fmt::print(stderr, "no session bus: dbus-daemon did not start\n");
    return 2;
  }
  Tray tray(QDBusConnection::connectToBus(address, "bench"));
  const bool onlySections = arguments.contains(sectionsArgument);
  const Seconds watched{arguments.size() > 2 && arguments[2].toDouble() > 0 ? arguments[2].toDouble() : 30};
  const auto application = QString::fromStdString(fs::absolute(arguments[1].toStdString()));
  Report report;
  const QTemporaryDir empty, busy;
  if (!onlySections) Bench(application, environmentIn(empty.path(), address), tray, report).runEmpty(watched);
  fillHome(busy.path().toStdString(), std::int64_t(SystemClock().now().sinceEpoch));
  Bench(application, environmentIn(busy.path(), address), tray, report).runBusy(watched / 3);
  QDBusConnection::disconnectFromBus("bench");
  bus.terminate();
  bus.waitForFinished();
  return report.status();
}

} // namespace
} // namespace korvell

int main(int argc, char** argv) { return korvell::run(argc, argv); }
