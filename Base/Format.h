#pragma once
// Numbers as people read them, in the style of the language in effect (Localization.h), whatever locales are
// installed. What is said here of the form is English.
//
// Rounding is decided before the number of decimals and before the unit, so that no figure ever shows one
// digit too many: 9.995 MB is "10.0 MB", 99.95 MB is "100 MB", 999.5 MB is "1.00 GB" in decimal multiples.
// Amounts below one unit step are whole bytes, without decimals. Negative amounts keep their sign. NaN and
// infinities are "–".

#include "Base/Date.h"
#include "Base/Unit.h"

#include <cstdint>
#include <string>

namespace korvell {

struct Format {
  /// Multiples of 1,024: B, KB, MB, GB, TB, PB. Two decimals below 10, one below 100, none from 100 on.
  static std::string memory(double bytes);
  /// Multiples of 1,000 with the same units and decimals.
  static std::string bytes(double bytes);
  /// Multiples of 1,000; one decimal below 10, none above; the unit ends in "/s".
  static std::string rate(double bytesPerSecond);
  /// With so many decimals, as printf rounds.
  static std::string decimal(double number, int decimals);
  /// "42%"; rounded to the nearest whole number.
  static std::string percent(double percent);
  /// "3.4 W"; one decimal below 100, none from there on.
  static std::string watts(double watts);
  /// "54°C", rounded.
  static std::string celsius(double celsius);
  /// Whole minutes, "12 min"; from 60 minutes on hours and minutes, "3 h 5 min"; from 1,440 minutes on
  /// days, "14 days". Truncated, never rounded up; negative spans count as 0.
  static std::string duration(Seconds span);
  /// 1234567 as "1,234,567".
  static std::string grouped(std::int64_t number);
  /// "$1,234.50", to the cent.
  static std::string dollars(double dollars);
  /// "45.2M": thousands as K, millions as M, then B and T; one decimal below 100, none above. Whole numbers
  /// below 1,000 as they are.
  static std::string shortCount(std::int64_t number);
  /// A figure as its unit asks for; of units without a form of their own the number, rounded.
  static std::string figure(Unit unit, double value);
};

/// What a figure that could not be read looks like.
inline constexpr const char* noFigure = "–";

} // namespace korvell
