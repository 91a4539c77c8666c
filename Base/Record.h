#pragma once
// Records: plain structures that name their fields once and are then hashed, printed and read field by field.
//
//   struct Point {
//     int x = 0, y = 0;
//     bool operator==(const Point&) const = default;
//     static constexpr auto fields() { return std::tuple{Field{"x", &Point::x}, Field{"y", &Point::y}}; }
//   };
//
// A field that is a figure names its unit behind the member: Field{"memory", &App::memory, Unit::memory}.
//
// toValue() makes the JSON that others read: members bear the fields' names in their order, enumerations are
// their raw values, absent optionals are left out. fromValue() reads it back; members that are missing leave
// their field as it was, members of the wrong type make it fail. Both instantiate much: a record that several
// files convert is instantiated in one of them, and its header says so with KORVELL_CONVERTED_ONCE.

#include "Base/Enum.h"
#include "Base/Unit.h"
#include "Base/Value.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace korvell {

template <class T, class M>
struct Field {
  const char* name;
  M T::*member;
  Unit unit = Unit::none;
};
// clang deduces aggregates only from version 17 on.
template <class T, class M>
Field(const char*, M T::*, Unit = Unit::none) -> Field<T, M>;

template <class T>
concept Record = requires {
  T::fields();
};

template <class T>
concept TabledEnum = std::is_enum_v<T> && requires {
  EnumTable<T>::cases;
};

namespace detail {
template <class T>
struct ElementOf {};
template <class T>
struct ElementOf<std::vector<T>> {
  using Type = T;
};
template <class T>
struct ElementOf<std::optional<T>> {
  using OptionalType = T;
};
template <class T>
concept Vector = requires {
  typename ElementOf<T>::Type;
};
template <class T>
concept Optional = requires {
  typename ElementOf<T>::OptionalType;
};
} // namespace detail

inline std::size_t hashCombine(std::size_t seed, std::size_t hash) {
  return seed ^ (hash + 0x9e3779b97f4a7c15ull + (seed << 6) + (seed >> 2));
}

template <class T>
std::size_t hashOf(const T& value) {
  std::size_t seed = 0;
  if constexpr (Record<T>) {
    std::apply([&](const auto&... field) { ((seed = hashCombine(seed, hashOf(value.*field.member))), ...); },
               T::fields());
    return seed;
  } else if constexpr (detail::Vector<T>) {
    seed = value.size();
    for (const auto& element : value) seed = hashCombine(seed, hashOf(element));
    return seed;
  } else if constexpr (detail::Optional<T>) {
    return value ? hashCombine(1, hashOf(*value)) : 0;
  } else {
    return std::hash<T>{}(value);
  }
}

/// For unordered containers of records.
template <Record T>
struct RecordHash {
  std::size_t operator()(const T& value) const { return hashOf(value); }
};

template <class T>
Value toValue(const T& value) {
  if constexpr (Record<T>) {
    Value::Object members;
    const auto add = [&](const auto& field) {
      const auto& member = value.*field.member;
      if constexpr (detail::Optional<std::decay_t<decltype(member)>>) {
        if (member) members.emplace_back(field.name, toValue(*member));
      } else {
        members.emplace_back(field.name, toValue(member));
      }
    };
    std::apply([&](const auto&... field) { (add(field), ...); }, T::fields());
    return members;
  } else if constexpr (detail::Vector<T>) {
    Value::Array elements;
    elements.reserve(value.size());
    for (const auto& element : value) elements.push_back(toValue(element));
    return elements;
  } else if constexpr (TabledEnum<T>) {
    return Value(rawValue(value));
  } else if constexpr (std::is_same_v<T, bool> || std::is_floating_point_v<T>) {
    return Value(value);
  } else if constexpr (std::is_unsigned_v<T>) {
    return Value(std::uint64_t{value});
  } else if constexpr (std::is_integral_v<T>) {
    return Value(std::int64_t{value});
  } else {
    return Value(value);
  }
}

template <class T>
[[nodiscard]] bool fromValue(const Value& value, T& result);

namespace detail {

template <class T, class Read>
bool take(T& result, const Read& read) {
  if (!read || !std::in_range<T>(*read)) return false;
  result = T(*read);
  return true;
}

template <class T>
bool takeScalar(const Value& value, T& result) {
  if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, Date> || std::is_floating_point_v<T>) {
    const auto read = [&] {
      if constexpr (std::is_same_v<T, bool>)
        return value.asBool();
      else if constexpr (std::is_same_v<T, Date>)
        return value.asDate();
      else
        return value.asDouble();
    }();
    if (read) result = *read;
    return read.has_value();
  } else if constexpr (std::is_unsigned_v<T>) {
    return take(result, value.asUnsigned());
  } else if constexpr (std::is_integral_v<T>) {
    return take(result, value.asInt());
  } else if constexpr (std::is_same_v<T, Value>) {
    result = value;
    return true;
  } else {
    const auto* text = value.asString();
    if (text) result = *text;
    return text != nullptr;
  }
}

} // namespace detail

template <class T>
bool fromValue(const Value& value, T& result) {
  if constexpr (Record<T>) {
    if (!value.asObject()) return false;
    const auto take = [&](const auto& field) {
      const auto* member = value.find(field.name);
      return !member || fromValue(*member, result.*field.member);
    };
    return std::apply([&](const auto&... field) { return (take(field) && ...); }, T::fields());
  } else if constexpr (detail::Optional<T>) {
    if (value.isNull()) {
      result.reset();
      return true;
    }
    // Made here and moved: clang finds a record nested in another one not default-constructible in place.
    return fromValue(value, result.emplace(typename detail::ElementOf<T>::OptionalType{}));
  } else if constexpr (detail::Vector<T>) {
    const auto* elements = value.asArray();
    if (!elements) return false;
    result.clear();
    for (const auto& element : *elements)
      if (!fromValue(element, result.emplace_back())) return false;
    return true;
  } else if constexpr (TabledEnum<T>) {
    const auto* text = value.asString();
    const auto parsed = text ? fromRawValue<T>(*text) : std::nullopt;
    if (parsed) result = *parsed;
    return parsed.has_value();
  } else {
    return detail::takeScalar(value, result);
  }
}

} // namespace korvell

/// In the header of a record, in this namespace: conversions of the type are instantiated elsewhere, by
/// KORVELL_CONVERT_HERE in one source file.
#define KORVELL_CONVERTED_ONCE(...)                                                                          \
  extern template Value toValue(const __VA_ARGS__&);                                                         \
  extern template bool fromValue(const Value&, __VA_ARGS__&)
#define KORVELL_CONVERT_HERE(...)                                                                            \
  template Value toValue(const __VA_ARGS__&);                                                                \
  template bool fromValue(const Value&, __VA_ARGS__&)
