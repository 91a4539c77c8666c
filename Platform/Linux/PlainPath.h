#pragma once
// Opening a path in which no part may be a link.

#include "Base/Descriptor.h"

#include <string>

namespace korvell {

/// A handle on the folder of an absolute path that serves as a starting point only (O_PATH), so that folders
/// on the way that may be passed but not read do not hinder. Not open when any part is a link or no folder.
Descriptor plainFolder(const std::string& path);

} // namespace korvell
