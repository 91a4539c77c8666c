#pragma once
// What a million tokens cost at the makers' public API list prices.

#include <optional>
#include <span>
#include <string_view>

namespace korvell {

/// US dollars for a million tokens.
struct AIPrice {
  double input, output;
  double cacheWrite5m, cacheWrite1h; ///< cache writes held five minutes, one hour
  double cacheRead;
  bool operator==(const AIPrice&) const = default;
};

struct AIPricing {
  struct Entry {
    std::string_view model; ///< lower case; also stands for all models whose names begin so
    AIPrice price;
  };

  static std::span<const Entry> table();
  /// The day on which the prices were checked.
  static constexpr std::string_view checked = "2026-09-25";
  /// The price of the longest entry that the name begins with, in any case of letters.
  static std::optional<AIPrice> price(std::string_view model);
};

} // namespace korvell
