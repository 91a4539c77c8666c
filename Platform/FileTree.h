#pragma once
// Files and folders as they lie on the disk: what is there, what it takes, and removing it for good.
//
// Paths are absolute and may hold any bytes. No call follows a symbolic link that a path ends in, and none
// goes into a file system other than the one that its starting point is on. From any thread; calls may take
// as long as the disk does. What can't be read is skipped.

#include "Base/Cancellation.h"
#include "Base/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// Which object a path named: it stays the same when the object is renamed, and no two objects that exist at
/// the same time share one.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

enum class FileKind { regular, folder, link, other };

struct FileInfo {
  FileKind kind = FileKind::other;
  FileIdentity identity;
  std::int64_t allocated = 0; ///< bytes on the disk of the object itself, not its length
  std::uint64_t links = 1;    ///< names that the object has
  Date modified;              ///< its content
  /// When it came into its folder: the system's own record on macOS; on Linux, which keeps none, the later of
  /// its two changes, because moving a file in counts as one.
  Date added;
};

struct FolderEntry {
  std::string name;
  FileKind kind = FileKind::other;
  bool operator==(const FolderEntry&) const = default;
};

struct FolderListing {
  /// `missing` also stands for something that is no folder; `denied` for a lack of permission.
  enum class State { read, missing, denied } state = State::missing;
  std::uint64_t device = 0;
  std::vector<FolderEntry> entries; ///< in the order of their names' bytes
};

class FileTree {
public:
  virtual ~FileTree() = default;

  /// The path with every link before its last part resolved; nothing when that folder does not exist.
  virtual std::optional<std::string> located(const std::string& path) = 0;
  virtual std::optional<FileInfo> info(const std::string& path) = 0;
  virtual FolderListing list(const std::string& folder) = 0;
  /// A regular file that this user may execute; links are followed.
  virtual bool isExecutable(const std::string& path) = 0;

  /// Of each path: the allocated bytes of a file, or of all regular files in a tree of any depth. Files with
  /// several names count nothing, because removing one of the names frees nothing; folders and links have no
  /// size of their own. Cancelled, the figures are meaningless. May use several threads.
  virtual std::vector<std::int64_t> sizes(const std::vector<std::string>& paths,
                                          const Cancellation& cancellation) = 0;
  /// When something below the folder, the folder itself left out, was last modified; nothing when nothing is
  /// there. Entries named in `ignored` don't count, nor does what is in them. May stop at the first date
  /// later than `enough`.
  virtual std::optional<Date> newestChange(const std::string& folder,
                                           const std::vector<std::string_view>& ignored, Date enough,
                                           const Cancellation& cancellation) = 0;

  /// Removes entries directly inside a folder for good, each with all that is below it, and tells for how
  /// many nothing remained. Works from open folders, so that nothing outside of `folder` is reached even when
  /// entries are links or are exchanged meanwhile; a `folder` with a link anywhere in its path is refused,
  /// and so are names that are no plain names. Goes on after an entry that can't be removed.
  virtual std::size_t remove(const std::string& folder, const std::vector<std::string>& names) = 0;
};

} // namespace korvell
