#pragma once
// How much of a Codex plan's rolling allowances is spent, as Codex itself writes into its logs.

#include "Base/Record.h"
#include "Core/AIUsage/LogLines.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

/// One allowance.
struct AIPlanLimit {
  double usedPercent = 0;         ///< 0 to 100, as Codex reports it; never above largestPercent
  std::int64_t windowMinutes = 0; ///< 0 when Codex does not tell
  Date resetsAt;

  static constexpr double largestPercent = 999;

  /// "Weekly", "5-hour", "3-day", "2-hour"; "Plan" for a window of unknown length; localised.
  std::string name() const;
  /// As screens and alerts say it: what is begun is not spent. Nothing when it is no number.
  std::optional<int> wholePercent() const;

  bool operator==(const AIPlanLimit&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"usedPercent", &AIPlanLimit::usedPercent, Unit::percent},
                      Field{"windowMinutes", &AIPlanLimit::windowMinutes, Unit::minutes},
                      Field{"resetsAt", &AIPlanLimit::resetsAt}};
  }
};

/// One reading.
struct AICodexLimits {
  Date date; ///< when Codex wrote it
  std::optional<std::string> plan;
  std::optional<AIPlanLimit> primary, secondary;

  /// Those that are present, primary first.
  std::vector<AIPlanLimit> limits() const;
  /// The one of which most is spent among those that have not been reset yet; primary before secondary.
  std::optional<AIPlanLimit> tightest(Date now) const;

  bool operator==(const AICodexLimits&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &AICodexLimits::date}, Field{"plan", &AICodexLimits::plan},
                      Field{"primary", &AICodexLimits::primary},
                      Field{"secondary", &AICodexLimits::secondary}};
  }
};

/// What is known of the plan. A clock that was ahead leaves readings dated in the future, which are neither
/// shown nor keep real ones out.
struct PlanReadings {
  std::optional<AICodexLimits> latest; ///< the newest of those whose time has come
  std::optional<AICodexLimits> ahead;  ///< the first of the others

  /// Of two with the same date the later call's stays.
  void take(AICodexLimits reading, Date now);
  void take(PlanReadings readings, Date now);
  /// Tells anew which is which.
  void advance(Date now) { take(std::exchange(*this, {}), now); }

  bool operator==(const PlanReadings&) const = default;
};

/// The reading of a log line; nothing without a timestamp.
std::optional<AICodexLimits> limitsReading(std::optional<std::string_view> timestamp,
                                           const CodexRateLimits& limits);

// The database's form: JSON with instants as seconds since 2001-01-01 UTC.
std::string encodeLimits(const AICodexLimits& limits);
std::optional<AICodexLimits> decodeLimits(std::string_view json);

} // namespace korvell
