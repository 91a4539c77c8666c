#pragma once
// The latest modification below a folder.

#include "Base/Cancellation.h"
#include "Platform/Posix/FolderWalk.h"

#include <algorithm>

namespace korvell {

template <class Reader>
std::optional<Date> newestChange(const std::string& path, const std::vector<std::string_view>& ignored,
                                 Date enough, const Cancellation& cancellation) {
  std::optional<Date> newest;
  const auto isEnough = [&] { return (newest && *newest > enough) || cancellation.isCancelled(); };
  const auto note = [&](const struct stat& status) {
    newest = std::max(newest.value_or(Date::distantPast()), modifiedDate(status));
  };
  const auto visit = [&](int folder, const char* name, FileKind kind) {
    if (std::ranges::find(ignored, std::string_view(name)) != ignored.end()) return Next::skip;
    if (kind == FileKind::folder) return Next::descend; // looked at once it is known that nothing is mounted
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) note(status);
    return isEnough() ? Next::stop : Next::skip;
  };
  FolderWalk<Reader> walk;
  walk.begin(Descriptor(open(path.c_str(), folderFlags)), visit);
  while (!isEnough() && walk.step(visit, note)) {
  }
  return newest;
}

} // namespace korvell
