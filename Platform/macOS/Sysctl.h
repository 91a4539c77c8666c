#pragma once
// Values of the kernel's sysctl tree.

#include <cstddef>
#include <optional>
#include <string>
#include <sys/sysctl.h>
#include <type_traits>
#include <vector>

namespace korvell {

/// A value of a fixed size; nothing when it is missing or of another size.
template <class T>
std::optional<T> sysctlValue(const char* name) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value{};
  std::size_t size = sizeof value;
  if (sysctlbyname(name, &value, &size, nullptr, 0) != 0 || size != sizeof value) return std::nullopt;
  return value;
}

/// A text; empty when it is missing.
std::string sysctlText(const char* name);

/// What a numeric name answers; empty when it fails.
std::vector<std::byte> sysctlBytes(std::vector<int> name);

} // namespace korvell
