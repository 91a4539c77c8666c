#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeUsageHelper.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/MainWindow.h"
#include "UI/Welcome/WelcomeView.h"

namespace korvell {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

struct OwnLoginItem final : LoginItem {
  bool on = false;
  bool isEnabled() const override { return on; }
  Outcome setEnabled(bool wanted) override { return on = wanted, success(); }
};

/// Any section's page.
struct PlainPage final : Page {
  std::string title() const override { return "Section"; }
};

struct WelcomeTests : AppFixture {
  Theme theme{{.reducedMotion = true}};
  OwnLoginItem login;
  FakeUsageHelper helper;
  std::unique_ptr<Queue> work = time.makeQueue("Korvell.desktop");
  SettingsStore store{defaults, *main, time.factory()};
  int linked = 0;
  bool isFirst = true;
  MainWindow window{{.model = *model,
                     .defaults = defaults,
                     .theme = theme,
                     .facts =
                         [] {
                           return SidebarFacts{.sections = {SidebarItem::overview, SidebarItem::cpu}};
                         },
                     .makePage = [](SidebarItem, QWidget&, Banner&) { return std::make_unique<PlainPage>(); },
                     .welcomes = [this] { return std::exchange(isFirst, false); },
                     .makeWelcome =
                         [this](QWidget& over, Task done) {
                           return std::make_unique<FirstLaunch>(theme, services(), std::move(done), &over);
                         },
                     .keepFrame = [](const Value&) {},
                     .openSettings = [] {},
                     .quit = [] {},
                     .closed = [] {}}};

  WelcomeTests() { helper.current = UsageHelperStatus::notEnabled; }

  SettingsEditor::Services services() {
    return {.model = *model,
            .defaults = defaults,
            .store = store,
            .loginItem = login,
            .helper = &helper,
            .context = {SystemKind::linuxDesktop, "/home/u", "/home/u/.local/share/korvell/history.sqlite"},
            .main = *main,
            .work = *work,
            .turnHelper = [this](bool on,
                                 const Cancellation&) { return on ? helper.enable() : helper.disable(); },
            .installTool = [this](const Cancellation&) { return ++linked, std::string("Installed."); }};
  }
  QWidget& open(std::optional<SidebarItem> item = std::nullopt) {
    window.show(item);
    settle();
    return *window.widget();
  }
  void settle() {
    time.run();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  std::vector<std::string> words() {
    std::vector<std::string> all;
    for (const auto* each : KitTests::all<TextLabel>(*window.widget()))
      if (each->isVisible()) all.push_back(utf8(each->words()));
    return all;
  }
  Control* named(const std::string& name) {
    for (auto* each : KitTests::all<Control>(*window.widget()))
      if (each->isVisible() && utf8(each->accessibleName()) == name) return each;
    return nullptr;
  }
};

TEST_F(WelcomeTests, comesOnceAndAnythingLeadsOnFromIt) {
  open();
  EXPECT_THAT(words(), Contains("Welcome to Korvell"));
  EXPECT_THAT(words(), Contains(HasSubstr("~/.local/share/korvell,")));
  KitTests::key(*named("Show This Machine"), Qt::Key_Return);
  settle();
  EXPECT_THAT(words(), Contains("Section"));
  EXPECT_EQ(named("Skip"), nullptr);
  window.close();
  open();
  EXPECT_THAT(words(), Contains("Section"));

  const std::pair<const char*, Task> ways[] = {
      {"skipping", [this] { KitTests::key(*named("Skip"), Qt::Key_Space); }},
      {"escape", [this] { KitTests::key(*window.widget(), Qt::Key_Escape); }},
      {"a section", [this] { model->selection.set(SidebarItem::cpu); }},
      {"the section of the start", [this] { model->selection.set(SidebarItem::overview); }}};
  for (const auto& [name, way] : ways) {
    window.close();
    isFirst = true;
    model->selection.set(std::nullopt);
    open();
    ASSERT_THAT(words(), Contains("Welcome to Korvell")) << name;
    way();
    settle();
    EXPECT_THAT(words(), Contains("Section")) << name;
  }
  window.close();
  isFirst = true;
  open(SidebarItem::cpu);
  EXPECT_THAT(words(), Contains("Section")) << "who asks for a section gets it";
}

TEST_F(WelcomeTests, whatItOffersWorksFromTheKeyboardAlone) {
  auto& shown = open();
  named("Skip")->setFocus(Qt::TabFocusReason);
  std::vector<std::string> stops;
  for (int i = 0; i < 5; ++i, KitTests::key(shown, Qt::Key_Tab))
    stops.push_back(utf8(shown.focusWidget()->accessibleName()));
  EXPECT_THAT(stops, ElementsAre("Skip", "Open at login", "Enable: System processes",
                                 "Install: Command line tool", "Show This Machine"));
  for (const auto* name : {"Open at login", "Enable: System processes", "Install: Command line tool"})
    KitTests::key(*named(name), Qt::Key_Space);
  settle();
  EXPECT_TRUE(login.on);
  EXPECT_EQ(helper.current, UsageHelperStatus::enabled);
  EXPECT_EQ(linked, 1);
  EXPECT_NE(named("Disable: System processes"), nullptr);
  EXPECT_THAT(words(), Contains("Installed."));
}

} // namespace
} // namespace korvell
