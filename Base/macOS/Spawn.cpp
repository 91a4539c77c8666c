#include "Base/Spawn.h"

#include <crt_externs.h>
#include <fcntl.h>
#include <sys/event.h>
#include <unistd.h>

namespace korvell {

// There is no pipe2; a child that another thread starts in between is kept from inheriting the ends by its
// own POSIX_SPAWN_CLOEXEC_DEFAULT.
bool makePrivatePipe(int (&ends)[2]) {
  if (pipe(ends) != 0) return false;
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  return true;
}

short closeOtherDescriptors(posix_spawn_file_actions_t&) { return POSIX_SPAWN_CLOEXEC_DEFAULT; }

char** environmentBlock() { return *_NSGetEnviron(); }

int openExitNotice(pid_t child) {
  const int notice = kqueue();
  if (notice < 0) return -1;
  fcntl(notice, F_SETFD, FD_CLOEXEC);
  struct kevent change;
  EV_SET(&change, static_cast<uintptr_t>(child), EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
  if (kevent(notice, &change, 1, nullptr, 0, nullptr) == 0) return notice;
  close(notice); // it has ended already: the caller looks by itself
  return -1;
}

} // namespace korvell
