#include "Base/WakePipe.h"

#include "Base/Spawn.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace korvell {

WakePipe::WakePipe() {
  int ends[2];
  if (!makePrivatePipe(ends)) return;
  read_ = Descriptor(ends[0]);
  write_ = Descriptor(ends[1]);
  for (const int end : ends) fcntl(end, F_SETFL, O_NONBLOCK);
}

void WakePipe::wake() const {
  const int saved = errno;
  const char byte = 0;
  [[maybe_unused]] const auto written = write(write_.get(), &byte, 1); // a full pipe wakes as well
  errno = saved;
}

void WakePipe::drain() const {
  char bytes[64];
  while (read(read_.get(), bytes, sizeof bytes) > 0) {
  }
}

} // namespace korvell
