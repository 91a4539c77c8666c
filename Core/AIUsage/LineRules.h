#pragma once
// From raw lines to what they add.
//
// A file's lines are turned into events by one thread; events of all files are merged in the files' order
// by Accounting (Accounting.h). What depends on other files, whether a message was already counted
// elsewhere, is left to the merging, and so is everything that depends on it: that is why an event carries
// the project only where its own line names one.

#include "Core/AIUsage/CodexLimits.h"
#include "Core/AIUsage/LineSearch.h"
#include "Core/AIUsage/LogLines.h"
#include "Core/AIUsage/UsageRecords.h"

#include <array>
#include <string>
#include <vector>

namespace korvell {

struct UsageEvent {
  std::optional<std::uint64_t> key; ///< of the message; absent where nothing tells it from others
  bool counted = true;              ///< false: the key is spent, nothing is added
  bool namesProject = false;        ///< the project holds for the file's later lines too
  CalendarDay day;
  const std::string* model = nullptr;
  const std::string* project = nullptr; ///< null: the file's current one
  Counts counts;
};

/// Part of a file's events, in order. Their texts live as long as it.
struct EventBatch {
  std::vector<UsageEvent> events;
  PlanReadings limits;
  StringPool models, projects;

  std::size_t bytes() const { return events.size() * sizeof(UsageEvent) + models.bytes() + projects.bytes(); }
  void clear();
};

/// Remembers some of the keys that went by, and never one that did not: a hit spares the decoding.
class RecentKeys {
public:
  bool contains(std::uint64_t key) const { return slots_[key % slots_.size()] == key && key != 0; }
  void add(std::uint64_t key) { slots_[key % slots_.size()] = key; }

private:
  std::array<std::uint64_t, 8'192> slots_{};
};

/// The keys of Claude Code lines, each of a message and its request, cut out of the raw bytes.
class MessageKeys {
public:
  /// Nothing without an id.
  std::optional<std::uint64_t> key(std::string_view line);

private:
  // A message's parts are lines that follow each other: most keys are the one before.
  std::string message_, request_;
  std::optional<std::uint64_t> last_;
};

/// What one thread needs to work on lines.
struct LineTools {
  LineDecoder decoder;
  LocalDays days;
  RecentKeys keys;
  std::string home;
  Date now; ///< what is dated later waits

  LineTools(const TimeZone& zone, std::string home, Date now) : days(zone), home(std::move(home)), now(now) {}
};

/// The lines of one Claude Code file.
class ClaudeLines {
public:
  ClaudeLines(LineTools& tools, EventBatch& batch) : tools_(tools), batch_(batch) {}

  /// One line without its line feed, JSONTokens::padding readable bytes behind it. True when an event that
  /// counts was added.
  bool claudeLine(std::string_view line);
  /// Whole lines, each with its line feed: the same as claudeLine() for each of them.
  void lines(std::string_view lines);

private:
  /// A line with the usage needle at `usage`.
  bool candidate(std::string_view line, std::size_t usage);
  bool decodedLine(std::string_view line, std::optional<std::uint64_t> key);

  LineTools& tools_;
  EventBatch& batch_;
  MessageKeys messageKeys_;
  std::string cwd_;
  std::string project_; ///< of cwd_
};

/// The lines of one Codex file.
class CodexLines {
public:
  CodexLines(LineTools& tools, EventBatch& batch, FileState& file)
      : tools_(tools), batch_(batch), file_(file) {}

  bool codexLine(std::string_view line);
  void lines(std::string_view lines);

private:
  /// A line with what its two needles have in common at `needle`, and nowhere before.
  bool candidate(std::string_view line, std::size_t needle);
  void context(const CodexPayload& payload);
  bool tokenCount(const CodexLine& line);

  LineTools& tools_;
  EventBatch& batch_;
  FileState& file_;
};

} // namespace korvell
