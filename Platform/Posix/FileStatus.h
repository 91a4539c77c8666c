#pragma once
// What struct stat says, in our own words.

#include "Platform/FileTree.h"

#include <sys/stat.h>

namespace korvell {

inline FileKind kindOf(mode_t mode) {
  return S_ISREG(mode)   ? FileKind::regular
         : S_ISDIR(mode) ? FileKind::folder
         : S_ISLNK(mode) ? FileKind::link
                         : FileKind::other;
}

inline FileIdentity identityOf(const struct stat& status) {
  return {std::uint64_t(status.st_dev), std::uint64_t(status.st_ino)};
}

inline Date dateOf(const timespec& time) { return {double(time.tv_sec) + double(time.tv_nsec) / 1e9}; }

// The two systems name the same member differently.
template <class Status>
Date modifiedDate(const Status& status) {
  if constexpr (requires { status.st_mtimespec; })
    return dateOf(status.st_mtimespec);
  else
    return dateOf(status.st_mtim);
}

/// st_blocks counts in this unit on both systems, whatever st_blksize says.
inline constexpr std::int64_t blockUnit = 512;

} // namespace korvell
