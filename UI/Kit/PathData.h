#pragma once
// Path data as vector drawings write it (M L H V C S A Z, absolute and relative), made into a path of the
// toolkit.
// Arcs are parts of upright ellipses: their rotation is read over.

#include <QPainterPath>

#include <optional>
#include <string_view>

namespace korvell {

/// Nothing for data that is not well-formed.
std::optional<QPainterPath> pathFromData(std::string_view data);

} // namespace korvell
