#include "UI/Shell/KorvellApp.h"

#include "App/OwnerLines.h"
#include "Core/Health/SeenAlerts.h"
#include "UI/AIUsage/AIUsageView.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Text.h"
#include "UI/Measures/MeasureView.h"
#include "UI/Overview/HealthView.h"
#include "UI/Sensors/SensorsView.h"
#include "UI/Servers/ServersView.h"
#include "UI/Shell/FileManager.h"
#include "UI/Sound/SoundView.h"
#include "UI/Startup/StartupView.h"
#include "UI/Storage/StorageView.h"

#include <QClipboard>
#include <QGuiApplication>

namespace korvell {

// The sections of the window

namespace {

/// A mean over a week hardly moves faster.
constexpr Seconds weekScoreAge{600};
/// A subscription for as long as a widget lives.
void keepWith(QWidget& widget, Subscription subscription) {
  QObject::connect(&widget, &QObject::destroyed, [subscription = std::move(subscription)] {});
}

/// The sections that have a page on every machine.
constexpr SidebarItem pages[] = {SidebarItem::overview, SidebarItem::cpu,     SidebarItem::memory,
                                 SidebarItem::disk,     SidebarItem::network, SidebarItem::gpu,
                                 SidebarItem::energy,   SidebarItem::storage, SidebarItem::devServers,
                                 SidebarItem::sound,    SidebarItem::sensors, SidebarItem::startup,
                                 SidebarItem::alerts};

} // namespace

std::set<SidebarItem> KorvellApp::sections() const {
  std::set<SidebarItem> all{std::begin(pages), std::end(pages)};
  if (model_->aiUsage()) all.insert(SidebarItem::aiUsage);
  return all;
}

SidebarFacts KorvellApp::sidebarFacts() const {
  SidebarFacts facts{.sections = sections()};
  if (const auto* usage = model_->aiUsage())
    facts.aiCostToday = costToday(*usage->summary, model_->snapshot->date, usage->zone());
  if (scanner_) facts.reclaimable = scanner_->reclaimableBytes();
  facts.temperatures = temperatureUnit(*host_.defaults);
  facts.newAlerts = int(newAlerts(*model_->alerts, *host_.defaults, model_->snapshot->date));
  return facts;
}

std::unique_ptr<Page> KorvellApp::makePage(SidebarItem item, QWidget& window, Banner& banner) {
  if (item == SidebarItem::overview) return makeHealthPage(window, banner);
  if (const auto measure = metric(item)) return makeMeasurePage(*measure, window, banner);
  const auto ask = [this, &window, &banner](const ActionRequest& request) {
    errands_.run(request, window, banner);
  };
  const auto open = [this](SidebarItem section) { model_->selection.set(section); };
  switch (item) {
  case SidebarItem::storage:
    scanner_ = &storage_();
    return std::make_unique<StorageView>(StorageView::Services{.scanner = *scanner_,
                                                               .model = *model_,
                                                               .zone = *host_.zone,
                                                               .defaults = *host_.defaults,
                                                               .home = host_.folders.home,
                                                               .theme = theme_,
                                                               .ask = ask,
                                                               .reveal = showInFileManager});
  case SidebarItem::aiUsage:
    if (auto* store = model_->aiUsage())
      return std::make_unique<AIUsageView>(
          AIUsageView::Services{.store = *store, .model = *model_, .theme = theme_, .period = aiPeriod_},
          &window);
    return nullptr;
  case SidebarItem::devServers:
    return std::make_unique<ServersView>(ServersView::Services{.model = *model_,
                                                               .theme = theme_,
                                                               .home = host_.folders.home,
                                                               .ask = ask,
                                                               .openAddress = openAddress,
                                                               .showFolder = openPath},
                                         &window);
  case SidebarItem::sound:
    return makeSoundPage(window);
  case SidebarItem::sensors:
    return std::make_unique<SensorsView>(
        SensorsView::Services{.model = *model_, .defaults = *host_.defaults, .theme = theme_}, &window);
  case SidebarItem::startup:
    return std::make_unique<StartupView>(
        StartupView::Services{.model = *model_, .theme = theme_, .ask = ask, .showFile = showInFileManager},
        &window);
  case SidebarItem::alerts:
    return std::make_unique<AlertsView>(
        AlertsView::Services{.model = *model_,
                             .theme = theme_,
                             .zone = *host_.zone,
                             .defaults = *host_.defaults,
                             .sections = sections(),
                             .ask = ask,
                             .open = open,
                             .showMoment =
                                 [this, open](SidebarItem section, Date moment) {
                                   moment_ = moment;
                                   open(section);
                                 },
                             .see = [this] { seeAlerts(); }},
        &window);
  default:
    return nullptr;
  }
}

std::unique_ptr<Page> KorvellApp::makeSoundPage(QWidget& window) {
  SoundView::Services services{.sound = {}, .theme = theme_, .pictures = &pictures_};
  if (sound_)
    services.sound = {
        .state = &sound_->state,
        .watchLevels = [this] { return sound_->watch(SoundMixer::Interest::levels); },
        .setVolume = [this](const std::string& app, double volume) { sound_->setVolume(app, volume); },
        .setMuted = [this](const std::string& app, bool muted) { sound_->setMuted(app, muted); },
        .reset = [this](const std::string& app) { sound_->reset(app); },
        .resetAll = [this] { sound_->resetAll(); },
        .setOutputVolume = [this](double volume) { sound_->setOutputVolume(volume); },
        .setOutputMuted = [this](bool muted) { sound_->setOutputMuted(muted); }};
  if (host_.openSoundPermission)
    services.openPermission = [this] { desktopQueue().async(host_.openSoundPermission); };
  return std::make_unique<SoundView>(std::move(services), &window);
}

std::unique_ptr<Page> KorvellApp::makeMeasurePage(Metric metric, QWidget& window, Banner& banner) {
  AppListFacts facts;
  if (host_.system == SystemKind::linuxDesktop) facts.trafficNote = tcpOnlyNote();
  MeasureView::Services services{
      .session = {*model_, model_->queries(), directions_, *host_.zone, *host_.defaults, facts},
      .theme = theme_,
      .ask = [this, &window,
              &banner](const ActionRequest& request) { errands_.run(request, window, banner); },
      .open = [this](SidebarItem section) { model_->selection.set(section); },
      .explain = [this, &window, &banner](ProcessID pid) { explain(pid, window, banner); },
      .pictures = &pictures_};
  if (host_.openBatterySettings) services.openBatterySettings = [this] { openBatterySettings(); };
  if (host_.usageHelper) services.openSettings = [this] { openSettings(); };
  services.showFolder = [this, &banner](ProcessID pid) { showProgram(pid, banner); };
  if (host_.diagnostics)
    services.session.examine = [this](const MeasureSession::Services::Examined& done) { examine(done); };
  auto page = std::make_unique<MeasureView>(std::move(services), metric);
  if (const auto moment = std::exchange(moment_, std::nullopt)) page->session().show(*moment);
  return page;
}

std::unique_ptr<Page> KorvellApp::makeHealthPage(QWidget& window, Banner& banner) {
  auto page = std::make_unique<HealthView>(theme_, &window);
  auto* view = page.get();
  view->setPictures(pictures_);
  const auto refresh = [this, view] {
    view->show(healthPage(*model_, {.zone = *host_.zone,
                                    .weekScore = weekScore_,
                                    .hasBatterySettings = bool(host_.openBatterySettings)}));
  };
  view->onOpen([this](SidebarItem section) { model_->selection.set(section); });
  view->onShare([this, &banner] { sharing_.share(banner); });
  view->onStep([this, &window, &banner](const Step& step) { takeStep(step, window, banner); });
  keepWith(*view, model_->cycle.observe([this, refresh](std::int64_t) {
    if (model_->snapshot->date - weekScoreAt_ >= weekScoreAge) askWeekScore();
    refresh();
  }));
  refresh();
  askWeekScore();
  return page;
}

void KorvellApp::explain(ProcessID pid, QWidget& window, Banner& banner) {
  const auto show = [this, pid, over = QPointer(&window),
                     told = QPointer(&banner)](const std::optional<ProcessSampler::Identity>& process) {
    if (!over || !told) return;
    if (!process)
      return told->say(Tone::info, localized("There is no process {pid}.", {{"pid", std::to_string(pid)}}));
    Question question{.title = localized("Why is {name} here?", {{"name", process->name()}}),
                      .passages = {{}},
                      .action = localized("Copy"),
                      .cancel = localized("Close")};
    std::string all;
    for (const auto& [label, words] : ownerLines(pid, *process)) {
      question.passages.front().well.push_back(label + ": " + words);
      all += label + ": " + words + "\n";
    }
    Dialog::ask(theme_, question, *over, [all](bool copies) {
      if (copies) QGuiApplication::clipboard()->setText(text(all));
    });
  };
  model_->identify(pid, show);
}

/// An application as the system shows it is its bundle; elsewhere it is the file that runs.
void KorvellApp::showProgram(ProcessID pid, Banner& banner) {
  const bool hasBundles = host_.system == SystemKind::macOS;
  const auto show = [hasBundles, told = QPointer(&banner)](const auto& process) {
    std::string path;
    if (process)
      path = hasBundles ? process->owner.owner->bundlePath.value_or(process->path()) : process->path();
    if (!path.empty()) return showInFileManager(path);
    if (told) told->say(Tone::info, localized("The system does not tell where it lies."));
  };
  model_->identify(pid, show);
}

/// What can't be stored stays new, wherever alerts are counted.
void KorvellApp::seeAlerts() {
  const auto mark = [alerts = *model_->alerts, now = model_->snapshot->date](UserDefaults& defaults) {
    return markSeen(alerts, defaults, now);
  };
  store_.change(mark, [this](bool) { window_.refresh(); });
}

} // namespace korvell
