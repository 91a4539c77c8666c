#pragma once
// What the desktop says of how things should look. On Linux the desktop portal's settings, with the colours
// of the toolkit's palette where there is no portal; on macOS the effective appearance and the accessibility
// settings. Main thread only.

#include "UI/Desktop/TrayInk.h"
#include "UI/Kit/Theme.h"

#include <functional>
#include <memory>
#include <optional>

namespace korvell {

struct DesktopWishes {
  Appearance appearance = Appearance::light;
  bool highContrast = false;
  bool reducedMotion = false;
  TrayInk ink = TrayInk::edged;
};

class DesktopLook {
public:
  /// `changed` is told when the desktop's answer arrives and whenever it changes.
  explicit DesktopLook(std::function<void(const DesktopWishes&)> changed);
  ~DesktopLook();
  DesktopLook(const DesktopLook&) = delete;
  DesktopLook& operator=(const DesktopLook&) = delete;

  /// What applies until then.
  static DesktopWishes fromPalette();

private:
  struct Portal;
  std::unique_ptr<Portal> portal_;
};

} // namespace korvell
