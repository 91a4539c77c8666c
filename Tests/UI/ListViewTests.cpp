#include "Core/Health/SeenAlerts.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Gallery/ListModel.h"
#include "UI/Kit/Switches.h"
#include "UI/Kit/Text.h"
#include "UI/Servers/ServersView.h"
#include "UI/Startup/StartupView.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ListViewTests : KitTests {
  ListModel model;
  std::vector<ActionRequest> asked;
  std::function<void(const ActionRequest&)> ask = [this](const ActionRequest& request) {
    asked.push_back(request);
  };

  static Button* button(const QWidget& page, std::string_view name) {
    for (auto* each : all<Button>(page))
      if (each->isVisibleTo(&page) && each->accessibleName() == text(name)) return each;
    return nullptr;
  }
};

TEST_F(ListViewTests, aServerIsStoppedByTheRowThatHasTheFocus) {
  const auto vite = [&](const char* project, int port, double megabytes) {
    return DevProject{project,
                      {model.server("vite", project, "/home/u", "node", {port}, megabytes, 0, {45})}};
  };
  model.projects.set({vite("a", 3001, 20), vite("b", 3002, 10)});
  std::string opened;
  ServersView page({.model = model,
                    .theme = theme,
                    .home = "/home/u",
                    .ask = ask,
                    .openAddress = [&](const std::string& address) { opened = address; },
                    .showFolder = {}},
                   nullptr);
  page.resize(884, 700);
  show(page);
  button(page, "Stop All Idle…")->press();
  EXPECT_THAT(asked, ElementsAre(StopIdleServersRequest{}));
  page.setFocus(Qt::TabFocusReason);
  key(page, Qt::Key_Down);
  key(page, Qt::Key_Down);
  // The other project uses more now; what the next key would hit stays where it is.
  model.projects.set({vite("b", 3002, 30), vite("a", 3001, 20)});
  model.tick();
  key(page, Qt::Key_Delete);
  EXPECT_EQ(asked.back(), ActionRequest(StopServerRequest{3002, (*model.projects)[0].servers[0].startedAt}));
  key(page, Qt::Key_Up);
  key(page, Qt::Key_Space);
  EXPECT_EQ(std::get<StopServerRequest>(asked.back()).pid, 3001);
  for (auto* port : all<PortButton>(page))
    if (port->isVisible()) port->press();
  EXPECT_EQ(opened, "http://localhost:3002");
  model.projects.set({});
  model.tick();
  EXPECT_EQ(button(page, "Stop All Idle…"), nullptr);
}

TEST_F(ListViewTests, everyPortOfAServerCanBeReached) {
  model.projects.set(
      {{"a", {model.server("beam", "a", "/home/u/a", "beam", {1, 2, 3, 4}, 1, 0, {.idle = 0})}}});
  ServersView page(
      {.model = model, .theme = theme, .home = "", .ask = ask, .openAddress = {}, .showFolder = {}}, nullptr);
  const auto visible = [&](int width) {
    page.resize(width, 500);
    show(page);
    std::vector<std::string> names;
    for (auto* port : all<PortButton>(page))
      if (port->isVisible()) names.push_back(utf8(port->accessibleName()));
    std::ranges::sort(names);
    return names;
  };
  EXPECT_THAT(visible(884), ElementsAre("2 more ports", "Open port 1 of beam", "Open port 2 of beam"));
  EXPECT_THAT(visible(660), ElementsAre("3 more ports", "Open port 1 of beam"));
}

TEST_F(ListViewTests, onlyALeftoverIsRemoved) {
  const StartupItem gone{.label = "gone", .plistPath = "/p/g", .program = "/gone", .isLeftover = true};
  model.startupItems.set({gone, {.label = "kept", .plistPath = "/p/k", .program = "/kept"}});
  StartupView page({.model = model, .theme = theme, .ask = ask, .showFile = {}}, nullptr);
  page.resize(884, 700);
  show(page);
  page.refresh();
  EXPECT_THAT(asked, ElementsAre(RescanStartupItemsRequest{}));
  page.setFocus(Qt::TabFocusReason);
  key(page, Qt::Key_Down);
  key(page, Qt::Key_Delete);
  EXPECT_EQ(asked.back(), ActionRequest(RemoveStartupItemRequest{"/p/g", "gone", "/gone"}));
  asked.clear();
  key(page, Qt::Key_Down);
  key(page, Qt::Key_Delete);
  EXPECT_THAT(asked, IsEmpty());
  // The same row shows another item once the leftover is gone.
  model.startupItems.set({{.label = "kept", .plistPath = "/p/k", .program = "/kept"}});
  model.tick();
  page.setFocus(Qt::TabFocusReason);
  key(page, Qt::Key_Up);
  key(page, Qt::Key_Delete);
  EXPECT_THAT(asked, IsEmpty());
  EXPECT_EQ(button(page, "Remove gone…"), nullptr);
}

struct AlertsViewTests : ListViewTests {
  std::vector<std::string> followed;
  int seen = 0;

  std::unique_ptr<AlertsView> open() {
    auto page = std::make_unique<AlertsView>(
        AlertsView::Services{.model = model,
                             .theme = theme,
                             .zone = model.zone,
                             .defaults = model.defaults,
                             .sections = {SidebarItem::cpu, SidebarItem::storage},
                             .ask = ask,
                             .open = [this](SidebarItem item) { followed.push_back(title(item)); },
                             .showMoment =
                                 [this](SidebarItem item, Date date) {
                                   followed.push_back(title(item) + " " + clockText(model.zone, date));
                                 },
                             .see =
                                 [this] {
                                   if (markSeen(*model.alerts, model.defaults, model.now)) ++seen;
                                 }},
        nullptr);
    page->resize(884, 700);
    return page;
  }
  void raise(HealthAlert::Kind kind, const char* date) {
    auto alerts = *model.alerts;
    alerts.insert(alerts.begin(), model.alert(kind, "Title", "Detail.", date));
    model.alerts.set(alerts);
    model.tick();
  }
  std::size_t unseen() const { return newAlerts(*model.alerts, model.defaults, model.now); }
  static std::string summary(AlertsView& page) {
    return utf8(dynamic_cast<TextLabel&>(*page.control()).words());
  }
};

TEST_F(AlertsViewTests, anAlertIsNewUntilItWasShownAndMarkedAsLongAsThePageIsOpen) {
  raise(HealthAlert::Kind::cpu, "2026-11-19T13:58:00Z");
  auto page = open();
  EXPECT_EQ(unseen(), 1u) << "nobody has looked yet";
  show(*page);
  EXPECT_EQ(unseen(), 0u);
  EXPECT_EQ(seen, 1);
  model.tick();
  EXPECT_EQ(summary(*page), "1 new");
  raise(HealthAlert::Kind::disk, "2026-11-19T15:00:00Z");
  EXPECT_EQ(summary(*page), "2 new");
  EXPECT_EQ(unseen(), 0u);
  page->hide();
  raise(HealthAlert::Kind::disk, "2026-11-19T15:01:00Z");
  EXPECT_EQ(unseen(), 1u) << "it was raised behind the user's back";
  model.defaults.readOnly = true;
  show(*page);
  EXPECT_EQ(seen, 2) << "what could not be stored was not seen";
  model.defaults.readOnly = false;
  page = open();
  EXPECT_EQ(summary(*page), "1 new");
}

TEST_F(AlertsViewTests, aButtonLeadsToTheMomentOrThePage) {
  raise(HealthAlert::Kind::network, "2026-11-19T10:00:00Z");
  raise(HealthAlert::Kind::diskSpace, "2026-11-19T11:00:00Z");
  raise(HealthAlert::Kind::cpu, "2026-11-19T13:58:00Z");
  auto page = open();
  show(*page);
  button(*page, "Show CPU at 13:58")->press();
  button(*page, "Free Up Space")->press();
  EXPECT_THAT(followed, ElementsAre("CPU 13:58", "Free Up Space"));
  for (auto* each : all<Button>(*page))
    if (each->isVisible()) followed.push_back(utf8(each->words()));
  EXPECT_EQ(followed.size(), 4u) << "there is no page of the third";
}

TEST_F(AlertsViewTests, aSwitchAsksAndShowsWhatIsKept) {
  auto page = open();
  show(*page);
  const auto toggles = all<Toggle>(*page);
  ASSERT_EQ(toggles.size(), 8u);
  toggles[3]->press();
  toggles[7]->press();
  EXPECT_THAT(asked, ElementsAre(SwitchAlertsRequest{HealthAlert::Kind::network, false},
                                 ChangeSettingRequest{"weeklyReport.enabled", false}));
  EXPECT_FALSE(toggles[3]->isOn());
  model.tick(); // it was not stored
  EXPECT_TRUE(toggles[3]->isOn());
  EXPECT_TRUE(toggles[7]->isOn());
}

} // namespace
} // namespace korvell
