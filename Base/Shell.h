#pragma once
// The one way in which Korvell starts other programs.
//
// The program is named by its absolute path and gets its arguments as they are: no shell, no PATH search, no
// inherited descriptors, standard input and standard error at /dev/null. Its standard output is collected
// while it runs; beyond 64 MiB it is drained and dropped. After `timeout` the program's process group is
// asked to terminate and killed one second later, together with children that stayed in its group. The call
// returns when the program has ended, even when a child of it still holds the pipe open. From any thread;
// blocks the caller.

#include "Base/Date.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct ShellResult {
  std::string output;    ///< standard output, invalid UTF-8 repaired
  int exitStatus = 0;    ///< the exit code; 128 + signal when a signal ended it; -1 unknown
  bool timedOut = false; ///< it was asked to end
};

struct Shell {
  /// Nothing when the program could not be started: no absolute path, no such program, a NUL in an argument.
  static std::optional<ShellResult> run(const std::string& path, const std::vector<std::string>& arguments,
                                        Seconds timeout);
};

/// Shell::run as a value, so that rules can be tested with recorded output.
using CommandRunner = std::function<std::optional<ShellResult>(
    const std::string& path, const std::vector<std::string>& arguments, Seconds timeout)>;

} // namespace korvell
