#include "Platform/Posix/PosixFileTree.h"

#include "Platform/Posix/LinkResolution.h"
#include "Platform/Posix/NewestChange.h"
#include "Platform/Posix/TreeSizes.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace korvell {

PosixFileTree::PosixFileTree(unsigned threads)
    : threads_(threads ? threads : std::clamp(std::thread::hardware_concurrency(), 1u, 4u)) {}

bool isPlainName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos &&
         name.find('\0') == name.npos;
}

std::optional<std::string> PosixFileTree::located(const std::string& path) {
  const auto slash = path.rfind('/');
  if (!path.starts_with('/') || !isPlainName(std::string_view(path).substr(slash + 1))) return std::nullopt;
  const std::unique_ptr<char, decltype(&std::free)> parent(
      realpath(path.substr(0, slash + 1).c_str(), nullptr), &std::free);
  if (!parent) return std::nullopt;
  std::string result = parent.get();
  if (result != "/") result += '/';
  return result + path.substr(slash + 1);
}

std::string PosixFileTree::resolved(const std::string& path, const BlockingPlaces& blocking) {
  return linksResolved(path, blocking);
}

std::optional<FileInfo> PosixFileTree::info(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return std::nullopt;
  return FileInfo{.kind = kindOf(status.st_mode),
                  .identity = identityOf(status),
                  .allocated = status.st_blocks * blockUnit,
                  .links = std::uint64_t(status.st_nlink),
                  .modified = modifiedDate(status),
                  .added = added(path, status)};
}

Date PosixFileTree::added(const std::string&, const struct stat& status) { return modifiedDate(status); }

FolderOpener PosixFileTree::opener() const { return FolderReader::open; }

bool PosixFileTree::isMountPoint(int folder, const char* name) const {
  struct stat above {
  }, status{};
  return fstat(folder, &above) == 0 && fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         status.st_dev != above.st_dev;
}

FolderListing PosixFileTree::list(const std::string& path) {
  FolderListing listing;
  Descriptor folder(open(path.c_str(), folderFlags));
  struct stat status {};
  if (folder && fstat(folder.get(), &status) == 0) {
    listing.device = identityOf(status).device;
    const bool complete = FolderReader().read(folder.get(), [&](const char* name, FileKind kind) {
      const bool mounted = kind == FileKind::folder && isMountPoint(folder.get(), name);
      listing.entries.push_back({name, mounted ? FileKind::mountPoint : kind});
      return true;
    });
    if (complete) listing.state = FolderListing::State::read;
  }
  if (listing.state != FolderListing::State::read && (errno == EACCES || errno == EPERM))
    listing.state = FolderListing::State::denied;
  std::ranges::sort(listing.entries, {}, &FolderEntry::name);
  return listing;
}

bool PosixFileTree::isExecutable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

std::vector<std::int64_t> PosixFileTree::sizes(const std::vector<std::string>& paths,
                                               const Cancellation& cancellation) {
  return TreeSizes<FolderReader>(paths, threads_, cancellation).measure();
}

std::optional<Date> PosixFileTree::newestChange(const std::string& folder,
                                                const std::vector<std::string_view>& ignored, Date enough,
                                                const Cancellation& cancellation) {
  return korvell::newestChange<FolderReader>(folder, ignored, enough, cancellation);
}

std::vector<Removal> PosixFileTree::remove(const std::string& path, const std::vector<std::string>& names,
                                           const Cancellation& cancellation) {
  const Descriptor folder = openWithoutLinks(path);
  std::vector<Removal> removals;
  for (const auto& name : names)
    removals.push_back(folder && isPlainName(name)
                           ? removeEntry(folder.get(), name.c_str(), opener(), cancellation)
                           : notRemoved(0));
  return removals;
}

} // namespace korvell
