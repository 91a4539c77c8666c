#include "UI/Settings/SettingsWindow.h"

#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeUsageHelper.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Kit/Banner.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Switches.h"
#include "Words/Languages.h"

#include <QClipboard>
#include <QGuiApplication>

namespace korvell {
namespace {

using testing::ElementsAre;

struct SwitchedOff final : LoginItem {
  bool isEnabled() const override { return false; }
  Outcome setEnabled(bool) override { return Failure{"The disk is full."}; }
};

struct SettingsWindowTests : AppFixture {
  Theme theme{{.reducedMotion = true}};
  SwitchedOff login;
  FakeUsageHelper helper;
  std::unique_ptr<Queue> work = time.makeQueue("Korvell.desktop");
  SettingsStore store{defaults, *main, time.factory()};
  int closings = 0;
  SettingsWindow window{theme, [this] { return services(); }, [this] { ++closings; }};

  SettingsEditor::Services services() {
    return {.model = *model,
            .defaults = defaults,
            .store = store,
            .loginItem = login,
            .helper = &helper,
            .context = {.claudeCommand = "claude mcp add", .clientSnippet = "{\n}"},
            .main = *main,
            .work = *work,
            .turnHelper = [](bool, const Cancellation&) { return success(); },
            .installTool = [](const Cancellation&) { return std::string("Installed."); },
            .languageChanged =
                [this] {
                  speakLanguage(languageCode(defaults, "en_US.UTF-8", ""));
                  window.speakAnew();
                }};
  }
  ~SettingsWindowTests() override { setLocalization({}); }
  QWidget& open() {
    QApplication::setLayoutDirection(Qt::LeftToRight);
    window.show();
    settle();
    return *window.widget();
  }
  void settle() {
    time.run();
    QApplication::processEvents();
  }
  template <class W>
  W& named(const char* name) {
    for (auto* each : KitTests::all<W>(*window.widget()))
      if (each->accessibleName() == name && each->isVisible()) return *each;
    throw std::runtime_error(name);
  }
};

TEST_F(SettingsWindowTests, theKeyboardReachesEveryControlInTheOrderOfThePage) {
  auto& shown = open();
  std::vector<std::string> names;
  for (int i = 0; i < 20; ++i, KitTests::key(shown, Qt::Key_Tab)) {
    const auto name = shown.focusWidget()->accessibleName().toStdString();
    if (!names.empty() && names.front() == name) break;
    names.push_back(name);
  }
  EXPECT_THAT(names,
              ElementsAre("Icon only", "Open at login", "Show in the panel who is making a sound", "System",
                          "System", "°C", "Disable", "Install", "Copy: Add to Claude Code",
                          "Copy: Other MCP clients", "History", "An app keeps the CPU busy",
                          "An app keeps using more memory", "An app hammers the disk",
                          "An app uses a lot of network", "The disk is almost full", "Memory is running out",
                          "A Codex plan limit passes 80%", "Send a weekly report on Monday morning"));
}

TEST_F(SettingsWindowTests, controlsStoreAndGoBackWhereNothingCameOfIt) {
  auto& shown = open();
  named<Control>("Icon only").setFocus(Qt::TabFocusReason);
  KitTests::key(shown, Qt::Key_Right);
  settle();
  EXPECT_EQ(defaults.string("menuBarStyle"), "score");
  KitTests::click(named<Control>("Dark"));
  settle();
  EXPECT_EQ(defaults.string("appearance"), "dark");
  KitTests::click(named<Control>("°F"));
  settle();
  EXPECT_EQ(defaults.string("temperatureUnit"), "fahrenheit");
  auto& alert = named<Toggle>("Memory is running out");
  alert.press();
  settle();
  EXPECT_FALSE(defaults.boolean("alert.memoryPressure", true));

  auto& opensAtLogin = named<Toggle>("Open at login");
  opensAtLogin.press();
  settle();
  EXPECT_FALSE(opensAtLogin.isOn());
  EXPECT_TRUE(named<TextLabel>("The disk is full.").isVisible());

  defaults.readOnly = true;
  alert.press();
  settle();
  EXPECT_FALSE(alert.isOn());
  KitTests::click(named<Control>("Light"));
  settle();
  EXPECT_EQ(KitTests::all<Segments>(shown).front()->chosen(), 2u);
  EXPECT_TRUE(named<Banner>("The setting could not be stored.").isVisible());
}

TEST_F(SettingsWindowTests, outcomesStandBelowTheTool) {
  open();
  auto& install = named<Button>("Install");
  install.press();
  EXPECT_EQ(install.words(), "Installing…");
  settle();
  EXPECT_EQ(install.words(), "Install");
  EXPECT_TRUE(named<TextLabel>("Installed.").isVisible());
}

TEST_F(SettingsWindowTests, whatAgentsNeedIsCopied) {
  open();
  named<Button>("Copy: Add to Claude Code").press();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "claude mcp add");
  named<Button>("Copy: Other MCP clients").press();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "{\n}");
}

TEST_F(SettingsWindowTests, anotherLanguageIsSpokenAtOnceAndTheKeyboardStays) {
  setLanguages(languages("en"));
  auto& shown = open();
  shown.resize(shown.width(), 400);
  named<Button>("Install").press();
  auto& language = *KitTests::all<Segments>(shown)[1];
  language.takeFocus(Qt::TabFocusReason);
  settle();
  KitTests::all<ScrollArea>(shown).front()->scrollTo(50);
  KitTests::key(shown, Qt::Key_Left);
  settle();
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(defaults.string("language"), "de");
  EXPECT_EQ(shown.windowTitle(), "Einstellungen");
  EXPECT_TRUE(named<Toggle>("Bei der Anmeldung öffnen").isVisible());
  EXPECT_TRUE(named<Control>("Deutsch").hasFocus());
  EXPECT_TRUE(FocusRing::isShown(named<Control>("Deutsch")));
  EXPECT_EQ(KitTests::all<ScrollArea>(shown).front()->verticalScrollBar()->value(), 50);
  EXPECT_THROW(named<TextLabel>("Installed."), std::runtime_error) << "said in the other language";
  KitTests::key(shown, Qt::Key_Left);
  settle();
  EXPECT_EQ(shown.windowTitle(), "Settings");
}

TEST_F(SettingsWindowTests, thereIsOneWhichEscClosesAfterItsBanner) {
  auto& shown = open();
  EXPECT_EQ(&open(), &shown);
  defaults.readOnly = true;
  named<Toggle>("An app hammers the disk").press();
  settle();
  KitTests::key(shown, Qt::Key_Escape);
  EXPECT_TRUE(shown.isVisible());
  time.advance(Seconds{2});
  auto& banner = *KitTests::all<Banner>(shown).front();
  EXPECT_FALSE(banner.isVisible()) << "no cycle of the model tells it again";
  named<Toggle>("An app hammers the disk").press();
  settle();
  EXPECT_TRUE(banner.isVisible()) << "the next refusal does";
  KitTests::key(shown, Qt::Key_Escape);
  KitTests::key(shown, Qt::Key_Escape);
  EXPECT_FALSE(window.widget());
  EXPECT_EQ(closings, 1);
  time.advance(Seconds{2}); // a cycle of the model after it
  EXPECT_NE(&open(), nullptr);
}

TEST_F(SettingsWindowTests, itIsAsHighAsItsContentButNoHigherThanTheScreen) {
  auto& shown = open();
  EXPECT_EQ(shown.width(), 600);
  EXPECT_LT(shown.height(), shown.screen()->availableGeometry().height());
  EXPECT_GT(shown.maximumHeight(), 1000);
}

} // namespace
} // namespace korvell
