#include "Shared/HelpPages.h"
#include "UI/Shell/FileManager.h"
#include "UI/Shell/KorvellApp.h"

namespace korvell {

void KorvellApp::makeMenu() {
  if (!Presence::sharesMenuBar()) return;
  const auto present = sections();
  AppMenu::Actions actions{.sections = {present.begin(), present.end()},
                           .open = [this](SidebarItem section) { show(section); },
                           .openSettings = [this] { openSettings(); },
                           .quit = [this] { askToQuit(); },
                           .openHelp = {}};
  if (const HelpPages help(host_.program); help.page(HelpPages::index))
    actions.openHelp = [help] {
      if (const auto page = help.page(HelpPages::index)) openPath(*page); // in the language of the moment
    };
  menu_.emplace(std::move(actions));
}

} // namespace korvell
