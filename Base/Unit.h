#pragma once
// In what a figure is told. A record's field says it once (Base/Record.h); tables, documentation, exporters
// and views ask there.

#include "Base/Enum.h"

namespace korvell {

enum class Unit {
  none, ///< a count, a text, a switch: nothing to convert
  memory,
  bytes,
  bytesPerSecond,
  percent,
  corePercent,
  celsius,
  watts,
  minutes,
  seconds,
  microseconds,
  revolutionsPerMinute,
  dollars,
};

/// Titles say what the raw value leaves open.
template <>
struct EnumTable<Unit> {
  using enum Unit;
  static constexpr EnumCase<Unit> cases[] = {
      {none, "none", ""},
      {memory, "memory", "bytes, shown in multiples of 1,024"},
      {bytes, "bytes", "bytes, shown in multiples of 1,000"},
      {bytesPerSecond, "bytesPerSecond", "bytes a second"},
      {percent, "percent", "percent of the whole"},
      {corePercent, "corePercent", "percent of one core"},
      {celsius, "celsius", "degrees Celsius"},
      {watts, "watts", "watts"},
      {minutes, "minutes", "minutes"},
      {seconds, "seconds", "seconds"},
      {microseconds, "microseconds", "microseconds"},
      {revolutionsPerMinute, "revolutionsPerMinute", "revolutions a minute"},
      {dollars, "dollars", "US dollars"}};
};

} // namespace korvell
