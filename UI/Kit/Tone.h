#pragma once
// How serious something is, as the interface shows it: a shape and a colour that belong together.

#include "UI/Kit/Icon.h"
#include "UI/Kit/Token.h"

namespace korvell {

enum class Tone { good, info, warning, critical };

struct ToneLook {
  Icon icon;  ///< tick in a circle, i in a circle, triangle, octagon
  Token mark; ///< the icon's colour
  Token text;
  Token wash; ///< a banner's ground
};
const ToneLook& lookOf(Tone tone);

} // namespace korvell
