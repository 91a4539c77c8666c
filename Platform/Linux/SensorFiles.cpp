#include "Platform/Linux/SensorFiles.h"

#include "Base/Text.h"
#include "Platform/Linux/FileReader.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace korvell {

int SensorFiles::read(const std::string& path, std::span<char> into) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return -errno;
  ssize_t bytes;
  do bytes = ::read(descriptor, into.data(), into.size());
  while (bytes < 0 && errno == EINTR);
  const int result = bytes < 0 ? -errno : int(bytes);
  ::close(descriptor);
  return result;
}

std::vector<std::string> SensorFiles::names(const std::string& folder) { return folderNames(folder); }

std::string SensorFiles::linkName(const std::string& path) {
  std::array<char, PATH_MAX> target;
  const auto length = ::readlink(path.c_str(), target.data(), target.size());
  if (length <= 0) return {};
  const std::string_view text(target.data(), std::size_t(length));
  return std::string(text.substr(text.rfind('/') + 1));
}

std::string SensorFiles::text(const std::string& path) {
  std::array<char, 256> buffer;
  const int length = read(path, buffer);
  return length > 0 ? std::string(trimmed({buffer.data(), std::size_t(length)})) : std::string();
}

} // namespace korvell
