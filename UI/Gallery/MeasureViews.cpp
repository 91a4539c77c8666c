// The six measures' pages, each over a made-up machine.

#include "Base/Localization.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/RecordedMachine.h"
#include "UI/Kit/Labels.h"
#include "UI/Measures/MeasureView.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QTimer>

namespace korvell {

namespace {

/// What an examination finds where much is missing.
std::vector<SourceReport> examined() {
  using enum SourceReport::State;
  using enum KnownPart;
  return {{.name = "GPU",
           .state = missing,
           .reason = "This machine has no graphics card that a driver looks after.",
           .parts = {graphics, graphicsMemory}},
          {.name = "Packages",
           .state = refused,
           .reason = localized("Only root may read the processor's energy counter."),
           .parts = {power, processEnergy}},
          {.name = "Traffic",
           .state = missing,
           .reason = "The kernel does not tell what sockets received and sent.",
           .remedy = "Load its module as root: modprobe inet_diag tcp_diag.",
           .parts = {processTraffic}}};
}

/// A page below its header, as the window shows it, with the machine that it is about.
class PageFrame final : public Ground {
public:
  PageFrame(const Theme& theme, std::shared_ptr<RecordedMachine> machine, Metric metric, HistoryRange range)
      : Ground(theme, Token::surface, nullptr), machine_(std::move(machine)),
        page_(new MeasureView({.session = {machine_->model,
                                           machine_->queries,
                                           machine_->directions,
                                           machine_->zone,
                                           machine_->defaults,
                                           {tcpOnlyNote()},
                                           [this](const MeasureSession::Services::Examined& done) {
                                             machine_->main->async([done] { done(examined()); });
                                           }},
                               .theme = theme,
                               .ask = [](const ActionRequest&) {},
                               .open = [](SidebarItem) {},
                               .openBatterySettings = [] {},
                               .openSettings = [] {},
                               .pictures = nullptr},
                              metric, range)) {
    machine_->settle();
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    head_ = new QHBoxLayout;
    head_->addStrut(56);
    head_->addWidget(new TextLabel(theme, TextStyle::title, Token::text1, page_->title(), this), 1);
    head_->addWidget(page_->control());
    rows->addLayout(head_);
    rows->addWidget(page_, 1);
  }
  ~PageFrame() override { delete page_; } // before the machine
  MeasureView& page() { return *page_; }
  RecordedMachine& machine() { return *machine_; }

protected:
  void resizeEvent(QResizeEvent* event) override {
    Ground::resizeEvent(event);
    const int side = width() < 860 ? 20 : 28; // as the window's own header
    head_->setContentsMargins(side, 0, side, 0);
  }

private:
  QBoxLayout* head_;
  std::shared_ptr<RecordedMachine> machine_;
  MeasureView* page_;
};

/// A week takes a while to be made up: one for all pictures.
std::shared_ptr<RecordedMachine> usual() {
  static const auto machine = [] {
    auto made = std::make_shared<RecordedMachine>(RecordedMachine::Past::week);
    made->measure();
    return made;
  }();
  return machine;
}

std::shared_ptr<RecordedMachine> without(RecordedMachine::Past past = RecordedMachine::Past::none) {
  return std::make_shared<RecordedMachine>(past);
}

using Made = std::unique_ptr<QWidget>;
const QSize page{884, 760}, low{660, 526};

GalleryView view(std::string name, Metric metric, HistoryRange range, std::vector<QSize> sizes = {page},
                 std::function<void(PageFrame&)> then = {}) {
  return {std::move(name), std::move(sizes), [=](const Theme& theme) -> Made {
            auto frame = std::make_unique<PageFrame>(theme, usual(), metric, range);
            if (then) then(*frame);
            frame->machine().settle();
            return frame;
          }};
}

Made firstSeconds(const Theme& theme) {
  auto machine = without();
  machine->model.step(SystemSnapshot::empty(RecordedMachine::now()), true);
  return std::make_unique<PageFrame>(theme, machine, Metric::cpu, HistoryRange::live);
}

Made fortySeconds(const Theme& theme) {
  auto machine = without();
  machine->measure();
  std::map<Metric, std::vector<HistoryPoint>> live = *machine->model.live;
  for (auto& [metric, points] : live)
    std::erase_if(points,
                  [](const auto& point) { return RecordedMachine::now() - point.date > Seconds{40}; });
  machine->model.live.set(live);
  return std::make_unique<PageFrame>(theme, machine, Metric::cpu, HistoryRange::live);
}

Made emptyHistory(const Theme& theme) {
  auto machine = without();
  machine->measure();
  return std::make_unique<PageFrame>(theme, machine, Metric::memory, HistoryRange::d30);
}

Made unreadableHistory(const Theme& theme) {
  auto machine = without(RecordedMachine::Past::unreadable);
  machine->measure();
  machine->settle();
  return std::make_unique<PageFrame>(theme, machine, Metric::cpu, HistoryRange::h24);
}

Made bare(const Theme& theme, Metric metric) {
  auto machine = without();
  machine->measure();
  auto known = *machine->model.known;
  for (const auto part : {KnownPart::graphics, KnownPart::graphicsMemory, KnownPart::battery,
                          KnownPart::power, KnownPart::processEnergy, KnownPart::processTraffic})
    known.set(part, false);
  machine->model.known.set(known);
  machine->model.peripherals.set({});
  auto snapshot = *machine->model.snapshot;
  snapshot.battery = {};
  machine->model.step(snapshot);
  return std::make_unique<PageFrame>(theme, machine, metric, HistoryRange::live);
}

/// Where other users' processes tell nothing.
Made hidden(const Theme& theme) {
  auto machine = without();
  machine->measure();
  machine->model.privileged.set(PrivilegedUse{.told = 0, .hidden = 41});
  auto snapshot = *machine->model.snapshot;
  for (auto& app : snapshot.apps)
    for (auto& process : app.processes)
      if (isSystemGroup(app)) process.diskRead = process.diskWrite = 0;
  machine->model.step(snapshot);
  return std::make_unique<PageFrame>(theme, machine, Metric::disk, HistoryRange::live);
}

Made crowd(const Theme& theme) {
  auto machine = without();
  machine->measure();
  auto snapshot = *machine->model.snapshot;
  snapshot.cpu.perCore.resize(64, 37);
  snapshot.cpu.performanceCores = snapshot.cpu.efficiencyCores = 0;
  const auto pattern = snapshot.apps[1];
  for (int i = 0; i < 100; ++i) {
    auto app = pattern;
    app.id += std::to_string(i);
    app.name = i == 3
                   ? "An application with a name that is far longer than any column of any list could ever be"
                   : "Application " + std::to_string(i);
    app.processes[0].cpu = 60.0 / (1 + i);
    snapshot.apps.push_back(app);
  }
  machine->model.step(snapshot);
  return std::make_unique<PageFrame>(theme, machine, Metric::cpu, HistoryRange::live);
}

} // namespace

std::vector<GalleryView> measureViews() {
  using enum HistoryRange;
  const auto pinned = [](PageFrame& frame) {
    frame.page().session().pin(RecordedMachine::now() - Seconds{4500});
  };
  const auto pointed = [](PageFrame& frame) {
    frame.page().chart().point(RecordedMachine::now() - Seconds{4500});
    frame.page().session().point(RecordedMachine::now() - Seconds{4500});
  };
  const auto unfolded = [](PageFrame& frame) { frame.page().session().unfold("org.example.browser"); };
  const auto focused = [](PageFrame& frame) {
    QTimer::singleShot(0, &frame, [&frame] { // once it is shown
      frame.activateWindow();
      frame.page().table().setFocus(Qt::TabFocusReason);
      QKeyEvent down(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
      QApplication::sendEvent(&frame.page().table(), &down);
    });
  };
  return {
      view("cpu", Metric::cpu, h24, {page, low, {1184, 860}}, pinned),
      view("cpu-pointed", Metric::cpu, h24, {page}, pointed),
      view("cpu-live", Metric::cpu, live),
      view("memory", Metric::memory, d7, {page, low}, unfolded),
      view("memory-focused", Metric::memory, d7, {{884, 800}}, focused),
      view("disk", Metric::disk, live, {page, {884, 1100}}),
      view("disk-day", Metric::disk, h12),
      view("network", Metric::network, live, {page}),
      view("network-week", Metric::network, d7),
      view("gpu", Metric::gpu, h12),
      view("battery", Metric::energy, h24, {{884, 900}}),
      {"cpu-first-seconds", {page}, firstSeconds},
      {"cpu-forty-seconds", {page}, fortySeconds},
      {"memory-empty-history", {page}, emptyHistory},
      {"cpu-unreadable-history", {page}, unreadableHistory},
      {"gpu-missing", {page}, [](const Theme& theme) { return bare(theme, Metric::gpu); }},
      {"battery-missing", {page}, [](const Theme& theme) { return bare(theme, Metric::energy); }},
      {"network-no-traffic", {page}, [](const Theme& theme) { return bare(theme, Metric::network); }},
      {"disk-hidden", {{884, 1300}}, hidden},
      {"cpu-crowd", {page}, crowd},
  };
}

} // namespace korvell
