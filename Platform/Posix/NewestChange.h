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
  const auto visit = [&](int folder, const char* name, FileKind kind) {
    if (std::ranges::find(ignored, std::string_view(name)) != ignored.end()) return Next::skip;
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return Next::skip;
    newest = std::max(newest.value_or(Date::distantPast()), modifiedDate(status));
    if (isEnough()) return Next::stop;
    return kind == FileKind::folder ? Next::descend : Next::skip;
  };
  FolderWalk<Reader> walk;
  walk.begin(Descriptor(open(path.c_str(), folderFlags)), visit);
  while (!isEnough() && walk.step(visit)) {
  }
  return newest;
}

} // namespace korvell
