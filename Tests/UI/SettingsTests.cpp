#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeUsageHelper.h"
#include "UI/Settings/SettingsEditor.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct FakeLoginItem final : LoginItem {
  bool enabled = false;
  std::optional<Failure> failure;

  bool isEnabled() const override { return enabled; }
  Outcome setEnabled(bool on) override {
    if (failure) return *failure;
    enabled = on;
    return success();
  }
};

struct FakeUpdater final : Updater {
  bool automatic = true, isChecking = false;
  int checks = 0;
  Task changed;

  bool automaticallyChecks() const override { return automatic; }
  void setAutomaticallyChecks(bool on) override { automatic = on; }
  bool canCheck() const override { return !isChecking; }
  void check() override {
    ++checks;
    isChecking = true;
  }
  void onChange(Task told) override { changed = std::move(told); }
};

struct SettingsTests : AppFixture {
  FakeLoginItem login;
  FakeUsageHelper helper;
  std::unique_ptr<Queue> work = time.makeQueue("Korvell.desktop");
  SettingsStore store{defaults, *main, time.factory()};
  FakeUpdater* updater = nullptr;
  bool isPackaged = false;
  std::vector<std::string> told;
  int changes = 0;
  std::optional<SettingsEditor> editor;

  SettingsTests() { helper.current = UsageHelperStatus::notEnabled; }

  SettingsEditor& open(UsageHelperService* service, SystemKind system = SystemKind::linuxDesktop) {
    editor.emplace(
        SettingsEditor::Services{
            .model = *model,
            .defaults = defaults,
            .store = store,
            .loginItem = login,
            .helper = service,
            .updater = updater,
            .context = {.system = system,
                        .home = "/home/u",
                        .historyPath = "/home/u/.local/share/korvell/history.sqlite",
                        .self = 42,
                        .isPackaged = isPackaged},
            .main = *main,
            .work = *work,
            .turnHelper = [this](bool on,
                                 const Cancellation&) { return on ? helper.enable() : helper.disable(); },
            .installTool =
                [this](const Cancellation&) {
                  told.push_back("install");
                  return std::string("Installed.");
                },
            .helperChanged = [this] { told.push_back("helper"); },
            .styleChanged = [this] { told.push_back("style"); },
            .appearanceChanged = [this] { told.push_back("appearance"); },
            .temperaturesChanged = [this] { told.push_back("temperatures"); }},
        [this] { ++changes; });
    return *editor;
  }
  SettingsEditor& opened() {
    auto& made = open(&helper);
    time.run();
    return made;
  }
};

TEST_F(SettingsTests, changesAreStoredAtOnceUnderTheKeysThatAreReadElsewhere) {
  auto& it = opened();
  EXPECT_TRUE(it.page().alerts[1].isOn) << "what was never set is on";
  EXPECT_TRUE(it.page().weeklyReport.isOn);
  it.setStyle(MenuBarStyle::graphs);
  it.setAppearance(AppearanceChoice::dark);
  it.setLanguage(LanguageChoice::german);
  it.setTemperatures(TemperatureUnit::fahrenheit);
  it.setAlerts(HealthAlert::Kind::memoryGrowth, false);
  it.setWeeklyReport(false);
  time.run();
  EXPECT_EQ(defaults.string("menuBarStyle"), "graphs");
  EXPECT_EQ(defaults.string("appearance"), "dark");
  EXPECT_EQ(defaults.string("language"), "de");
  EXPECT_EQ(defaults.string("temperatureUnit"), "fahrenheit");
  EXPECT_FALSE(defaults.boolean("alert.memoryGrowth", true));
  EXPECT_FALSE(defaults.boolean("weeklyReport.enabled", true));
  EXPECT_THAT(told, ElementsAre("style", "appearance", "temperatures"));
  const auto page = it.page();
  EXPECT_EQ(page.style, MenuBarStyle::graphs);
  EXPECT_EQ(page.appearance, AppearanceChoice::dark);
  EXPECT_EQ(page.language, LanguageChoice::german);
  EXPECT_EQ(page.temperatures, TemperatureUnit::fahrenheit);
  EXPECT_FALSE(page.alerts[1].isOn);
  EXPECT_TRUE(page.alerts[0].isOn);
  EXPECT_FALSE(page.weeklyReport.isOn);
}

TEST_F(SettingsTests, whatCannotBeStoredIsSaidAndStaysAsItWas) {
  auto& it = opened();
  defaults.readOnly = true;
  const int before = changes;
  it.setStyle(MenuBarStyle::score);
  time.run();
  EXPECT_GT(changes, before) << "the control has to go back";
  EXPECT_EQ(it.page().style, MenuBarStyle::icon);
  EXPECT_EQ(it.page().trouble, "The setting could not be stored.");
  EXPECT_THAT(told, IsEmpty());

  defaults.fault = "Line 3 is no JSON.";
  EXPECT_EQ(it.page().advice, "Line 3 is no JSON.");
  defaults.fault.reset();
  defaults.readOnly = false;
  it.setAlerts(HealthAlert::Kind::cpu, false);
  time.run();
  EXPECT_EQ(it.page().trouble, "");
}

TEST_F(SettingsTests, updatesAreOfferedWhereSomethingLooksForThem) {
  EXPECT_EQ(opened().page().updates.check, "");
  EXPECT_EQ(editor->page().updates.automatically.detail, "This copy of Korvell has no updater.");
  isPackaged = true;
  EXPECT_EQ(opened().page().updates.automatically.detail, "This copy is updated by your system's packages.");
  FakeUpdater there;
  updater = &there;
  auto& it = opened();
  EXPECT_EQ(
      it.page().updates,
      (SettingsPage::Updates{{.title = "Automatically check for updates", .isOn = true}, "Check Now", true}));
  it.setAutomaticallyChecks(false);
  EXPECT_FALSE(it.page().updates.automatically.isOn);
  it.checkForUpdates();
  it.checkForUpdates();
  EXPECT_EQ(there.checks, 1) << "one check at a time";
  EXPECT_FALSE(it.page().updates.canCheck);
  there.isChecking = false;
  const int before = changes;
  there.changed();
  EXPECT_EQ(changes, before + 1);
  editor.reset();
  EXPECT_FALSE(there.changed) << "an updater outlives the page";
}

TEST_F(SettingsTests, theLoginItemIsAskedAsideAndARefusalIsToldInItsPlace) {
  auto& it = open(&helper);
  EXPECT_FALSE(it.page().opensAtLogin.canChange) << "unknown until the answer is there";
  time.run();
  EXPECT_TRUE(it.page().opensAtLogin.canChange);
  it.setOpensAtLogin(true);
  EXPECT_FALSE(login.enabled) << "not on the main queue";
  EXPECT_TRUE(it.page().opensAtLogin.isOn);
  it.setOpensAtLogin(false); // while the first wish is under way
  time.run();
  EXPECT_TRUE(login.enabled);
  EXPECT_TRUE(it.page().opensAtLogin.isOn);

  login.failure = Failure{"Read-only."};
  it.setOpensAtLogin(false);
  time.run();
  EXPECT_TRUE(it.page().opensAtLogin.isOn) << "as it is";
  EXPECT_EQ(it.page().opensAtLogin.trouble, "Read-only.");
  login.enabled = false; // by the desktop's own settings
  it.refresh();
  time.run();
  EXPECT_FALSE(it.page().opensAtLogin.isOn);
}

TEST_F(SettingsTests, theHelperIsTurnedAndAskedAnew) {
  auto& it = opened();
  EXPECT_EQ(it.page().helper.state, "Not enabled");
  EXPECT_TRUE(it.page().helper.turnsOn);
  it.turnHelper(true);
  it.turnHelper(true);
  EXPECT_EQ(it.page().helper.action, "One moment…");
  time.run();
  EXPECT_EQ(it.page().helper.state, "Enabled");
  EXPECT_EQ(it.page().helper.action, "Disable");
  EXPECT_THAT(told, ElementsAre("helper")) << "once, and the sampler's client hears of it";

  helper.failure = Failure{"Busy."};
  it.turnHelper(false);
  time.run();
  EXPECT_EQ(it.page().helper.trouble, "Busy.");
  EXPECT_EQ(it.page().helper.state, "Enabled");
}

TEST_F(SettingsTests, eachStatusOfTheHelperOffersWhatItAllows) {
  const struct {
    UsageHelperStatus status;
    const char *action, *approval;
  } rows[] = {{UsageHelperStatus::notEnabled, "Enable", ""},
              {UsageHelperStatus::enabled, "Disable", ""},
              {UsageHelperStatus::requiresApproval, "Disable", "Open Login Items"},
              {UsageHelperStatus::notFound, "", ""},
              {UsageHelperStatus::notPermitted, "Disable", ""}};
  for (const auto& row : rows) {
    helper.current = row.status;
    const auto part = opened().page().helper;
    EXPECT_EQ(part.action, row.action) << title(row.status);
    EXPECT_EQ(part.approval, row.approval) << title(row.status);
    EXPECT_THAT(part.explanation, HasSubstr("read-only"));
  }
  auto& without = open(nullptr);
  time.run();
  EXPECT_EQ(without.page().helper.state, "Helper missing from this copy of Korvell");

  helper.offered = false;
  auto& onMac = open(&helper, SystemKind::macOS);
  time.run();
  EXPECT_THAT(onMac.page().helper.explanation, HasSubstr("Developer ID"));
  EXPECT_EQ(onMac.page().helper.state + onMac.page().helper.action, "");
}

TEST_F(SettingsTests, theToolIsInstalledOnceAtATime) {
  auto& it = opened();
  it.installTool();
  it.installTool();
  EXPECT_EQ(it.page().tool.action, "Installing…");
  EXPECT_THAT(told, IsEmpty()) << "not on the main queue";
  time.run();
  EXPECT_THAT(told, ElementsAre("install"));
  EXPECT_EQ(it.page().tool.action, "Install");
  EXPECT_EQ(it.page().tool.outcome, "Installed.");
}

TEST_F(SettingsTests, anAnswerAfterTheEndIsDropped) {
  auto& it = opened();
  it.installTool();
  const int before = changes;
  editor.reset();
  time.run();
  EXPECT_EQ(changes, before);
}

TEST_F(SettingsTests, thePageShowsWhatWasMeasured) {
  auto& it = opened();
  auto page = it.page();
  EXPECT_EQ(page.styles[0].label.symbol, MenuBarLabel::Symbol::heart) << "a score of 0 is none";
  EXPECT_EQ(page.styles[1].label.text, "–");
  EXPECT_EQ(page.ownCost, "–");
  EXPECT_EQ(page.history, "~/.local/share/korvell/history.sqlite");
  EXPECT_FALSE(page.updates.automatically.canChange);

  SystemSnapshot snapshot;
  snapshot.cpu.total = 24.9;
  snapshot.memory = {.total = 100, .app = 63};
  snapshot.apps = {
      {.id = "k", .processes = {{.pid = 7, .cpu = 90}, {.pid = 42, .cpu = 0.26, .memory = 40'055'603}}}};
  LiveSeries live;
  for (int i = 0; i < 20; ++i) live[Metric::cpu].push_back({Date{double(i)}, double(i)});
  model->snapshot.set(snapshot);
  model->live.set(live);
  model->report.set({.score = 74, .insights = {}});
  model->hasSample.set(true);
  page = it.page();
  EXPECT_EQ(page.ownCost, "0.3% of one core, 38.2 MB");
  EXPECT_EQ(page.styles[0].label.symbol, MenuBarLabel::Symbol::filledHeart);
  EXPECT_EQ(page.styles[1].label.text, "74");
  EXPECT_EQ(page.styles[2].label.text, "24% · 63%") << "whatever style is chosen";
  EXPECT_EQ(page.styles[3].label.drawing,
            MenuBarGraph::image({6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19}, 0.63));
}

} // namespace
} // namespace korvell
