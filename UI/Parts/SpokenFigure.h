#pragma once
// Figures as a screen reader should say them.

#include "Base/Unit.h"
#include "UI/Kit/Figure.h"

#include <string>

namespace korvell {

/// As Base/Format rounds it, with the unit in words: "61.8 percent of one core", "3.12 gigabytes".
std::string spokenFigure(Unit unit, double value);
/// The same of one that is formatted already.
std::string spokenFigure(const Figure& figure);

} // namespace korvell
