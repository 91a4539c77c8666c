#pragma once
// Signal handlers for as long as they are needed.

#include <csignal>
#include <initializer_list>
#include <utility>
#include <vector>

namespace korvell {

class SignalHandlers {
public:
  /// A signal that is ignored stays ignored: whoever started this program, `nohup` for one, wants it so.
  SignalHandlers(std::initializer_list<int> signals, void (*handler)(int));
  /// Puts back what was there before.
  ~SignalHandlers();
  SignalHandlers(const SignalHandlers&) = delete;
  SignalHandlers& operator=(const SignalHandlers&) = delete;

private:
  using Action = struct sigaction;
  std::vector<std::pair<int, Action>> before_;
};

} // namespace korvell
