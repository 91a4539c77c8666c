#include "Tool/Screen.h"

#include "Base/Localization.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace korvell {

namespace {

// What signal handlers may touch: a pipe to write to, and which signals came.
std::atomic<int> signalPipe{-1};
std::atomic<bool> quitSignalled{false};
std::atomic<bool> resizeSignalled{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void onSignal(int signal) {
  const int saved = errno;
  (signal == SIGWINCH || signal == SIGCONT ? resizeSignalled : quitSignalled) = true;
  const char byte = 0;
  [[maybe_unused]] const auto written = ::write(signalPipe, &byte, 1);
  errno = saved;
}

/// So soon follows the rest of an escape sequence, even over a slow line.
constexpr Seconds sequencePatience{0.05};

} // namespace

std::optional<std::string> Screen::unavailable(const Terminal& out, const Environment& environment) {
  if (!out.isTerminal() || isatty(STDIN_FILENO) != 1) return localized("this needs a terminal");
  if (environment("TERM").value_or("dumb") == "dumb")
    return localized("this terminal cannot place its cursor");
  return std::nullopt;
}

Screen::Screen(Terminal& out) : out_(out) {
  int ends[2];
  if (pipe(ends) == 0) {
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
    for (const int end : ends) {
      fcntl(end, F_SETFL, O_NONBLOCK);
      fcntl(end, F_SETFD, FD_CLOEXEC);
    }
  }
  signalPipe = wakeWrite_;
  quitSignalled = false;
  tcgetattr(STDIN_FILENO, &original_);
  signals_.emplace(std::initializer_list<int>{SIGHUP, SIGINT, SIGTERM, SIGWINCH, SIGCONT}, onSignal);
  enter();
}

Screen::~Screen() {
  leave();
  signals_.reset();
  signalPipe = -1;
  close(wakeRead_);
  close(wakeWrite_);
}

void Screen::enter() {
  termios raw = original_;
  raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ISIG | IEXTEN);
  raw.c_iflag &= ~tcflag_t(IXON | ICRNL);
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &raw);
  out_.write("\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J");
  out_.flush();
}

void Screen::leave() {
  out_.write("\x1b[?7h\x1b[?25h\x1b[?1049l");
  out_.flush();
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &original_);
}

int Screen::columns() const { return out_.columns(); }

int Screen::rows() const {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : 24;
}

void Screen::draw(const std::vector<std::string>& lines) {
  // One write a frame, each line cleared to its end, and nothing after the last line scrolls. Behind a full
  // line the cursor still stands on its last column, and clearing would take that.
  std::string frame = "\x1b[?2026h\x1b[H";
  const size_t count = std::min(lines.size(), size_t(rows()));
  const int width = columns();
  for (size_t i = 0; i < count; ++i) {
    const auto line = fitted(lines[i], width);
    frame += (i > 0 ? "\r\n" : "") + line;
    if (inkedWidth(line) < width) frame += "\x1b[K";
  }
  if (count < size_t(rows())) frame += "\x1b[J";
  frame += "\x1b[?2026l";
  out_.write(frame);
  out_.flush();
}

Screen::Event Screen::readKey() {
  constexpr int controlC = 3, controlZ = 26;
  const int key = pending_.front();
  pending_.erase(pending_.begin());
  if (key == controlC) return {EventKind::quit};
  if (key == controlZ) {
    leave();
    raise(SIGSTOP);
    enter();
    return {EventKind::resized};
  }
  return {EventKind::key, key};
}

Screen::Event Screen::next(std::optional<Seconds> timeout) {
  if (!pending_.empty()) return readKey();
  const bool mayGoOn = parser_.isWaiting();
  if (mayGoOn) timeout = std::min(timeout.value_or(sequencePatience), sequencePatience);
  pollfd waiting[] = {{STDIN_FILENO, POLLIN, 0}, {wakeRead_, POLLIN, 0}};
  // Rounded up: a timer that is due in 0.4 ms must not be polled for.
  const int milliseconds = timeout ? int(std::clamp(std::ceil(timeout->count() * 1000), 0.0, 1e9)) : -1;
  const int ready = poll(waiting, 2, milliseconds);
  if (ready == 0) {
    if (mayGoOn) pending_ = parser_.finish();
    return pending_.empty() ? Event{EventKind::timeout} : readKey();
  }
  if (waiting[1].revents != 0) {
    char drained[64];
    while (read(wakeRead_, drained, sizeof drained) > 0) {
    }
  }
  if (quitSignalled) return {EventKind::quit};
  if (resizeSignalled.exchange(false)) return {EventKind::resized};
  if ((waiting[0].revents & POLLIN) != 0) {
    char bytes[256];
    const auto count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) return {EventKind::quit};
    pending_ = parser_.take({bytes, size_t(count)});
    return pending_.empty() ? Event{EventKind::woken} : readKey();
  }
  if ((waiting[0].revents & (POLLHUP | POLLERR)) != 0) return {EventKind::quit};
  return {EventKind::woken};
}

void Screen::wake() {
  const char byte = 0;
  [[maybe_unused]] const auto written = ::write(wakeWrite_, &byte, 1);
}

} // namespace korvell
