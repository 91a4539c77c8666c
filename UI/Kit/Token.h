#pragma once
// The interface's colours by what they are for. Views and their models name a colour only so; UI/Kit/Theme.h
// knows what it is in the appearance of the moment.

#include <cstddef>

namespace korvell {

enum class Token {
  bg,          ///< sidebar, settings page
  surface,     ///< content, panel, widget
  raised,      ///< dialogs, menus, readouts, buttons
  sunken,      ///< tracks, wells
  hover,       ///< tiles, hovered rows
  hairline,    ///< separators
  edge,        ///< button outlines (decorative)
  border,      ///< fields, boxes, the selected segment
  text1,       ///< figures, titles
  text2,       ///< details
  text3,       ///< captions
  accent,      ///< actions, selection, focus, score
  accentInk,   ///< text on accent
  accentWash,  ///< a selected row
  accentWash2, ///< the sidebar's selected row
  good,
  info,
  warning,     ///< its text
  warningMark, ///< its mark
  critical,    ///< text on it is surface
  goodWash,
  infoWash,
  warningWash,
  criticalWash,
  cpu, ///< lines and marks of the measures; also the categorical palette, in this order
  memory,
  disk,
  network,
  gpu,
  energy,
  cyan,
  indigo,
  gray,
  cpuFill, ///< under a line
  cpuBand, ///< from the least to the most
  memoryFill,
  memoryBand,
  diskFill,
  diskBand,
  networkFill,
  networkBand,
  gpuFill,
  gpuBand,
  energyFill,
  energyBand,
  grid, ///< charts
  axis,
  hatch,
};
inline constexpr std::size_t tokenCount = static_cast<std::size_t>(Token::hatch) + 1;

/// The six measures, which are also the categorical palette in this order.
inline constexpr Token palette[] = {Token::cpu,     Token::memory, Token::disk,
                                    Token::network, Token::gpu,    Token::energy};

/// What is filled under the line of a measure; for a colour that has none of its own, `hover`.
Token fillOf(Token line);
/// The band from the least to the most around the line of a measure.
Token bandOf(Token line);

} // namespace korvell
