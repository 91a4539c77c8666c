// The settings, from made-up answers.

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Settings/SettingsView.h"

namespace korvell {

namespace {

std::string explanation() {
  return localized(
      "macOS hides the memory and CPU of processes owned by the system unless an administrator approves a "
      "helper. It is read-only: it can only report those numbers.");
}

SettingsPage usual() {
  const MenuBarFigures figures{87, 24, 63, {22, 31, 18, 26, 40, 58, 36, 24, 30, 22, 27, 34, 29, 24}};
  SettingsPage page;
  for (const auto& style : allCases<MenuBarStyle>())
    page.styles.push_back({title(style.value), MenuBarLabel::make(figures, style.value)});
  page.opensAtLogin = {.title = localized("Open at login"), .isOn = true};
  page.panelSound = {.title = localized("Show in the panel who is making a sound")};
  page.helper = {.explanation = explanation(),
                 .state = localized("Not enabled"),
                 .action = localized("Enable"),
                 .turnsOn = true};
  page.tool = {localized("Links korvell into ~/.local/bin so you can run korvell status in Terminal."),
               localized("Install"), ""};
  page.agents = {
      localized(
          "Agents can read the health score, top apps and dev servers, and quit apps or stop servers after "
          "asking you."),
      "claude mcp add korvell -- '/usr/bin/korvell' mcp",
      "{\n  \"mcpServers\": {\n    \"korvell\": {\n      \"command\": \"/usr/bin/korvell\",\n      "
      "\"args\": [\"mcp\"]\n    }\n  }\n}"};
  page.history = "~/.local/share/korvell/history.sqlite";
  page.ownCost = localized("{cpu} of one core, {memory}", {{"cpu", Format::figure(Unit::corePercent, 0.3)},
                                                           {"memory", Format::bytes(38.2e6)}});
  page.updates.automatically = {.title = localized("Automatically check for updates"),
                                .detail = localized("This copy is updated by your system's packages."),
                                .canChange = false};
  for (const auto& kind : allCases<HealthAlert::Kind>())
    page.alerts.push_back({.title = title(kind.value), .isOn = kind.value != HealthAlert::Kind::network});
  page.weeklyReport = {.title = localized("Send a weekly report on Monday morning"), .isOn = true};
  return page;
}

SettingsPage firstSeconds() {
  auto page = usual();
  for (auto& [name, label] : page.styles)
    if (label.text) label.text = "–";
  page.styles.back().label.drawing = MenuBarGraph::image({}, 0);
  page.opensAtLogin.canChange = page.opensAtLogin.isOn = false;
  page.helper = {};
  page.ownCost = "–";
  return page;
}

SettingsPage waitingForApproval() {
  auto page = usual();
  page.style = MenuBarStyle::graphs;
  page.helper = {.explanation = explanation(),
                 .state = localized("Waiting for approval in System Settings > Login Items"),
                 .action = localized("Disable"),
                 .approval = localized("Open Login Items")};
  page.tool.action = localized("Installing…");
  page.updates = {.automatically = {.title = localized("Automatically check for updates"), .isOn = true},
                  .check = localized("Check Now"),
                  .canCheck = true};
  return page;
}

SettingsPage withTroubles() {
  auto page = usual();
  page.trouble = localized("No setting can be stored at this moment.");
  page.advice = localized(
      "The settings in {file} can't be read: {reason}.",
      {{"file", "~/.config/korvell/settings.json"},
       {"reason", localized("line {line}, column {column} is no JSON", {{"line", "7"}, {"column", "3"}})}});
  page.style = MenuBarStyle::cpuAndMemory;
  page.opensAtLogin.isOn = false;
  page.opensAtLogin.trouble =
      localized("{path} can't be written.", {{"path", "~/.config/autostart/korvell.desktop"}});
  page.helper.trouble = localized("Nothing was changed: no administrator allowed it.");
  page.tool.outcome =
      localized("~/.local/bin/korvell already exists and is not a link. Remove it and try again.");
  return page;
}

SettingsPage unsignedCopy() {
  auto page = usual();
  page.style = MenuBarStyle::score;
  page.helper = {.explanation = localized(
                     "Needs a copy of Korvell signed with a Developer ID. Without one, anything that can "
                     "change the app could change what runs as administrator, so the helper stays "
                     "off.")};
  page.tool.outcome = localized(
      "Installed at ~/.local/bin/korvell, but ~/.local/bin is not on your PATH. Add {line} to {profile}.",
      {{"line", "export PATH=\"$HOME/.local/bin:$PATH\""}, {"profile", "~/.bashrc"}});
  return page;
}

/// As much longer as translations get.
std::string longer(const std::string& words) {
  return words.empty() ? words : words + " " + words.substr(0, (words.size() * 2 + 4) / 5);
}

constexpr LocalizedText longWords[] = {
    {"Menu bar", "Anzeige in der Menüleiste"},
    {"Icon only", "Nur das Symbol"},
    {"Health score", "Zustandswertung"},
    {"CPU and memory", "Prozessor, Speicher"},
    {"Mini graphs", "Kleine Diagramme"},
    {"Appearance", "Erscheinungsbild"},
    {"System", "Wie das System"},
    {"Light", "Helle Farben"},
    {"Dark", "Dunkle Farben"},
    {"System processes", "Prozesse, die dem System gehören"},
    {"Command line & agents", "Befehlszeile und Agenten"},
    {"Command line tool", "Werkzeug für die Befehlszeile"},
    {"Korvell itself", "Was Korvell selbst verbraucht"},
};

SettingsPage longTexts() {
  auto page = waitingForApproval();
  auto switches = std::vector{&page.opensAtLogin, &page.updates.automatically, &page.weeklyReport};
  for (auto& alert : page.alerts) switches.push_back(&alert);
  for (auto* each : switches) {
    each->title = longer(each->title);
    each->detail = longer(each->detail);
  }
  page.agents.claudeCommand =
      "claude mcp add korvell -- '/home/u/a-home/of-folders/within-folders/and-one-name-"
      "that-is-too-long-for-any-line-of-this-page/korvell' mcp";
  for (auto* words : {&page.agents.note, &page.helper.explanation, &page.helper.state, &page.helper.action,
                      &page.helper.approval, &page.tool.note, &page.tool.action, &page.ownCost})
    *words = longer(*words);
  page.history = "~/.var/a-home-with-a-very-long-name/of-folders/within-folders/.local/share/korvell/"
                 "history.sqlite";
  return page;
}

std::unique_ptr<QWidget> made(const Theme& theme, const SettingsPage& page) {
  auto view = std::make_unique<SettingsView>(theme, SettingsView::Handlers{}, nullptr);
  view->show(page);
  return view;
}

} // namespace

std::vector<GalleryView> settingsViews() {
  const auto view = [](std::string name, SettingsPage (*page)()) {
    return GalleryView{
        std::move(name), {QSize()}, [page](const Theme& theme) { return made(theme, page()); }};
  };
  std::vector<GalleryView> views = {view("settings", usual), view("settings-first-seconds", firstSeconds),
                                    view("settings-approval", waitingForApproval),
                                    view("settings-troubles", withTroubles),
                                    view("settings-unsigned", unsignedCopy)};
  views.push_back({"settings-long", {QSize()}, [](const Theme& theme) {
                     const std::vector<Language> before(installedLanguages().begin(),
                                                        installedLanguages().end());
                     setLocalization(longWords);
                     auto view = made(theme, longTexts());
                     setLanguages(before);
                     return view;
                   }});
  views.push_back({"settings-low", {QSize(SettingsView::naturalWidth, 480)}, [](const Theme& theme) {
                     return made(theme, usual());
                   }});
  return views;
}

} // namespace korvell
