#include "UI/Tray/TrayHelp.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

std::string trayHelp(std::string_view desktop) {
  const auto names = split(desktop, ':');
  const auto is = [&](std::string_view name) { return std::ranges::find(names, name) != names.end(); };
  if (is("GNOME"))
    return localized("GNOME shows one with the extension “AppIndicator and KStatusNotifierItem Support”.");
  if (is("KDE")) return localized("Add the widget “System Tray” to the panel.");
  if (is("XFCE")) return localized("Add the item “Status Tray Plugin” to the panel.");
  if (is("X-Cinnamon")) return localized("Add the applet “XApp Status Applet” to the panel.");
  if (is("MATE")) return localized("Add the applet “Notification Area” to the panel.");
  return localized("A panel or an extension that shows status items would help.");
}

} // namespace korvell
