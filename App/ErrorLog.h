#pragma once
// The last errors of the process that keeps, in "errors.json" in the data folder: what a support report
// quotes, so it holds no name of a file, a project or an application. Written only when there is an error.
// Nobody but the keeper writes it, and its lock sees to it that there is one.
//
// One object with the list "errors", the oldest first. A file that can't be understood is put aside, one that
// can't be read or written costs these lines and nothing else.

#include "Base/Queue.h"
#include "Base/Record.h"
#include "Base/Trouble.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct LoggedError {
  Date date;              ///< of the last time
  std::string version;    ///< of the Korvell that it happened to
  std::string text;       ///< Trouble::nameless
  std::int64_t count = 1; ///< how often it came in a row

  bool operator==(const LoggedError&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &LoggedError::date}, Field{"version", &LoggedError::version},
                      Field{"text", &LoggedError::text}, Field{"count", &LoggedError::count}};
  }
};

class ErrorLog {
public:
  static constexpr std::size_t mostEntries = 50;

  /// `folder` is the data folder. Lives on one thread; writes on a queue of its own, made with the first
  /// error.
  ErrorLog(QueueFactory makeQueue, const Clock& clock, const std::string& folder, std::string version);
  ~ErrorLog(); ///< waits for what is to be written
  ErrorLog(const ErrorLog&) = delete;
  ErrorLog& operator=(const ErrorLog&) = delete;

  void add(const Trouble& trouble);

  /// The oldest first; nothing when there is a file that can't be read or understood.
  static std::optional<std::vector<LoggedError>> read(const std::string& folder);

private:
  const QueueFactory makeQueue_;
  const Clock& clock_;
  const std::string folder_, version_;
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell
