#include "UI/Welcome/WelcomePage.h"

#include "Base/Localization.h"

namespace korvell {

namespace {

std::vector<WelcomePage::Mark> marks() {
  return {{{.symbol = MenuBarLabel::Symbol::heart},
           localized("An outlined heart"),
           localized("All is well, or nothing that cannot wait.")},
          {{.symbol = MenuBarLabel::Symbol::filledHeart},
           localized("A filled heart"),
           localized("The score has fallen below {score}. One click tells why.",
                     {{"score", std::to_string(MenuBarLabel::attentionBelow)}})}};
}

std::vector<std::string> privacy(const std::string& history) {
  const auto slash = history.rfind('/');
  const auto folder = history.substr(0, slash == std::string::npos ? history.size() : slash);
  return {localized("Korvell sends nothing: no account, no statistics, no connection of its own."),
          localized("What it measures and records stays in {folder}, readable by you alone.",
                    {{"folder", folder}}),
          localized("Agents and scrapers read it on this machine, and only after you have set one up.")};
}

} // namespace

WelcomePage welcomePage(const SettingsPage& settings) {
  WelcomePage page{
      .title = localized("Welcome to Korvell"),
      .lead = localized("It keeps an eye on this machine's health and says what would help. Three things to "
                        "know, then it stays out of your way."),
      .marksTitle = localized("The mark in the menu bar"),
      .marksNote = localized("A click opens the panel: the score, what it lost, and the button that gives it "
                             "back. Settings have three more forms of it."),
      .marks = marks(),
      .choicesTitle = localized("What you may switch on"),
      .choicesNote = localized("None of it is needed, and all of it waits in the settings."),
      .opensAtLogin = settings.opensAtLogin,
      .helper = settings.helper,
      .helperTitle = localized("System processes"),
      .tool = settings.tool,
      .toolTitle = localized("Command line tool"),
      .privacyTitle = localized("What never leaves this machine"),
      .privacy = privacy(settings.history),
      .start = localized("Show This Machine"),
      .skip = localized("Skip")};
  page.opensAtLogin.detail = localized("Korvell measures and records from the moment you log in.");
  return page;
}

} // namespace korvell
