#pragma once
// The share card as a picture, in the appearance of the moment.

#include "UI/Kit/Theme.h"
#include "UI/Share/ShareCard.h"

#include <QImage>

namespace korvell {

inline constexpr int shareCardWidth = 1200, shareCardHeight = 630;

/// Of so many pixels, whatever the screen's ratio or the size of its text.
QImage shareCardPicture(const ShareCard& card, const Theme& theme);

} // namespace korvell
