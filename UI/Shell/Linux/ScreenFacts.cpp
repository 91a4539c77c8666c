#include "UI/Shell/ScreenFacts.h"

#include "UI/Tray/Linux/Selection.h"

namespace korvell {

bool showsTranslucentWindows() {
  return QGuiApplication::platformName().startsWith("wayland") || isSelectionOwned("_NET_WM_CM_S0");
}

} // namespace korvell
