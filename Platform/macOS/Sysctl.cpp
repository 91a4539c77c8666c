#include "Platform/macOS/Sysctl.h"

namespace korvell {

std::string sysctlText(const char* name) {
  std::size_t size = 0;
  if (sysctlbyname(name, nullptr, &size, nullptr, 0) != 0 || size < 1) return {};
  std::string text(size, '\0');
  if (sysctlbyname(name, text.data(), &size, nullptr, 0) != 0) return {};
  text.resize(size);
  if (const auto end = text.find('\0'); end != std::string::npos) text.resize(end); // the size counts the NUL
  return text;
}

std::vector<std::byte> sysctlBytes(std::vector<int> name) {
  std::size_t size = 0;
  const auto depth = static_cast<unsigned>(name.size());
  if (sysctl(name.data(), depth, nullptr, &size, nullptr, 0) != 0) return {};
  std::vector<std::byte> buffer(size);
  if (sysctl(name.data(), depth, buffer.data(), &size, nullptr, 0) != 0) return {};
  buffer.resize(size);
  return buffer;
}

} // namespace korvell
