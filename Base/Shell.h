#pragma once
// The one way in which Korvell starts other programs.
//
// The program is named by its absolute path and gets its arguments as they are: no shell, no PATH search, no
// inherited descriptors, standard input and standard error at /dev/null. Its standard output is collected
// while it runs; beyond 16 MiB it is drained and dropped. When `timeout` is over or the caller cancels, the
// program's process group is asked to terminate and killed one second later, together with children that
// stayed in its group. One that is in the middle of an uninterruptible call even then is left to a thread
// that reaps it when it ends. The call returns when the program has ended, even when a child of it still
// holds the pipe open, and at the latest two seconds after it was asked to end. From any thread; blocks the
// caller.
//
// The program has a session of its own. An interrupt typed at a terminal reaches Korvell only: whoever runs a
// program for longer than a user waits passes a cancellation and cancels it when the process is told to end.
// And it has no terminal: an interactive shell that finds one in which it is not in front stops itself.

#include "Base/Cancellation.h"
#include "Base/Date.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct ShellResult {
  std::string output;       ///< standard output, invalid UTF-8 repaired
  int exitStatus = 0;       ///< the exit code; 128 + signal when a signal ended it; -1 unknown
  bool timedOut = false;    ///< it was asked to end because its time was over
  bool interrupted = false; ///< it was asked to end, or not started, because the caller cancelled
  bool lingers = false;     ///< killed, but it has not ended yet: what it is doing can't be interrupted

  /// It ended by itself and says that all went well.
  bool succeeded() const { return !timedOut && !interrupted && exitStatus == 0; }
};

struct Shell {
  /// Nothing when the program could not be started: no absolute path, no such program, a NUL in an argument.
  static std::optional<ShellResult> run(const std::string& path, const std::vector<std::string>& arguments,
                                        Seconds timeout, const Cancellation& cancellation = {});
};

/// Shell::run as a value, so that rules can be tested with recorded output.
using CommandRunner = std::function<std::optional<ShellResult>(
    const std::string& path, const std::vector<std::string>& arguments, Seconds timeout,
    const Cancellation& cancellation)>;

} // namespace korvell
