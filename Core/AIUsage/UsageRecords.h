#pragma once
// What the scanner counts, and where it stands in each file.

#include "Base/LocalTime.h"
#include "Base/Record.h"
#include "Core/AIUsage/AITool.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

namespace korvell {

// Sums of tokens stop at the ends of 64 bits. No tool writes so many; a database that somebody changed may.
std::int64_t addTokens(std::int64_t a, std::int64_t b);
std::int64_t subtractTokens(std::int64_t a, std::int64_t b);

/// Tokens. `cacheWrite1h` is the part of `cacheWrite` that is held for an hour.
struct Counts {
  std::int64_t input = 0, output = 0, cacheWrite = 0, cacheWrite1h = 0, cacheRead = 0;

  bool operator==(const Counts&) const = default;
  Counts& operator+=(const Counts& other);
  /// All tokens; the hour's share is part of the writes.
  std::int64_t total() const;
};

/// Texts kept once, at addresses that stay: equal ones of a pool have the same.
class StringPool {
public:
  const std::string* intern(std::string_view text);
  std::size_t bytes() const { return bytes_; }
  void clear();

private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
  };
  std::unordered_set<std::string, Hash, std::equal_to<>> texts_;
  const std::string* last_ = nullptr;
  std::size_t bytes_ = 0;
};

/// One row of the usage table. Its texts are a pool's, and compared by their addresses.
struct Bucket {
  CalendarDay day; ///< local
  AITool tool = AITool::claude;
  const std::string* model;
  const std::string* project;

  bool operator==(const Bucket&) const = default;
};

struct BucketHash {
  std::size_t operator()(const Bucket& bucket) const;
};

/// How far a log file is read, and what later lines need to know of earlier ones.
struct FileState {
  std::int64_t offset = 0;    ///< bytes consumed; always just after a line feed
  std::int64_t lastTotal = 0; ///< Codex: the last running total
  std::string model = "unknown";
  std::string project;

  bool operator==(const FileState&) const = default;
};

struct AIScanStats {
  std::int64_t files = 0;   ///< files with new bytes
  std::int64_t bytes = 0;   ///< new bytes in them
  std::int64_t records = 0; ///< lines that were counted
  double seconds = 0;       ///< by the clock on the wall
  double cpuSeconds = 0;    ///< of all threads that took part

  bool operator==(const AIScanStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"files", &AIScanStats::files}, Field{"bytes", &AIScanStats::bytes},
                      Field{"records", &AIScanStats::records}, Field{"seconds", &AIScanStats::seconds},
                      Field{"cpuSeconds", &AIScanStats::cpuSeconds}};
  }
};

} // namespace korvell
