#pragma once
// Folders read with getdents64 into one large buffer, statx asked for nothing but what a size takes, and
// mounts told apart by their numbers.
// Saves about a tenth of the processor time that the C library's directory streams cost on trees of small
// folders.

#include "Platform/Linux/MountBounds.h"
#include "Platform/Posix/FolderReader.h"

#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace korvell {

class GetdentsReader {
public:
  using Size = FolderReader::Size;

  static Descriptor open(int folder, const char* name) { return openOnMount(folder, name, folderFlags); }
  static std::uint64_t mount(int folder) { return mountNumber(folder); }

  template <class Each>
  bool read(int folder, Each&& each) {
    for (;;) {
      const long length = syscall(SYS_getdents64, folder, buffer_.get(), bufferSize);
      if (length <= 0) return length == 0;
      for (long at = 0; at < length;) {
        const auto* entry = reinterpret_cast<const Entry*>(buffer_.get() + at);
        at += entry->length;
        if (entry->name[0] == '.' && FolderReader::isDotName(entry->name)) continue;
        const auto kind = FolderReader::kindOf(folder, entry->name, entry->type);
        if (kind && !each(entry->name, *kind)) return true;
      }
    }
  }

  static std::optional<Size> size(int folder, const char* name) {
    struct statx status {};
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    if (statx(folder, name, flags, STATX_TYPE | STATX_NLINK | STATX_BLOCKS | STATX_MNT_ID, &status) != 0)
      return std::nullopt;
    return Size{S_ISREG(status.stx_mode), status.stx_nlink, std::int64_t(status.stx_blocks) * blockUnit,
                status.stx_mask & STATX_MNT_ID ? status.stx_mnt_id : 0};
  }

private:
  /// struct linux_dirent64, which no header declares.
  struct Entry {
    std::uint64_t inode;
    std::int64_t offset;
    unsigned short length;
    unsigned char type;
    char name[1];
  };

  static constexpr std::size_t bufferSize = 64 * 1024;
  std::unique_ptr<char[]> buffer_{new char[bufferSize]};
};

} // namespace korvell
