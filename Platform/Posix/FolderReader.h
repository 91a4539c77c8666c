#pragma once
// How the tree walk opens and reads folders through the C library. A system whose kernel offers something
// better brings a class with the same operations.

#include "Base/Descriptor.h"
#include "Platform/Posix/FileStatus.h"

#include <cstdint>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>

namespace korvell {

inline constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

struct FolderReader {
  struct Size {
    bool regular = false;
    std::uint64_t links = 1;
    std::int64_t allocated = 0;
    std::uint64_t mount = 0; ///< as `mount` says
  };

  /// A folder in an open one, for reading. Where the kernel can tell, one on which something is mounted is
  /// not opened and errno is EXDEV; whoever walks compares the devices besides.
  static Descriptor open(int folder, const char* name) {
    return Descriptor(openat(folder, name, folderFlags));
  }

  /// The number of the mount that a folder lies on; 0 where mounts have none. (A file's device does not tell:
  /// overlay file systems report that of the layer it comes from.)
  static std::uint64_t mount(int) { return 0; }

  /// Calls `each(name, kind)` for every entry until it returns false; names end with a zero byte. False when
  /// the folder can't be read.
  template <class Each>
  bool read(int folder, Each&& each) {
    // A descriptor of its own, because the stream closes it and moves its position.
    Descriptor own(openat(folder, ".", folderFlags));
    std::unique_ptr<DIR, int (*)(DIR*)> stream(own ? fdopendir(own.get()) : nullptr, closedir);
    if (!stream) return false;
    own.release();
    while (const dirent* entry = readdir(stream.get())) {
      if (isDotName(entry->d_name)) continue;
      const auto kind = kindOf(folder, entry->d_name, entry->d_type);
      if (kind && !each(entry->d_name, *kind)) break;
    }
    return true;
  }

  static std::optional<Size> size(int folder, const char* name) {
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return Size{S_ISREG(status.st_mode), std::uint64_t(status.st_nlink), status.st_blocks * blockUnit};
  }

  static bool isDotName(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
  }

  /// What the entry's type says, or the file itself where the file system doesn't tell; nothing when it is
  /// gone.
  static std::optional<FileKind> kindOf(int folder, const char* name, unsigned char type) {
    switch (type) {
    case DT_REG:
      return FileKind::regular;
    case DT_DIR:
      return FileKind::folder;
    case DT_LNK:
      return FileKind::link;
    case DT_UNKNOWN:
      break;
    default:
      return FileKind::other;
    }
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return korvell::kindOf(status.st_mode);
  }
};

} // namespace korvell
