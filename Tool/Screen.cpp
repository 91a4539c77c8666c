#include "Tool/Screen.h"

#include "Base/Localization.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace korvell {

namespace {

// What signal handlers may touch: whom to wake, and which signals came.
std::atomic<const WakePipe*> signalPipe{nullptr};
std::atomic<bool> quitSignalled{false};
std::atomic<bool> resizeSignalled{false};
static_assert(std::atomic<const WakePipe*>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void onSignal(int signal) {
  (signal == SIGWINCH || signal == SIGCONT ? resizeSignalled : quitSignalled) = true;
  if (const auto* pipe = signalPipe.load()) pipe->wake();
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
  signalPipe = &wake_;
  quitSignalled = false;
  tcgetattr(STDIN_FILENO, &original_);
  signals_.emplace(std::initializer_list<int>{SIGHUP, SIGINT, SIGTERM, SIGWINCH, SIGCONT}, onSignal);
  enter();
}

Screen::~Screen() {
  leave();
  signals_.reset();
  signalPipe = nullptr;
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
  pollfd waiting[] = {{STDIN_FILENO, POLLIN, 0}, {wake_.descriptor(), POLLIN, 0}};
  // Rounded up: a timer that is due in 0.4 ms must not be polled for.
  const int milliseconds = timeout ? int(std::clamp(std::ceil(timeout->count() * 1000), 0.0, 1e9)) : -1;
  const int ready = poll(waiting, 2, milliseconds);
  if (ready == 0) {
    if (mayGoOn) pending_ = parser_.finish();
    return pending_.empty() ? Event{EventKind::timeout} : readKey();
  }
  if (waiting[1].revents != 0) wake_.drain();
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

} // namespace korvell
