#include "Tool/HeadlessLoop.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace korvell {

namespace {

// Signal handlers know no object, so the pipe that they write to stands here.
int pipeRead = -1, pipeWrite = -1;
constexpr char wakeByte = 'w', endByte = 'e';

void writeByte(char byte) {
  const int saved = errno;
  [[maybe_unused]] const auto written = write(pipeWrite, &byte, 1); // a full pipe wakes as well
  errno = saved;
}

void askToEnd(int) { writeByte(endByte); }

/// Rounded up: a wake-up before the deadline would only be followed by another.
int millisecondsUntil(Seconds instant, Seconds now) {
  return int(std::clamp((instant - now).count() * 1000 + 1, 0.0, 3'600'000.0));
}

} // namespace

HeadlessLoop::HeadlessLoop() : main_("main", [] { writeByte(wakeByte); }) {
  int ends[2] = {-1, -1};
  if (pipe(ends) == 0)
    for (int end : ends) {
      fcntl(end, F_SETFD, FD_CLOEXEC);
      fcntl(end, F_SETFL, O_NONBLOCK);
    }
  pipeRead = ends[0];
  pipeWrite = ends[1];
  signals_.emplace(std::initializer_list<int>{SIGHUP, SIGINT, SIGTERM}, askToEnd);
}

HeadlessLoop::~HeadlessLoop() {
  signals_.reset();
  close(std::exchange(pipeRead, -1));
  close(std::exchange(pipeWrite, -1));
}

void HeadlessLoop::run() {
  quit_ = false;
  main_.runDue();
  while (!quit_ && wait()) main_.runDue();
}

bool HeadlessLoop::wait() {
  const auto deadline = main_.nextDeadline();
  pollfd polled{pipeRead, POLLIN, 0};
  poll(&polled, 1, deadline ? millisecondsUntil(deadline->due, main_.clock().monotonic()) : -1);
  char bytes[64];
  for (;;) {
    const auto count = read(pipeRead, bytes, sizeof bytes);
    if (count <= 0) return true;
    if (std::find(bytes, bytes + count, endByte) != bytes + count) return false;
  }
}

} // namespace korvell
