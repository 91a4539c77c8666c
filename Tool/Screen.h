#pragma once
// The whole terminal: a full-screen display that leaves the terminal as it found it, however it ends.
//
// While it exists the terminal shows its second screen, without cursor and echo. Signals that would end the
// program (hang-up, interrupt, terminate) become events; Ctrl-Z suspends with the terminal restored and
// comes back to a fresh screen. One at a time, on the main thread.

#include "Base/Date.h"
#include "Base/SignalHandlers.h"
#include "Base/WakePipe.h"
#include "Tool/Keys.h"
#include "Tool/Terminal.h"

#include <optional>
#include <string>
#include <termios.h>
#include <vector>

namespace korvell {

class Screen {
public:
  enum class EventKind {
    key,     ///< as Key says
    resized, ///< draw again
    woken,   ///< wake() was called
    quit,    ///< a signal asked to end, or the terminal is gone
    timeout,
  };
  struct Event {
    EventKind kind;
    int key = 0;
  };

  /// Nothing when standard input or the output is no terminal, or the terminal can't address its cursor.
  static std::optional<std::string> unavailable(const Terminal& out, const Environment& environment);

  explicit Screen(Terminal& out);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  int columns() const;
  int rows() const;
  /// Shows these lines from the top, cut to the width and the height.
  void draw(const std::vector<std::string>& lines);
  /// Waits for something to happen, at most `timeout` (none: for ever).
  Event next(std::optional<Seconds> timeout);
  /// Ends a next() that waits; from any thread.
  void wake() { wake_.wake(); }

private:
  void enter();
  void leave();
  Event readKey();

  Terminal& out_;
  termios original_{};
  WakePipe wake_;
  KeyParser parser_;
  std::vector<int> pending_;              ///< keys that were read together with the last one
  std::optional<SignalHandlers> signals_; ///< while the pipe is there that they write to
};

} // namespace korvell
