#include "Core/Health/SeenAlerts.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Gallery/ListModel.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Switches.h"
#include "UI/Kit/Text.h"
#include "UI/Servers/ServersView.h"
#include "UI/Startup/StartupView.h"

#include <QContextMenuEvent>

#include <algorithm>

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
  static Control* control(const QWidget& page, std::string_view name) {
    for (auto* each : all<Control>(page))
      if (each->isVisible() && each->accessibleName() == text(name)) return each;
    return nullptr;
  }
  /// What Tab comes to in a page, from its first stop on.
  static std::vector<std::string> stops(QWidget& page) {
    std::vector<std::string> names;
    for (auto* at = page.nextInFocusChain(); at != &page; at = at->nextInFocusChain())
      if ((at->focusPolicy() & Qt::TabFocus) && at->isVisible())
        names.push_back(QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name).toStdString());
    return names;
  }
  static std::string focused(const QWidget& page) {
    auto* widget = page.focusWidget();
    return widget ? QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).toStdString() : "";
  }
  /// The menu that the Menu key opens, and what it says.
  static std::pair<Menu*, std::vector<std::string>> menuOf(QWidget& page) {
    auto* at = page.focusWidget();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {2, 2}, at->mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(at, &event);
    std::vector<std::string> words;
    const auto menus = all<Menu>(page);
    if (menus.empty()) return {};
    for (auto* action : menus.back()->actions())
      if (!action->isSeparator()) words.push_back(utf8(action->text()));
    return {menus.back(), words};
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

TEST_F(ListViewTests, aServerKeepsItsRowWhoeverComesOrGoes) {
  const auto at = [&](int port) {
    return model.server("s" + std::to_string(port), "a", "/home/u/a", "node", {port}, 1, 0, {.idle = 0});
  };
  const auto put = [&](std::vector<DevServer> servers) {
    model.projects.set({{"a", std::move(servers)}});
    model.tick();
    QApplication::processEvents(); // laid out
  };
  std::string shown;
  ServersView page({.model = model,
                    .theme = theme,
                    .home = "/home/u",
                    .ask = ask,
                    .openAddress = [&](const std::string& address) { shown = address; },
                    .showFolder = [&](const std::string& folder) { shown = folder; }},
                   nullptr);
  page.resize(884, 700);
  show(page);
  put({at(2), at(4), at(5)});
  button(page, "Stop s4…")->setFocus(Qt::TabFocusReason);
  auto* held = button(page, "Stop s5…");
  mouse(*held, QEvent::MouseButtonPress, {5, 5});
  put({at(1), at(2), at(4), at(5)});
  mouse(*held, QEvent::MouseButtonRelease, {5, 5});
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(std::get<StopServerRequest>(asked.back()).pid, 5) << "whose button was pressed";
  put({at(1), at(3), at(4), at(5)});
  key(page, Qt::Key_Delete);
  EXPECT_EQ(std::get<StopServerRequest>(asked.back()).pid, 4);
  EXPECT_THAT(stops(page),
              ElementsAre("More for a", "Open port 1 of s1", "Stop s1…", "Open port 3 of s3", "Stop s3…",
                          "Open port 4 of s4", "Stop s4…", "Open port 5 of s5", "Stop s5…"));
  const auto [menu, words] = menuOf(page);
  EXPECT_THAT(words, ElementsAre("Stop…", "Open port 4 of s4", "Show Folder in Finder"));
  menu->actions().back()->trigger();
  EXPECT_EQ(shown, "/home/u/a");
  menu->close();

  put({at(1), at(3), at(5)});
  EXPECT_EQ(focused(page), "Stop s5…") << "the next one";
  put({at(1), at(3)});
  EXPECT_EQ(focused(page), "Stop s3…") << "there is none below";
  auto again = at(3);
  again.startedAt = model.now;
  put({at(1), again});
  EXPECT_EQ(focused(page), "Stop s1…") << "another process that has the same id";

  // A port's button is the port's too.
  auto wide = at(1);
  wide.ports = {1, 80};
  put({wide});
  auto* port = control(page, "Open port 80 of s1");
  ASSERT_TRUE(port);
  mouse(*port, QEvent::MouseButtonPress, {5, 5});
  wide.ports = {80, 443};
  put({wide});
  mouse(*port, QEvent::MouseButtonRelease, {5, 5});
  EXPECT_EQ(shown, "http://localhost:80");
  EXPECT_THAT(stops(page),
              ElementsAre("More for a", "Open port 80 of s1", "Open port 443 of s1", "Stop s1…"));
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
  model.startupItems.set({{.label = "kept", .plistPath = "/p/k", .program = "/kept"}});
  model.tick();
  page.setFocus(Qt::TabFocusReason);
  key(page, Qt::Key_Up);
  key(page, Qt::Key_Delete);
  EXPECT_THAT(asked, IsEmpty());
  EXPECT_EQ(button(page, "Remove gone…"), nullptr);
}

struct StartupViewTests : ListViewTests {
  std::string file;
  StartupView page{{.model = model,
                    .theme = theme,
                    .ask = ask,
                    .showFile = [this](const std::string& path) { file = path; }},
                   nullptr};

  StartupViewTests() {
    page.resize(884, 700);
    show(page);
  }
  bool isShown(std::string_view words) const {
    const auto labels = all<TextLabel>(page);
    return std::ranges::any_of(
        labels, [&](const TextLabel* label) { return label->isVisible() && label->words() == text(words); });
  }
  static StartupItem item(const std::string& name, LaunchScope scope, bool isLeftover = false) {
    return {.label = name,
            .plistPath = "/etc/" + name,
            .program = "/usr/bin/" + name,
            .scope = scope,
            .isLeftover = isLeftover};
  }
  void put(std::vector<StartupItem> items) {
    model.startupItems.set(std::move(items));
    model.tick();
  }
};

TEST_F(StartupViewTests, anItemKeepsItsRowAlsoAmongTheLeftovers) {
  using enum LaunchScope;
  put({item("b", user), item("c", user), item("s", system)});
  control(page, "More for c")->setFocus(Qt::TabFocusReason);
  put({item("a", user), item("b", user), item("c", user, true), item("s", system)});
  EXPECT_EQ(focused(page), "More for c");
  EXPECT_THAT(stops(page),
              ElementsAre("Filter", "Remove c…", "More for c", "More for a", "More for b", "More for s"));
  key(page, Qt::Key_Delete);
  EXPECT_EQ(asked.back(), ActionRequest(RemoveStartupItemRequest{"/etc/c", "c", "/usr/bin/c"}));
  const auto [menu, words] = menuOf(page);
  EXPECT_THAT(words, ElementsAre("Remove…", "Show File in Finder", "Copy"));
  menu->actions()[2]->trigger();
  EXPECT_EQ(file, "/etc/c");
  menu->close();
  put({item("a", user), item("b", user), item("s", system)});
  EXPECT_EQ(focused(page), "More for a");
  // Two entries of one name and file are two rows.
  put({item("a", user), item("a", user)});
  put({item("a", user), item("a", user), item("b", user)});
  EXPECT_THAT(stops(page), ElementsAre("Filter", "More for a", "More for a", "More for b"));
}

TEST_F(StartupViewTests, theFilterLeavesWhatHasTheWordsInItsNameOrPath) {
  using enum LaunchScope;
  page.find();
  EXPECT_EQ(focused(page), "") << "there is nothing to be filtered";
  put({item("backup", user), item("sync", user, true), item("sound", system)});
  page.find();
  auto* field = all<TextField>(page).front();
  ASSERT_TRUE(field->hasFocus());
  field->setText("BIN/S");
  EXPECT_THAT(stops(page), ElementsAre("Filter", "Remove sync…", "More for sync", "More for sound"));
  EXPECT_TRUE(field->hasFocus());
  field->setText("nothing");
  EXPECT_THAT(stops(page), ElementsAre("Filter"));
  EXPECT_TRUE(isShown("No item has that in its name or path."));
  put({item("nothing", user)});
  EXPECT_THAT(stops(page), ElementsAre("Filter", "More for nothing")) << "what comes is filtered too";
  put({item("backup", user)});
  key(page, Qt::Key_Escape);
  EXPECT_EQ(field->text(), "");
  EXPECT_THAT(stops(page), ElementsAre("Filter", "More for backup"));
  EXPECT_FALSE(isShown("No item has that in its name or path."));
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

TEST_F(AlertsViewTests, anAlertKeepsItsRowWhenOthersAreRaised) {
  raise(HealthAlert::Kind::cpu, "2026-11-19T09:58:00Z");
  raise(HealthAlert::Kind::diskSpace, "2026-11-19T10:00:00Z");
  auto page = open();
  page->setFocusPolicy(Qt::TabFocus); // as something comes before it in a window
  show(*page);
  auto* lead = button(*page, "Show CPU at 09:58");
  lead->setFocus(Qt::TabFocusReason);
  mouse(*lead, QEvent::MouseButtonPress, {5, 5});
  raise(HealthAlert::Kind::diskSpace, "2026-11-19T11:00:00Z");
  raise(HealthAlert::Kind::cpu, "2026-11-19T12:00:00Z");
  mouse(*lead, QEvent::MouseButtonRelease, {5, 5});
  key(*page, Qt::Key_Space);
  EXPECT_THAT(followed, ElementsAre("CPU 09:58", "CPU 09:58"));
  auto first = stops(*page);
  first.resize(5); // the switches come behind
  EXPECT_THAT(first, ElementsAre("Show CPU at 12:00", "Free Up Space", "Free Up Space", "Show CPU at 09:58",
                                 "An app keeps the CPU busy"));
  const auto [menu, words] = menuOf(*page);
  EXPECT_THAT(words, ElementsAre("Show CPU at 09:58", "Copy"));
  menu->actions().front()->trigger();
  EXPECT_EQ(followed.size(), 3u);
  menu->close();
  auto alerts = *model.alerts;
  alerts.pop_back();
  model.alerts.set(alerts);
  model.tick();
  EXPECT_EQ(focused(*page), "Free Up Space");
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
