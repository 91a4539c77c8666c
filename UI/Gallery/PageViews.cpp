// The window with its Health page, the panel and the sidebar, over machines that never were.

#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/MadeUp.h"
#include "UI/Kit/Labels.h"
#include "UI/Overview/HealthView.h"
#include "UI/Panel/PanelView.h"
#include "UI/Share/ShareCardPainter.h"
#include "UI/Shell/MainWindow.h"

#include <QBoxLayout>
#include <QPainter>

namespace korvell {

namespace {

using Machine = MadeUp (*)();

constexpr std::optional<double> weekScore = 84;

void ignore() {}

/// A model that lives as long as the view that shows it.
class Shown : public QWidget {
public:
  explicit Shown(Machine machine) : model_(machine()) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
  }

protected:
  std::unique_ptr<MadeUpModel> model_;
};

class ShownWindow final : public Shown {
public:
  ShownWindow(const Theme& theme, Machine machine) : Shown(machine), window_(services(theme)) {
    window_.show(std::nullopt);
    layout()->addWidget(window_.widget());
  }

private:
  MainWindow::Services services(const Theme& theme) {
    return {.model = *model_,
            .defaults = model_->defaults,
            .theme = theme,
            .facts =
                [] {
                  SidebarFacts facts{.reclaimable = 34'500'000'000, .aiCostToday = 24.9, .newAlerts = 2};
                  for (const auto& item : allCases<SidebarItem>()) facts.sections.insert(item.value);
                  return facts;
                },
            .makePage = [this, &theme](SidebarItem, QWidget& window, Banner&) -> std::unique_ptr<Page> {
              auto page = std::make_unique<HealthView>(theme, &window);
              page->onOpen([](SidebarItem) {});
              page->onStep([](const Step&) {});
              page->onShare(ignore);
              page->show(healthPage(*model_, {model_->zone, weekScore, true}));
              return page;
            },
            .openHelp = [](SidebarItem) {},
            .keepFrame = [](const Value&) {},
            .openSettings = ignore,
            .share = {},
            .quit = ignore,
            .closed = ignore};
  }

  MainWindow window_;
};

class ShownPanel final : public Shown {
public:
  ShownPanel(const Theme& theme, Machine machine, UsageKey sortedBy, const SoundState* sound)
      : Shown(machine) {
    auto* ground = new Plate(theme, {Token::surface, Token::edge, 12}, this);
    auto* inside = new QVBoxLayout(ground);
    inside->setContentsMargins(0, 0, 0, 0);
    auto* panel = new PanelView(theme,
                                {.step = [](const Step&) {},
                                 .open = [](SidebarItem) {},
                                 .sortBy = [](UsageKey) {},
                                 .openKorvell = ignore,
                                 .openSettings = ignore,
                                 .quit = ignore,
                                 .share = ignore,
                                 .mute = [](const std::string&, bool) {}},
                                ground);
    panel->show(panelPage(*model_, sortedBy, weekScore, true, sound));
    inside->addWidget(panel);
    layout()->addWidget(ground);
  }
};

template <Machine machine>
std::unique_ptr<QWidget> window(const Theme& theme) {
  return std::make_unique<ShownWindow>(theme, machine);
}

template <Machine machine, UsageKey key = UsageKey::memory>
std::unique_ptr<QWidget> panel(const Theme& theme) {
  return std::make_unique<ShownPanel>(theme, machine, key, nullptr);
}

std::unique_ptr<QWidget> panelWithSound(const Theme& theme) {
  AudioApp muted{.key = "chat", .name = "Chat", .muted = true, .playing = true};
  AudioApp music{.key = "music", .name = "An application whose name is long", .volume = 0.6, .playing = true};
  const SoundState sound{.connection = SoundConnection::connected,
                         .apps = {{.key = "firefox", .name = "Firefox", .playing = true}, music, muted}};
  return std::make_unique<ShownPanel>(theme, healthyMachine, UsageKey::memory, &sound);
}

class ShownCard final : public QWidget {
public:
  ShownCard(const Theme& theme, Machine machine) {
    const auto model = machine();
    if (const auto card = shareCard(*model, model->zone)) picture_ = shareCardPicture(*card, theme);
  }
  QSize sizeHint() const override { return picture_.size(); }

protected:
  void paintEvent(QPaintEvent*) override { QPainter(this).drawImage(rect(), picture_); }

private:
  QImage picture_;
};

template <Machine machine>
std::unique_ptr<QWidget> card(const Theme& theme) {
  return std::make_unique<ShownCard>(theme, machine);
}

} // namespace

std::vector<GalleryView> pageViews() {
  constexpr QSize own, usual(1100, 760), least(720, 560), low(900, 560), narrow(720, 640), large(1500, 900);
  return {
      {"health", {usual, narrow, large}, window<usualMachine>},
      {"health-starting", {usual, least}, window<startingMachine>},
      {"health-well", {usual}, window<healthyMachine>},
      {"health-troubled", {usual, low, least}, window<troubledMachine>},
      {"health-wordy", {usual, least}, window<wordyMachine>},
      {"health-bare", {usual}, window<bareMachine>},
      {"panel", {own}, panel<usualMachine>},
      {"panel-starting", {own}, panel<startingMachine>},
      {"panel-well", {own}, panel<healthyMachine>},
      {"panel-troubled", {own}, panel<troubledMachine, UsageKey::cpu>},
      {"panel-sound", {own}, panelWithSound},
      {"panel-low", {{360, 560}}, panel<troubledMachine, UsageKey::cpu>},
      {"panel-wordy", {own}, panel<wordyMachine>},
      {"panel-bare", {own}, panel<bareMachine>},
      {"share-card", {own}, card<usualMachine>},
      {"share-card-well", {own}, card<healthyMachine>},
      {"share-card-troubled", {own}, card<troubledMachine>},
      {"share-card-wordy", {own}, card<wordyMachine>},
      {"share-card-bare", {own}, card<bareMachine>},
  };
}

} // namespace korvell
