#include "UI/Shell/KorvellApp.h"

#include "App/AppearanceChoice.h"
#include "App/LanguageChoice.h"
#include "App/LastResort.h"
#include "App/PanelSoundChoice.h"
#include "Base/FreeMemory.h"
#include "Base/SystemQueue.h"
#include "Core/Storage/StorageHost.h"
#include "Shared/HelpPages.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Type.h"
#include "UI/Pictures/ApplicationPictures.h"
#include "UI/Shell/FileManager.h"
#include "UI/Shell/QuestionWindow.h"
#include "UI/Shell/Speech.h"
#include "UI/Tray/TrayHelp.h"
#include "UI/Welcome/WelcomeView.h"

#include <QApplication>
#include <QFontInfo>
#include <QTimer>
#include <QWindow>
#include <cstdio>

namespace korvell {

namespace {

/// For a scan that is under way to end.
constexpr Seconds timeToEnd{5};
/// A click on the item closes an open panel before it is told: that click opens it no second time.
constexpr int sameClick = 300; // milliseconds

void complain(const std::string& trouble) { std::fprintf(stderr, "korvell: %s\n", trouble.c_str()); }

Look lookOf(const DesktopWishes& wishes, const UserDefaults& defaults) {
  const auto picked = appearanceChoice(defaults);
  auto appearance = wishes.appearance;
  if (picked == AppearanceChoice::light) appearance = Appearance::light;
  if (picked == AppearanceChoice::dark) appearance = Appearance::dark;
  return {.appearance = appearance,
          .highContrast = wishes.highContrast,
          .reducedMotion = wishes.reducedMotion,
          .textScale = textScaleOf(QFontInfo(QApplication::font()).pixelSize()),
          .family = systemFamily()};
}

} // namespace

bool KorvellApp::WindowsAttention::isWatched() const {
  const auto isLookedAt = [](const QWidget* widget) {
    if (!widget->isVisible() || widget->isMinimized()) return false;
    return widget->windowType() == Qt::Window || widget->isActiveWindow();
  };
  return std::ranges::any_of(QApplication::topLevelWidgets(), isLookedAt);
}

KorvellApp::KorvellApp(Host& host, const Clock& clock, Launch launched, QueueCore::Run runTask)
    : host_(host), launched_(std::move(launched)), loop_(std::move(runTask)),
      store_(*host.defaults, loop_.main(), systemQueueFactory()), wishes_(DesktopLook::fromPalette()),
      assembly_(host, clock), troubles_(host.folders, clock, KORVELL_VERSION, complain),
      model_(assembly_.makeKeepingModel(loop_.main(), attention_, troubles_.teller())),
      storage_(assembly_.lateStorageScanner(loop_.main())),
      actions_(assembly_.makeActions(
          loop_.main(), [this]() -> AppModel& { return *model_; }, storage_)),
      errands_(*actions_, theme_),
      consent_(loop_.main(), *actions_,
               [this](const ActionDescription& description, std::function<void(bool)> answered) {
                 return askForAgent(theme_, description, std::move(answered));
               }),
      sharing_({.model = *model_,
                .zone = *host.zone,
                .theme = theme_,
                .downloads = [&host] { return downloadsFolder(host); },
                .work = [this]() -> Queue& { return desktopQueue(); },
                .main = loop_.main(),
                .showFile = showInFileManager}),
      pictures_(loop_.main(), utilityQueueFactory(), applicationPictures(host.folders, processEnvironment())),
      delegate_(*host.defaults, [this](std::optional<SidebarItem> item) { show(item); }),
      keeper_(loop_.main(), *model_, *actions_),
      window_({.model = *model_,
               .defaults = *host.defaults,
               .theme = theme_,
               .facts = [this] { return sidebarFacts(); },
               .makePage = [this](SidebarItem item, QWidget& window,
                                  Banner& banner) { return makePage(item, window, banner); },
               .welcomes = [this] { return welcomes(); },
               .makeWelcome =
                   [this](QWidget& window, Task done) {
                     return std::make_unique<FirstLaunch>(theme_, settingsServices(), std::move(done),
                                                          &window);
                   },
               .openHelp = openHelp(),
               .keepFrame = [this](Value frame) { store_.set(MainWindow::frameKey, std::move(frame)); },
               .openSettings = [this] { openSettings(); },
               .share = [this](Banner& banner) { sharing_.share(banner); },
               .quit = [this] { askToQuit(); },
               .closed = [this] { windowClosed(); }}),
      settings_(
          theme_, [this] { return settingsServices(); }, [this] { windowClosed(); }) {
  wear(wishes_);
  look_.emplace([this](const DesktopWishes& wishes) { wear(wishes); });
  trayWatch_.emplace([this](TrayWatch::State state) { trayFound(state); });
  metrics_.emplace(loop_.main(), *model_, *host.defaults, systemQueueFactory(), KORVELL_VERSION,
                   troubles_.teller());
  troubles_.follow(*model_);
  if (auto services = soundServices(host, processEnvironment(), systemQueueFactory())) {
    sound_.emplace(loop_.main(), std::move(*services));
    soundAnswers_.emplace(loop_.main(), *sound_).teach(keeper_);
  }
  makeMenu();
  listen();
  host.notifications->setOpenHandler([&main = loop_.main(), this](const std::string&) {
    main.async([this] { show(SidebarItem::alerts); });
  });
}

KorvellApp::~KorvellApp() = default;

void KorvellApp::listen() {
  keeper_.setAskPerson([this](const Value& request, Keeper::Answer answer) {
    return consent_.ask(request, std::move(answer));
  });
  answerOpening(keeper_, delegate_, [](const std::string& token) {
    if (!token.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
  });
  for (const auto& socket : {keeperSocketPath(host_.folders), spareSocketPath(host_.folders)})
    if (keeper_.listen(socket)) return launched_.lock->announce(socket);
  troubles_.tellUnreachable(keeperSocketPath(host_.folders));
}

/// While what they show is still there.
void KorvellApp::closeWindows() {
  panelCycles_.reset();
  panelSounds_.reset();
  panelSound_.reset();
  delete std::exchange(panel_, nullptr);
  settings_.close();
  window_.close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // those that were closed before
}

int KorvellApp::run(const OpenRequest& request) {
  loop_.main().async([this, request] {
    delegate_.applicationDidFinishLaunching();
    if (!request.urls.empty()) delegate_.applicationOpen(request.urls);
  });
  const int status = loop_.run();
  closeWindows();
  const auto problem = model_->finish();
  if (problem) troubles_.tellLost(*problem);
  const LastResort lastResort(timeToEnd, problem ? EXIT_FAILURE : status);
  metrics_.reset();
  model_.reset();
  return problem ? EXIT_FAILURE : status;
}

void KorvellApp::wear(const DesktopWishes& wishes) {
  wishes_ = wishes;
  theme_.set(lookOf(wishes, *host_.defaults));
  setTooltipLook(theme_);
  setFrameLook(theme_);
  if (tray_) tray_->setInk(wishes.ink);
}

void KorvellApp::trayFound(TrayWatch::State state) {
  if (state != TrayWatch::State::present) {
    return window_.tell([] {
      return MainWindow::Notice(localized("This desktop shows no tray, so Korvell opens here."),
                                trayHelp(processEnvironment()("XDG_CURRENT_DESKTOP").value_or("")) + " " +
                                    localized("Starting Korvell again opens this window."));
    });
  }
  window_.untell();
  tray_.emplace(*model_, *host_.defaults, theme_,
                TrayItem::Actions{.openPanel = [this] { openPanel(); },
                                  .openKorvell = [this] { show(std::nullopt); },
                                  .freeUpSpace = [this] { show(SidebarItem::storage); },
                                  .openSettings = [this] { openSettings(); },
                                  .quit = [this] { askToQuit(); }});
  tray_->setInk(wishes_.ink);
}

void KorvellApp::speak() {
  const auto list = processEnvironment()("LANGUAGE").value_or("");
  if (!speakLanguage(languageCode(*host_.defaults, host_.locale, list))) return;
  speakToolkit();
  speakAnew(*model_);
  if (menu_) menu_->speakAnew();
  if (tray_) tray_->speakAnew();
  if (panel_) panel_->close();
  // In turns of their own, so that what the user does meanwhile is not held up by both.
  QTimer::singleShot(0, qApp, [this] { settings_.speakAnew(); });
  QTimer::singleShot(0, qApp, [this] { window_.speakAnew(); });
}

void KorvellApp::show(std::optional<SidebarItem> item) {
  presence_.setHasWindow(true);
  presence_.comeForward();
  window_.show(item);
  model_->wake();
  if (!host_.defaults->boolean(AppDelegate::hasLaunchedKey, false))
    store_.set(AppDelegate::hasLaunchedKey, true);
}

bool KorvellApp::welcomes() {
  // Settings that can't be stored would bring it back with each window.
  const bool isFirst = !host_.defaults->boolean(AppDelegate::hasLaunchedKey, false);
  return isFirst && !std::exchange(hasWelcomed_, true);
}

void KorvellApp::takeStep(const Step& step, QWidget& window, Banner& banner) {
  if (const auto* section = std::get_if<SidebarItem>(&step.what)) return show(*section);
  if (const auto* request = std::get_if<ActionRequest>(&step.what))
    return errands_.run(*request, window, banner);
  openBatterySettings();
}

void KorvellApp::openBatterySettings() { desktopQueue().async(host_.openBatterySettings); }

void KorvellApp::askWeekScore() {
  constexpr Seconds week{7 * 86'400.0};
  weekScoreAt_ = model_->snapshot->date;
  model_->queries().averageScore(model_->snapshot->date - week,
                                 [this](const std::optional<double>& score) { weekScore_ = score; });
}

void KorvellApp::openPanel() {
  if (panel_) return panel_->close(), void();
  if (sincePanel_.isValid() && sincePanel_.elapsed() < sameClick) return;
  askWeekScore();
  const auto leave = [this](const Task& then) {
    panel_->close();
    then();
  };
  panelView_ = new PanelView(
      theme_,
      {.step =
           [this, leave](const Step& step) {
             if (const auto* section = std::get_if<SidebarItem>(&step.what))
               return leave([this, section] { show(*section); });
             takeStep(step, *panel_, panelView_->banner());
           },
       .open = [this, leave](SidebarItem section) { leave([this, section] { show(section); }); },
       .sortBy =
           [this](UsageKey key) {
             panelOrder_ = key;
             showPanel();
           },
       .openKorvell = [this, leave] { leave([this] { show(std::nullopt); }); },
       .openSettings = [this, leave] { leave([this] { openSettings(); }); },
       .quit = [this] { askToQuit(); },
       .share = [this] { sharing_.share(panelView_->banner()); },
       .mute = [this](const std::string& app, bool muted) { sound_->setMuted(app, muted); }},
      nullptr);
  panelView_->setPictures(pictures_);
  panel_ = new PanelWindow(theme_, *panelView_, [this] { panelClosed(); });
  showPanel();
  panelCycles_ = model_->cycle.observe([this](std::int64_t) { showPanel(); });
  if (sound_ && showsSoundInPanel(*host_.defaults)) {
    panelSound_ = sound_->watch(SoundMixer::Interest::list);
    panelSounds_ = sound_->state.observe([this](const SoundState&) { showPanel(); });
  }
  presence_.comeForward();
  panel_->openAt(tray_ ? tray_->place() : QRect());
  model_->wake();
}

void KorvellApp::showPanel() {
  panelView_->show(panelPage(*model_, panelOrder_, weekScore_, bool(host_.openBatterySettings),
                             panelSounds_ ? &*sound_->state : nullptr));
}

void KorvellApp::panelClosed() {
  if (!panel_) return;
  sincePanel_.start();
  panelCycles_.reset();
  panelSounds_.reset();
  panelSound_.reset();
  panel_->deleteLater();
  panel_ = nullptr;
  panelView_ = nullptr;
  windowClosed();
}

void KorvellApp::openSettings() {
  presence_.comeForward();
  settings_.show();
}

std::function<void(SidebarItem)> KorvellApp::openHelp() const {
  const HelpPages help(host_.program);
  if (!help.page(HelpPages::index)) return {};
  return [help](SidebarItem item) {
    const auto page = help.page(rawValue(item));
    if (const auto any = page ? page : help.page(HelpPages::index)) openPath(*any);
  };
}

SettingsEditor::Services KorvellApp::settingsServices() {
  auto services = SettingsEditor::of(host_, assembly_, *model_, store_, loop_.main(), desktopQueue());
  services.styleChanged = [this] {
    model_->menuBar.styleChanged();
    if (tray_) tray_->update();
  };
  services.appearanceChanged = [this] { wear(wishes_); };
  services.languageChanged = [this] { speak(); };
  services.temperaturesChanged = [this] { window_.refresh(); };
  if (const HelpPages help(host_.program); help.page(HelpPages::settings))
    services.openHelp = [help] {
      if (const auto page = help.page(HelpPages::settings)) openPath(*page);
    };
  return services;
}

void KorvellApp::examine(const std::function<void(const std::vector<SourceReport>&)>& done) {
  if (!examining_) examining_ = systemQueueFactory()("Korvell.sources");
  examining_->async([&diagnostics = *host_.diagnostics, &main = loop_.main(), done] {
    main.async([done, sources = diagnostics.figureSources()] { done(sources); });
  });
}

Queue& KorvellApp::desktopQueue() {
  if (!desktop_) desktop_ = systemQueueFactory()("Korvell.desktop");
  return *desktop_;
}

void KorvellApp::askToQuit() {
  QWidget* window = panel_ ? static_cast<QWidget*>(panel_) : window_.isVisible() ? window_.widget() : nullptr;
  if (!window) return loop_.quit();
  if (!panel_) show(std::nullopt); // a question in a window that is minimized or covered is none
  Dialog::ask(theme_,
              {.title = localized("Quit Korvell?"),
               .passages = {{.text = launched_.tookOver
                                         ? localized("Korvell goes on measuring in the background.")
                                         : localized("Korvell stops measuring and recording until it is "
                                                     "opened again.")}},
               .action = localized("Quit")},
              *window, [this](bool yes) {
                if (yes) loop_.quit();
              });
}

void KorvellApp::windowClosed() {
  presence_.setHasWindow(window_.isVisible());
  if (!panel_ && !window_.isVisible()) pictures_.clear();
  loop_.main().async([] { giveFreeMemoryBack(); });
}

} // namespace korvell
