// The page of the first launch, from made-up answers.

#include "Base/Localization.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/PageFrame.h"
#include "UI/Welcome/WelcomeView.h"

namespace korvell {

namespace {

SettingsPage fresh() {
  SettingsPage settings;
  settings.opensAtLogin = {.title = localized("Open at login")};
  settings.helper = {
      .explanation = localized("macOS hides the memory and CPU of processes owned by the system unless an "
                               "administrator approves a helper. It is read-only: it can only report those "
                               "numbers."),
      .state = localized("Not enabled"),
      .action = localized("Enable"),
      .turnsOn = true};
  settings.tool = {localized("Links korvell into ~/.local/bin so you can run korvell status in Terminal."),
                   localized("Install"), ""};
  settings.history = "~/.local/share/korvell/history.sqlite";
  return settings;
}

SettingsPage switchedOn() {
  auto settings = fresh();
  settings.opensAtLogin.isOn = true;
  settings.helper.state = localized("Enabled");
  settings.helper.action = localized("Disable");
  settings.tool.outcome = "Installed at ~/.local/bin/korvell.";
  return settings;
}

SettingsPage withTroubles() {
  auto settings = fresh();
  settings.opensAtLogin.trouble = "The file ~/.config/autostart/korvell.desktop could not be written.";
  settings.helper.trouble = localized("Nothing was changed: no administrator allowed it.");
  settings.tool.outcome =
      localized("~/.local/bin/korvell already exists and is not a link. Remove it and try again.");
  return settings;
}

std::unique_ptr<QWidget> made(const Theme& theme, const SettingsPage& settings) {
  auto* page = new WelcomeView(theme, {}, welcomePage(settings), nullptr);
  return std::make_unique<PageFrame>(theme, nullptr, page);
}

} // namespace

std::vector<GalleryView> welcomeViews() {
  const QSize usual(884, 760), narrow(664, 560);
  const auto view = [](std::string name, std::vector<QSize> sizes, SettingsPage (*settings)()) {
    return GalleryView{std::move(name), std::move(sizes),
                       [settings](const Theme& theme) { return made(theme, settings()); }};
  };
  return {view("welcome", {usual, narrow}, fresh), view("welcome-switched-on", {usual}, switchedOn),
          view("welcome-troubles", {usual}, withTroubles)};
}

} // namespace korvell
