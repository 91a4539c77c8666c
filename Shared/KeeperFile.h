#pragma once
// The file that the process which measures holds a lock on, for as long as it lives.

#include "Base/UserFolders.h"

#include <string>

namespace korvell {

inline constexpr const char* keeperLockName = "keeper.lock";

inline std::string keeperLockPath(const UserFolders& folders) { return folders.data + "/" + keeperLockName; }

} // namespace korvell
