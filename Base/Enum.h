#pragma once
// Enumerations that are stored or shown.
//
// Each has one table, in the order of its cases, with the raw value (what is stored) and the title (what is
// shown; the key of its localisation). Parsing, printing and listing all read that table:
//
//   enum class Pace { slow, fast };
//   template <> struct EnumTable<Pace> {
//     static constexpr EnumCase<Pace> cases[] = {{Pace::slow, "slow", "Slow"}, {Pace::fast, "fast", "Fast"}};
//   };

#include "Base/Localization.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvell {

template <class E>
struct EnumCase {
  E value;
  std::string_view rawValue;
  std::string_view title;
};

template <class E>
struct EnumTable; // specialised beside each enumeration

/// Every case at its place, raw values that are there and differ. Checked for each table when it is used.
template <class E>
constexpr bool isSoundTable() {
  std::size_t place = 0;
  for (const auto& c : EnumTable<E>::cases) {
    if (static_cast<std::size_t>(c.value) != place++ || c.rawValue.empty()) return false;
    for (const auto& other : EnumTable<E>::cases)
      if (&other != &c && other.rawValue == c.rawValue) return false;
  }
  return true;
}

/// All cases, in order.
template <class E>
constexpr std::span<const EnumCase<E>> allCases() {
  static_assert(isSoundTable<E>());
  return EnumTable<E>::cases;
}

template <class E>
constexpr std::string_view rawValue(E value) {
  for (const auto& c : allCases<E>())
    if (c.value == value) return c.rawValue;
  return {};
}

/// The case with exactly this raw value; nothing for any other spelling.
template <class E>
constexpr std::optional<E> fromRawValue(std::string_view raw) {
  for (const auto& c : allCases<E>())
    if (c.rawValue == raw) return c.value;
  return std::nullopt;
}

/// The localised title.
template <class E>
std::string title(E value) {
  for (const auto& c : allCases<E>())
    if (c.value == value) return localized(c.title);
  return {};
}

} // namespace korvell
