#pragma once
// Cheap access to /proc, or to a tree that looks like it: one descriptor on the folder is kept, every file is
// one openat, read and close into a buffer that is used again and again.
//
// What the reading functions return points into that buffer and stands until the next call.

#include "Base/Descriptor.h"
#include "Platform/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

class ProcDirectory {
public:
  enum class Access { ok, gone, denied };

  struct Entry {
    ProcessID pid = 0;
    /// Of the process's folder. The kernel gives a process's folder a number when it is first looked up and
    /// never the same to the next process with that id; the number may change while the process lives.
    std::uint64_t inode = 0;
  };

  struct File {
    Access access = Access::gone;
    std::string_view text;
  };

  explicit ProcDirectory(std::string root);

  /// The processes, by ascending id.
  const std::vector<Entry>& list();
  /// A whole file of a process, "stat" or "task/17/io"; at most 256 KiB of it.
  File read(ProcessID pid, const char* name);
  /// A whole file beside the processes, "meminfo".
  File read(const char* name);
  /// Where a symbolic link of a process points, "exe" or "fd/3".
  File readLink(ProcessID pid, const char* name);
  /// The effective user of a process, whom its folder belongs to.
  std::optional<std::uint32_t> owner(ProcessID pid);
  /// Names of a folder of a process that are numbers, "task" or "fd", in no order.
  Access numbers(ProcessID pid, const char* name, std::vector<int>& into);

private:
  File readPath(const char* path);

  Descriptor root_;
  std::vector<Entry> entries_;
  std::vector<char> buffer_;
};

} // namespace korvell
