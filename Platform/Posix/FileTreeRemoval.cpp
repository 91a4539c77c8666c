#include "Platform/Posix/FileTreeRemoval.h"

#include "Platform/Posix/FolderReader.h"

#include <cerrno>
#include <string>
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

class Removal {
public:
  Removal(int top, std::uint64_t device) : top_(top), device_(device) {}

  void remove(const char* name) {
    descend(top_, name);
    while (!frames_.empty()) {
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
    Descriptor folder(openat(parent, name, folderFlags));
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0 || std::uint64_t(status.st_dev) != device_) return;
    if ((status.st_mode & S_IRWXU) != S_IRWXU) fchmod(folder.get(), S_IRWXU);
    frames_.push_back({std::move(folder), identityOf(status), name, {}, false});
    if (frames_.size() > openFolders) frames_[frames_.size() - openFolders - 1].folder = {};
    read(frames_.back());
  }

  static void read(Frame& frame) {
    frame.progress = false;
    const int folder = frame.folder.get();
    FolderReader().read(folder, [&](const char* name, FileKind kind) {
      if (kind == FileKind::folder)
        frame.folders.push_back(name);
      else if (unlinkat(folder, name, 0) == 0)
        frame.progress = true;
      return true;
    });
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
    const bool removed = isStill(parent, left) && unlinkat(parent, left.name.c_str(), AT_REMOVEDIR) == 0;
    if (!removed && left.progress) return read(left);
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
  std::vector<Frame> frames_;
};

} // namespace

bool removeEntry(int folder, const char* name) {
  struct stat entry {
  }, parent{};
  if (fstat(folder, &parent) != 0) return false;
  if (fstatat(folder, name, &entry, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT;
  if (!S_ISDIR(entry.st_mode)) return unlinkat(folder, name, 0) == 0;
  Removal(folder, std::uint64_t(parent.st_dev)).remove(name);
  return fstatat(folder, name, &entry, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
}

} // namespace korvell
