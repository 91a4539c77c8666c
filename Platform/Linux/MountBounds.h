#pragma once
// Staying on one mount. A bind mount shows a place of the same file system, so device numbers don't tell.

#include "Base/Descriptor.h"

#include <cstdint>

namespace korvell {

/// Opens an entry of an open folder. When something is mounted on it, that is not touched: not open, with
/// EXDEV. Before Linux 5.6, or where a sandbox forbids openat2, the mounts are compared after opening.
Descriptor openOnMount(int folder, const char* name, int flags);

/// The number of the mount that an open file lies on; 0 before Linux 5.8, which has none.
std::uint64_t mountNumber(int file);

} // namespace korvell
