#include "UI/Shell/KorvellApp.h"

#include "App/LastResort.h"
#include "Base/FreeMemory.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Type.h"

#include <QApplication>
#include <QFontInfo>
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
  const auto picked = defaults.string(appearanceKey).value_or("system");
  auto appearance = wishes.appearance;
  if (picked == "light") appearance = Appearance::light;
  if (picked == "dark") appearance = Appearance::dark;
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

KorvellApp::KorvellApp(Host& host, const Clock& clock, KeeperLock lock)
    : host_(host), lock_(std::move(lock)), wishes_(DesktopLook::fromPalette()), assembly_(host, clock),
      model_(assembly_.makeKeepingModel(loop_.main(), attention_, complain)),
      delegate_(*host.defaults, [this](std::optional<SidebarItem> item) { show(item); }),
      keeper_(loop_.main(), *model_),
      window_({.model = *model_,
               .defaults = *host.defaults,
               .theme = theme_,
               .makePage = [this](SidebarItem item, QWidget& window,
                                  Banner& banner) { return makePage(item, window, banner); },
               .openSettings = [this] { openSettings(); },
               .quit = [this] { askToQuit(); },
               .closed = [this] { windowClosed(); }}) {
  wear(wishes_);
  look_.emplace([this](const DesktopWishes& wishes) { wear(wishes); });
  trayWatch_.emplace([this](TrayWatch::State state) { trayFound(state); });
  listen();
  host.notifications->setOpenHandler([&main = loop_.main(), this](const std::string&) {
    main.async([this] { show(SidebarItem::alerts); });
  });
}

KorvellApp::~KorvellApp() = default;

void KorvellApp::listen() {
  answerOpening(keeper_, delegate_, [](const std::string& token) {
    if (!token.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
  });
  for (const auto& socket : {keeperSocketPath(host_.folders), spareSocketPath(host_.folders)})
    if (keeper_.listen(socket)) return lock_.announce(socket);
  complain(localized("can't answer at {socket}; commands will measure by themselves",
                     {{"socket", keeperSocketPath(host_.folders)}}));
}

int KorvellApp::run(const OpenRequest& request) {
  loop_.main().async([this, request] {
    delegate_.applicationDidFinishLaunching();
    if (!request.urls.empty()) delegate_.applicationOpen(request.urls);
  });
  const int status = loop_.run();
  const auto problem = model_->finish();
  if (problem)
    complain(localized("The last minutes could not be recorded: {reason}", {{"reason", problem->detail}}));
  const LastResort lastResort(timeToEnd, problem ? EXIT_FAILURE : status);
  model_.reset();
  return problem ? EXIT_FAILURE : status;
}

void KorvellApp::wear(const DesktopWishes& wishes) {
  wishes_ = wishes;
  theme_.set(lookOf(wishes, *host_.defaults));
  setTooltipLook(theme_);
  if (tray_) tray_->setInk(wishes.ink);
}

void KorvellApp::trayFound(TrayWatch::State state) {
  if (state != TrayWatch::State::present) {
    window_.tell(localized("This desktop shows no tray, so Korvell opens here."),
                 localized("A panel or an extension that shows status items would help. Starting Korvell "
                           "again opens this window."));
    return;
  }
  tray_.emplace(*model_, *host_.defaults,
                TrayItem::Actions{.openPanel = [this] { openPanel(); },
                                  .openKorvell = [this] { show(std::nullopt); },
                                  .freeUpSpace = [this] { show(SidebarItem::storage); },
                                  .openSettings = [this] { openSettings(); },
                                  .quit = [this] { askToQuit(); }});
  tray_->setInk(wishes_.ink);
}

void KorvellApp::show(std::optional<SidebarItem> item) {
  window_.show(item);
  model_->wake();
  if (!host_.defaults->boolean(AppDelegate::hasLaunchedKey, false))
    host_.defaults->set(AppDelegate::hasLaunchedKey, true);
}

std::unique_ptr<Page> KorvellApp::makePage(SidebarItem, QWidget&, Banner&) { return nullptr; }

void KorvellApp::openPanel() {
  if (panel_) return panel_->close(), void();
  if (sincePanel_.isValid() && sincePanel_.elapsed() < sameClick) return;
  auto* content = new Ground(theme_, Token::surface, nullptr);
  content->setMinimumHeight(300);
  panel_ = new PanelWindow(theme_, *content, [this] { panelClosed(); });
  panel_->openAt(tray_ ? tray_->place() : QRect());
  model_->wake();
}

void KorvellApp::panelClosed() {
  sincePanel_.start();
  if (panel_) panel_->deleteLater();
  panel_ = nullptr;
  windowClosed();
}

void KorvellApp::openSettings() {}

void KorvellApp::askToQuit() { loop_.quit(); }

void KorvellApp::windowClosed() {
  loop_.main().async([] { giveFreeMemoryBack(); });
}

} // namespace korvell
