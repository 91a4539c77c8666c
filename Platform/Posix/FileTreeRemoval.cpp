#include "Platform/Posix/FileTreeRemoval.h"

#include "Base/Localization.h"
#include "Platform/Posix/FolderReader.h"

#include <cerrno>
#include <string>
#include <unistd.h>
#include <vector>

namespace korvell {
namespace {

/// A folder on the way down. Its name is relative to the one before.
struct Frame {
  Descriptor folder;
  FileIdentity identity;
  std::string name;
  std::vector<std::string> folders; ///< still to be removed
  bool progress = false;            ///< something was removed in this reading of the folder
};

/// Removes what is no folder and adds what that gave back; false with the reason in errno.
bool removeFile(int folder, const char* name, std::int64_t& freed) {
  const auto size = FolderReader::size(folder, name);
  if (unlinkat(folder, name, 0) != 0) return false;
  if (size && size->regular && size->links < 2) freed += size->allocated;
  return true;
}

class TreeRemoval {
public:
  TreeRemoval(int top, std::uint64_t device, FolderOpener open, const Cancellation& cancellation)
      : top_(top), device_(device), open_(open), cancellation_(cancellation) {}

  std::int64_t freed() const { return freed_; }
  /// The first error number that something was left for.
  int obstacle() const { return obstacle_; }

  void remove(const char* name) {
    descend(top_, name);
    while (!frames_.empty() && !cancellation_.isCancelled()) {
      Frame& frame = frames_.back();
      if (frame.folders.empty()) {
        leave();
        continue;
      }
      const std::string next = std::move(frame.folders.back());
      frame.folders.pop_back();
      descend(frame.folder.get(), next.c_str());
    }
  }

private:
  static constexpr std::size_t openFolders = 40;

  void descend(int parent, const char* name) {
    Descriptor folder = open_(parent, name);
    if (!folder && errno == EACCES && unlock(parent, name)) folder = open_(parent, name);
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0) return note(errno);
    if (std::uint64_t(status.st_dev) != device_) return note(EXDEV);
    if ((status.st_mode & S_IRWXU) != S_IRWXU) fchmod(folder.get(), S_IRWXU);
    frames_.push_back({std::move(folder), identityOf(status), name, {}, false});
    if (frames_.size() > openFolders) frames_[frames_.size() - openFolders - 1].folder = {};
    read(frames_.back());
  }

  /// A folder that keeps its owner from reading it. Something that is mounted never gets here: opening it
  /// fails for another reason.
  bool unlock(int parent, const char* name) const {
    struct stat status {};
    return fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode) &&
           std::uint64_t(status.st_dev) == device_ && status.st_uid == geteuid() &&
           fchmodat(parent, name, S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0;
  }

  void read(Frame& frame) {
    frame.progress = false;
    const int folder = frame.folder.get();
    FolderReader().read(folder, [&](const char* name, FileKind kind) {
      if (kind == FileKind::folder)
        frame.folders.push_back(name);
      else if (removeFile(folder, name, freed_))
        frame.progress = true;
      else
        note(errno);
      return !cancellation_.isCancelled();
    });
  }

  void note(int error) {
    if (obstacle_ == 0 && error != ENOENT && error != ENOTEMPTY) obstacle_ = error;
  }

  /// Removes the deepest folder, which should be empty by now. Entries may have been missed because a folder
  /// changes while it is read: as long as that removes more, it is read again.
  void leave() {
    Frame& left = frames_.back();
    Descriptor reopened;
    int parent = top_;
    if (frames_.size() > 1) {
      Frame& above = frames_[frames_.size() - 2];
      if (!above.folder) above.folder = reopen(left.folder.get(), above.identity);
      parent = above.folder.get();
    }
    if (parent < 0) return frames_.clear(); // moved elsewhere meanwhile: there is no way back
    errno = 0;
    const bool removed = isStill(parent, left) && unlinkat(parent, left.name.c_str(), AT_REMOVEDIR) == 0;
    if (!removed && left.progress) return read(left);
    if (!removed) note(errno);
    frames_.pop_back();
    if (removed && !frames_.empty()) frames_.back().progress = true;
  }

  static Descriptor reopen(int below, FileIdentity identity) {
    Descriptor folder(openat(below, "..", folderFlags));
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0 || identityOf(status) != identity) return {};
    return folder;
  }

  static bool isStill(int parent, const Frame& frame) {
    struct stat status {};
    return fstatat(parent, frame.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           identityOf(status) == frame.identity;
  }

  int top_;
  std::uint64_t device_;
  FolderOpener open_;
  const Cancellation& cancellation_;
  std::int64_t freed_ = 0;
  int obstacle_ = 0;
  std::vector<Frame> frames_;
};

Failure failure(int error) {
  switch (error) {
  case ENOENT:
    return {localized("It is no longer there.")};
  case EXDEV:
    return {localized("Another file system lies in it.")};
  case EACCES:
  case EPERM:
  case EROFS:
    return {localized("You may not remove it.")};
  case EBUSY:
    return {localized("It is in use.")};
  default:
    return {localized("It could not be removed.")};
  }
}

} // namespace

Removal notRemoved(int error) { return {.outcome = failure(error)}; }

Removal removeEntry(int folder, const char* name, FolderOpener open, const Cancellation& cancellation) {
  if (cancellation.isCancelled()) return {.outcome = failure(ECANCELED), .cutShort = true};
  struct stat entry {
  }, parent{};
  if (fstat(folder, &parent) != 0 || fstatat(folder, name, &entry, AT_SYMLINK_NOFOLLOW) != 0)
    return notRemoved(errno);
  if (!S_ISDIR(entry.st_mode)) {
    Removal removal;
    if (!removeFile(folder, name, removal.freed)) removal.outcome = failure(errno);
    return removal;
  }
  TreeRemoval tree(folder, std::uint64_t(parent.st_dev), open, cancellation);
  tree.remove(name);
  Removal removal{.freed = tree.freed()};
  if (fstatat(folder, name, &entry, AT_SYMLINK_NOFOLLOW) == 0 || errno != ENOENT) {
    removal.outcome = failure(tree.obstacle());
    removal.cutShort = tree.obstacle() == 0 && cancellation.isCancelled();
  }
  return removal;
}

} // namespace korvell
