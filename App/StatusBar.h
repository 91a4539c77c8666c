#pragma once
// The menu bar's item for bars that have no tray: one line, in the words of the program that shows it.

#include "App/MenuBarLabel.h"
#include "Core/Health/HealthReport.h"

#include <string>
#include <string_view>

namespace korvell {

enum class StatusBarFormat { plain, waybar, i3bar, i3blocks, tmux };

template <>
struct EnumTable<StatusBarFormat> {
  using enum StatusBarFormat;
  static constexpr EnumCase<StatusBarFormat> cases[] = {
      {plain, "plain", "Plain text"},
      {waybar, "waybar", "waybar's JSON, an object a line"},
      {i3bar, "i3bar", "The i3bar protocol"},
      {i3blocks, "i3blocks", "i3blocks' JSON, a block a line"},
      {tmux, "tmux", "tmux's styles"}};
};

/// The label in one line of text: bars of the graphs are eighths of a line high, an idle core still shows
/// the lowest.
std::string labelText(const MenuBarLabel& label);

/// What is said once before the first line, without a line feed; empty for most.
std::string_view statusBarOpening(StatusBarFormat format);
/// One line, without its line feed. Names in findings are escaped for whoever reads it.
std::string statusBarLine(const MenuBarFigures& figures, const HealthReport& report, MenuBarStyle style,
                          StatusBarFormat format);
/// Behind the last line, where the stream has an end.
std::string_view statusBarClosing(StatusBarFormat format);

} // namespace korvell
