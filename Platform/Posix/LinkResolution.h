#pragma once
// Following links without waiting for a server that is gone.

#include "Platform/MountedPlaces.h"

#include <string>

namespace korvell {

/// An absolute path with every link resolved, the last part's too, one part after the other: nothing in a
/// place that may block is touched. What lies there, or is missing, is as the path has it; so is all of a
/// path with more links than the system follows.
std::string linksResolved(const std::string& path, const BlockingPlaces& blocking);

} // namespace korvell
