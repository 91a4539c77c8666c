#include "Platform/Linux/MountBounds.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvell {
namespace {

bool areOnOneMount(int a, int b) {
  const auto mount = mountNumber(a);
  if (mount != 0) return mount == mountNumber(b);
  struct stat first {
  }, second{};
  return fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev;
}

} // namespace

Descriptor openOnMount(int folder, const char* name, int flags) {
  open_how how{};
  how.flags = std::uint64_t(flags);
  how.resolve = RESOLVE_NO_XDEV;
  Descriptor found(int(syscall(SYS_openat2, folder, name, &how, sizeof how)));
  if (found || (errno != ENOSYS && errno != EPERM)) return found;
  found = Descriptor(openat(folder, name, flags));
  if (!found || areOnOneMount(found.get(), folder)) return found;
  found = {};
  errno = EXDEV;
  return found;
}

std::uint64_t mountNumber(int file) {
  struct statx status {};
  constexpr int flags = AT_EMPTY_PATH | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
  if (statx(file, "", flags, STATX_MNT_ID, &status) != 0) return 0;
  return status.stx_mask & STATX_MNT_ID ? status.stx_mnt_id : 0;
}

} // namespace korvell
