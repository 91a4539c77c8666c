#pragma once
// Field-by-field hashing of records. A record lists its fields once:
//
//   struct Point { int x, y; auto fields() const { return std::tie(x, y); } bool operator==(...) = default;
//   };
//
// and is then usable with RecordHash<Point>.

#include <cstddef>
#include <functional>
#include <optional>
#include <tuple>
#include <type_traits>
#include <vector>

namespace korvell {

template <class T>
std::size_t hashOf(const T& value);

inline std::size_t hashCombine(std::size_t seed, std::size_t hash) {
  return seed ^ (hash + 0x9e3779b97f4a7c15ull + (seed << 6) + (seed >> 2));
}

template <class T>
concept Record = requires(const T& t) {
  t.fields();
};

template <class T>
struct RecordHash {
  std::size_t operator()(const T& value) const { return hashOf(value); }
};

namespace detail {
template <class T>
struct IsVector : std::false_type {};
template <class T>
struct IsVector<std::vector<T>> : std::true_type {};
template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};
} // namespace detail

template <class T>
std::size_t hashOf(const T& value) {
  if constexpr (Record<T>) {
    return std::apply(
        [](const auto&... field) {
          std::size_t seed = 0;
          ((seed = hashCombine(seed, hashOf(field))), ...);
          return seed;
        },
        value.fields());
  } else if constexpr (detail::IsVector<T>::value) {
    std::size_t seed = value.size();
    for (const auto& element : value) seed = hashCombine(seed, hashOf(element));
    return seed;
  } else if constexpr (detail::IsOptional<T>::value) {
    return value ? hashCombine(1, hashOf(*value)) : 0;
  } else {
    return std::hash<T>{}(value);
  }
}

} // namespace korvell
