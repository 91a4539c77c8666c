#pragma once
// Instants and spans of time.
//
// A Date is a number of seconds since 1970-01-01 00:00 UTC, fractions included: the resolution is about a
// quarter of a microsecond today, and the distant past is far enough from everything that
// "now - distantPast" is longer than any interval without overflowing.
//
// Rules receive the time as an argument or read an injected Clock; nothing below main asks the system.

#include <chrono>
#include <compare>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

using Seconds = std::chrono::duration<double>;

struct Date {
  double sinceEpoch = 0; ///< seconds since 1970-01-01 00:00 UTC

  static constexpr Date distantPast() { return {-62135769600.0}; }

  friend constexpr auto operator<=>(const Date&, const Date&) = default;
  friend constexpr Seconds operator-(Date a, Date b) { return Seconds{a.sinceEpoch - b.sinceEpoch}; }
  friend constexpr Date operator-(Date a, Seconds s) { return {a.sinceEpoch - s.count()}; }
  friend constexpr Date operator+(Date a, Seconds s) { return {a.sinceEpoch + s.count()}; }
};

/// What time it is, as told by the machine or by a test.
class Clock {
public:
  virtual ~Clock() = default;
  /// The wall clock. It may jump in both directions.
  virtual Date now() const = 0;
  /// A clock that only goes forward, whatever is done to the wall clock, and stands still while the machine
  /// sleeps: the hours of a lid that was shut belong to no rate. Its zero means nothing.
  virtual Seconds monotonic() const = 0;
};

/// The machine's own clocks: monotonic() is CLOCK_MONOTONIC on Linux and CLOCK_UPTIME_RAW on macOS, where
/// CLOCK_MONOTONIC and with it std::chrono::steady_clock run on in sleep.
class SystemClock final : public Clock {
public:
  Date now() const override;
  Seconds monotonic() const override;
};

/// True when a task that last ran at `last` is due again: `interval` has passed, or `last` lies in the
/// future because the wall clock was set back.
constexpr bool isDue(Date last, Seconds interval, Date now) { return now - last >= interval || now < last; }

/// RFC 3339 in UTC with milliseconds, "2026-03-01T12:34:56.789Z"; what lies outside the years 0 to 9999 is
/// shown as their first or last instant.
std::string rfc3339(Date date);
/// Reads RFC 3339 with "Z" or a numeric offset, with or without fractions. Nothing for any other text.
std::optional<Date> parseRFC3339(std::string_view text);

} // namespace korvell

template <>
struct std::hash<korvell::Date> {
  size_t operator()(const korvell::Date& d) const noexcept { return std::hash<double>{}(d.sinceEpoch); }
};
