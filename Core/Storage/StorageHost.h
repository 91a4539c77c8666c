#pragma once
// The storage clean-up of the machine that a process runs on.

#include "Core/Storage/StorageCleanup.h"
#include "Platform/Host.h"

namespace korvell {

/// With this host's table of locations, which is made by whoever first asks for something: that looks at the
/// disk. The host and the clock outlive it.
StorageWork makeStorageWork(const Host& host, const Clock& clock);

/// Where the user's downloads go. Looks at the disk.
std::string downloadsFolder(const Host& host);

} // namespace korvell
