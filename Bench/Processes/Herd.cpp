#include "Herd.h"

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvell {

namespace {

int answers = -1; ///< of a child: where it writes that it was stirred

void answer(int) { [[maybe_unused]] const auto written = write(answers, "x", 1); }

} // namespace

Herd::Herd(int count, Kind kind) : kind_(kind) {
  if (pipe(stirred_) != 0) _exit(2);
  for (int i = 0; i < count; ++i) children_.push_back(start());
  if (kind == Kind::active) stir(); // once all have their handlers
}

Herd::~Herd() {
  for (const auto child : children_) kill(child, SIGKILL);
  for (const auto child : children_) waitpid(child, nullptr, 0);
  for (const int end : stirred_) close(end);
}

pid_t Herd::start() const {
  // The handler is there before the child is: it never misses a signal, nor dies of one.
  answers = stirred_[1];
  std::signal(SIGUSR1, answer);
  const auto child = fork();
  if (child != 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (;;) pause();
}

void Herd::stir() {
  for (const auto child : children_) kill(child, SIGUSR1);
  char byte;
  for (std::size_t i = 0; i < children_.size(); ++i)
    if (read(stirred_[0], &byte, 1) != 1) return;
}

void Herd::replace(int count) {
  for (int i = 0; i < count && !children_.empty(); ++i) {
    auto& child = children_[static_cast<std::size_t>(i) % children_.size()];
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    child = start();
  }
}

} // namespace korvell
