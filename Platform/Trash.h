#pragma once
// The user's Trash, as the desktop keeps it: the Finder's on macOS, the freedesktop Trash (version 1.0) on
// Linux, so that what was moved there can be put back with the desktop's own means.
//
// From any thread but the main one; may take as long as the disk does.

#include "Base/Result.h"
#include "Platform/FileTree.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct TrashRequest {
  std::string path;
  /// The object that the user picked. When something else is at the path by now, or a link leads to it that
  /// was not there before (the path was `FileTree::located`), nothing is moved.
  std::optional<FileIdentity> picked;
};

/// One of the folders that make up the Trash: the user's own and, on Linux, those of other volumes.
struct TrashFolder {
  std::string entries; ///< what is in it lies directly in this folder
  /// Where the system keeps a record of each entry, named as the entry with `recordSuffix`; empty where it
  /// keeps none.
  std::string records;
  std::string recordSuffix;
  bool operator==(const TrashFolder&) const = default;
};

class Trash {
public:
  virtual ~Trash() = default;
  /// Moves each path into the Trash of its volume, never by copying. One outcome for each request, in order;
  /// what can't be moved stays where it is, whole. What holds a mount can't be.
  virtual std::vector<Outcome> move(const std::vector<TrashRequest>& requests) = 0;
  /// The folders of the Trash that exist, the user's own first (also when it may not be read), and on Linux
  /// all others that `move` uses.
  virtual std::vector<TrashFolder> folders() = 0;
};

} // namespace korvell
