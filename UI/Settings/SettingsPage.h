#pragma once
// What the settings show, as plain values.

#include "App/AppearanceChoice.h"
#include "App/LanguageChoice.h"
#include "App/MenuBarLabel.h"
#include "App/Model.h"
#include "App/TemperatureUnit.h"
#include "Core/Health/HealthAlert.h"
#include "Platform/Host.h"
#include "Platform/Updater.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct SettingsPage {
  /// A style of the menu bar's item as it would look now.
  struct Style {
    std::string title;
    MenuBarLabel label;
    bool operator==(const Style&) const = default;
  };
  struct Switch {
    std::string title, detail;
    bool isOn = false;
    bool canChange = true;
    std::string trouble; ///< why it could not be switched; empty otherwise
    bool operator==(const Switch&) const = default;
  };
  /// The privileged helper. Empty words: there is no such line or button.
  struct Helper {
    std::string explanation, state;
    std::string action, approval; ///< the buttons' words
    bool turnsOn = false;         ///< what the action does
    std::string trouble;
    bool operator==(const Helper&) const = default;
  };
  struct Tool {
    std::string note, action, outcome;
    bool operator==(const Tool&) const = default;
  };

  /// For agents: texts to copy.
  struct Agents {
    std::string note, claudeCommand, clientSnippet;
    bool operator==(const Agents&) const = default;
  };

  std::string trouble, advice; ///< what is wrong with the settings as a whole; empty while all is well
  int refusals = 0;            ///< changes that were not stored: each is told, also after a dismissal
  std::vector<Style> styles;   ///< in the order of MenuBarStyle
  MenuBarStyle style = MenuBarStyle::icon;
  Switch opensAtLogin;
  Switch panelSound;
  AppearanceChoice appearance = AppearanceChoice::system;
  LanguageChoice language = LanguageChoice::system;
  TemperatureUnit temperatures = TemperatureUnit::celsius;
  Helper helper;
  Tool tool;
  Agents agents;
  std::string history; ///< the file, "~" for the home folder
  std::string ownCost; ///< "0.3% of one core, 38.2 MB"
  /// Of this program itself.
  struct Updates {
    Switch automatically;
    std::string check; ///< the button's words; empty where nothing can be checked
    bool canCheck = false;
    bool operator==(const Updates&) const = default;
  };
  Updates updates;
  std::vector<Switch> alerts; ///< in the order of HealthAlert::Kind
  Switch weeklyReport;

  bool operator==(const SettingsPage&) const = default;
};

/// What asking takes too long for every look at the page, and what came of the user's last wishes.
struct SettingsAnswers {
  struct Helper {
    UsageHelperStatus status = UsageHelperStatus::notEnabled;
    std::string explanation;
    bool lacksSignature = false;
    bool operator==(const Helper&) const = default;
  };

  std::optional<bool> opensAtLogin; ///< absent until it is known
  std::optional<Helper> helper;     ///< absent until it is known
  bool isTurningHelper = false, isInstalling = false;
  std::string loginTrouble, helperTrouble, toolOutcome;
  bool couldNotStore = false; ///< the last change
  int refusals = 0;           ///< changes that could not be stored so far
};

struct SettingsContext {
  SystemKind system = SystemKind::linuxDesktop;
  std::string home, historyPath;
  ProcessID self = 0; ///< the process whose cost is Korvell's own
  std::string claudeCommand, clientSnippet;
  const Updater* updater = nullptr; ///< null where none is configured
  bool isPackaged = false;          ///< what lies where packages install is updated with the system
};

SettingsPage settingsPage(const Model& model, const UserDefaults& defaults, const SettingsContext& context,
                          const SettingsAnswers& answers);

} // namespace korvell
