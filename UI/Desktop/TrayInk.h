#pragma once
// In which ink a tray item can be read.

namespace korvell {

enum class TrayInk {
  dark,  ///< for a light bar
  light, ///< for a dark one
  edged, ///< light with a dark edge: for a bar of a colour that nobody tells
};

} // namespace korvell
