#include "Platform/Linux/PlainPath.h"

#include <fcntl.h>

namespace korvell {

Descriptor plainFolder(const std::string& path) {
  constexpr int flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  if (!path.starts_with('/')) return {};
  Descriptor folder(open("/", flags));
  for (std::size_t begin = 1; folder && begin < path.size();) {
    const auto end = std::min(path.find('/', begin), path.size());
    if (end > begin)
      folder = Descriptor(openat(folder.get(), path.substr(begin, end - begin).c_str(), flags));
    begin = end + 1;
  }
  return folder;
}

} // namespace korvell
