#include "Base/Spawn.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvell {

bool makePrivatePipe(int (&ends)[2]) { return pipe2(ends, O_CLOEXEC) == 0; }

short closeOtherDescriptors(posix_spawn_file_actions_t& actions) {
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  return 0;
}

char** environmentBlock() { return environ; }

int openExitNotice(pid_t child) { return int(syscall(SYS_pidfd_open, child, 0)); }

} // namespace korvell
