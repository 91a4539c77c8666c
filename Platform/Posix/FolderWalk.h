#pragma once
// A depth-first walk through the folders below one folder, without recursion and with few open files, for
// trees of any depth.
//
// Each folder is read once and completely; what remains of it is the list of its folders that are still to be
// visited. Those lists lie behind one another in one block of memory. Only the deepest folders of the way
// down stay open: coming back to one that was closed opens ".." and makes sure that it is the folder that was
// left, so that a folder moved elsewhere meanwhile does not lead the walk out of the tree. Half of the
// folders waiting on the highest level can be handed to another walk, which is how threads share a tree.

#include "Platform/Posix/FolderReader.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// What a visit wants: `descend` goes into a folder later, `stop` ends the reading of the folder it is in.
enum class Next { skip, descend, stop };

template <class Reader>
class FolderWalk {
public:
  using SharedFolder = std::shared_ptr<const Descriptor>;

  /// Folders of one parent: their names, each ended by a zero byte.
  struct Share {
    SharedFolder parent;
    FileIdentity parentIdentity;
    std::string names;
  };

  /// Begins below an open folder. `visit(folder, name, kind)` is called for each entry and returns a Next.
  template <class Visit>
  void begin(Descriptor folder, Visit&& visit) {
    struct stat status {};
    if (!folder || fstat(folder.get(), &status) != 0) return;
    reset();
    read(std::move(folder), identityOf(status), visit);
  }

  void begin(Share share) {
    reset();
    names_ = std::move(share.names);
    frames_.push_back({std::move(share.parent), share.parentIdentity, 0, 0});
  }

  /// Visits one more folder; false when none is left. `found(status)` is called for the folder itself first,
  /// also when it may not be read; where something is mounted neither is called.
  template <class Visit, class Found>
  bool step(Visit&& visit, Found&& found) {
    while (!frames_.empty() && frames_.back().begin == names_.size()) leave();
    if (frames_.empty()) return false;
    const Frame& frame = frames_.back();
    const std::size_t start = lastName(frame.begin);
    const int parent = frame.folder->get();
    const char* name = names_.c_str() + start;
    Descriptor folder = Reader::open(parent, name);
    struct stat status {};
    const bool known = folder            ? fstat(folder.get(), &status) == 0
                       : errno == EACCES ? fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0
                                         : false;
    names_.resize(start);
    const auto identity = identityOf(status);
    if (!known || identity.device != frame.identity.device) return true;
    found(status);
    if (folder) read(std::move(folder), identity, visit);
    return true;
  }
  template <class Visit>
  bool step(Visit&& visit) {
    return step(visit, [](const struct stat&) {});
  }

  /// Gives away half of what waits on the highest level that has more than one folder waiting.
  std::optional<Share> share() {
    for (std::size_t i = 0; i < frames_.size(); ++i) {
      Frame& frame = frames_[i];
      const std::size_t end = i + 1 < frames_.size() ? frames_[i + 1].base : names_.size();
      if (!frame.folder || frame.begin == end) continue;
      const std::size_t cut = names_.find('\0', frame.begin + (end - frame.begin - 1) / 2) + 1;
      if (cut == end && i + 1 == frames_.size()) continue;
      Share share{frame.folder, frame.identity, names_.substr(frame.begin, cut - frame.begin)};
      frame.begin = cut;
      return share;
    }
    return std::nullopt;
  }

private:
  struct Frame {
    SharedFolder folder; ///< null when it was closed to save descriptors
    FileIdentity identity;
    std::size_t base = 0;  ///< where its names began
    std::size_t begin = 0; ///< where those that still wait begin
  };

  /// Few enough for several walks at once within the 256 descriptors that macOS allows by default.
  static constexpr std::size_t openFolders = 40;

  void reset() {
    frames_.clear();
    names_.clear();
  }

  template <class Visit>
  void read(Descriptor folder, FileIdentity identity, Visit&& visit) {
    const std::size_t begin = names_.size();
    const int fd = folder.get();
    reader_.read(fd, [&](const char* name, FileKind kind) {
      const auto next = visit(fd, name, kind);
      if (next == Next::stop) return false;
      if (next == Next::descend && kind == FileKind::folder) names_.append(name, std::strlen(name) + 1);
      return true;
    });
    if (names_.size() == begin) return;
    frames_.push_back({std::make_shared<const Descriptor>(std::move(folder)), identity, begin, begin});
    if (frames_.size() > openFolders) frames_[frames_.size() - openFolders - 1].folder.reset();
  }

  std::size_t lastName(std::size_t begin) const {
    const auto previous = names_.rfind('\0', names_.size() - 2);
    return previous == std::string::npos || previous < begin ? begin : previous + 1;
  }

  /// Leaves the deepest folder. What waits further up is given up when the way back is lost.
  void leave() {
    const Frame left = std::move(frames_.back());
    frames_.pop_back();
    names_.resize(left.base);
    if (frames_.empty() || frames_.back().folder) return;
    Descriptor parent(openat(left.folder->get(), "..", folderFlags));
    struct stat status {};
    if (parent && fstat(parent.get(), &status) == 0 && identityOf(status) == frames_.back().identity)
      frames_.back().folder = std::make_shared<const Descriptor>(std::move(parent));
    else
      reset();
  }

  Reader reader_;
  std::vector<Frame> frames_;
  std::string names_;
};

} // namespace korvell
