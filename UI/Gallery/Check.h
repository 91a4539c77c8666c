#pragma once
// What no view may do, looked for in what was rendered.

#include "UI/Kit/Theme.h"

#include <QWidget>

#include <string>
#include <vector>

namespace korvell {

/// Sentences about a shown view: a tab stop without a name for screen readers, one that Tab never reaches, a
/// hit area under 24 by 24, a visible widget without a size, a text cut off that must not be.
std::vector<std::string> problemsOf(QWidget& view);
/// Inks that are too weak on a ground that they stand on.
std::vector<std::string> contrastProblems(const Theme& theme);

} // namespace korvell
