#pragma once
// What the window shows at the first launch, as plain values: what the mark in the menu bar means, what may
// be switched on, and what never leaves the machine. Whoever goes on without switching anything on misses
// nothing of the rest.

#include "UI/Settings/SettingsPage.h"

#include <string>
#include <vector>

namespace korvell {

struct WelcomePage {
  /// A form of the item as the tray shows it.
  struct Mark {
    MenuBarLabel label;
    std::string title, meaning;
    bool operator==(const Mark&) const = default;
  };

  std::string title, lead;
  std::string marksTitle, marksNote;
  std::vector<Mark> marks;
  std::string choicesTitle, choicesNote;
  SettingsPage::Switch opensAtLogin;
  SettingsPage::Helper helper;
  std::string helperTitle;
  SettingsPage::Tool tool;
  std::string toolTitle;
  std::string privacyTitle;
  std::vector<std::string> privacy; ///< a sentence or two each
  std::string start, skip;          ///< the buttons

  bool operator==(const WelcomePage&) const = default;
};

/// Of what the settings know.
WelcomePage welcomePage(const SettingsPage& settings);

} // namespace korvell
