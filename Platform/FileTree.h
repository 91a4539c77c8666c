#pragma once
// Files and folders as they lie on the disk: what is there, what it takes, and removing it for good.
//
// Paths are absolute and may hold any bytes. No call follows a symbolic link that a path ends in, and none
// goes from its starting point into something that is mounted below, be it another file system or another
// place of the same one; on Linux such a place is not even touched. From any thread; calls may take as long
// as the disk does. What can't be read is skipped.

#include "Base/Cancellation.h"
#include "Base/Date.h"
#include "Base/Result.h"
#include "Platform/MountedPlaces.h"

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

enum class FileKind {
  regular,
  folder,
  link,
  other,
  mountPoint, ///< a folder on which something is mounted: only in listings, which don't look at it
};

struct FileInfo {
  FileKind kind = FileKind::other;
  FileIdentity identity;
  std::int64_t allocated = 0; ///< bytes on the disk of the object itself, not its length
  std::uint64_t links = 1;    ///< names that the object has
  Date modified;              ///< its content
  /// When it came into its folder, which macOS records; elsewhere when its content was last modified. (The
  /// change of its status would make everything new that was restored, moved or given another owner.)
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

/// What became of an entry that was to be removed.
struct Removal {
  Outcome outcome = success(); ///< why something of it remains
  std::int64_t freed = 0;      ///< allocated bytes of the files that this call removed the last name of
  bool cutShort = false;       ///< nothing but the caller's cancelling kept it from being removed
};

class FileTree {
public:
  virtual ~FileTree() = default;

  /// Everything that is mounted, as the system lists it: none of it is touched. Empty when it can't be told.
  virtual std::vector<MountedPlace> mounts() = 0;

  /// The path with every link before its last part resolved; nothing when that folder does not exist.
  virtual std::optional<std::string> located(const std::string& path) = 0;
  /// The path with every link resolved, the last part's too, one part after the other: nothing in a place
  /// that may block is touched. What lies there, or is missing, is as the path has it.
  virtual std::string resolved(const std::string& path, const BlockingPlaces& blocking) = 0;
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

  /// Removes entries directly inside a folder for good, each with all that is below it. One outcome for each
  /// name, in order. Works from open folders, so that nothing outside of `folder` is reached even when
  /// entries are links or are exchanged meanwhile; a `folder` with a link anywhere in its path is refused,
  /// and so are names that are no plain names. Goes on after what can't be removed. Folders of the user's own
  /// that their mode keeps closed are opened first. Cancelled, what is not yet removed stays.
  virtual std::vector<Removal> remove(const std::string& folder, const std::vector<std::string>& names,
                                      const Cancellation& cancellation) = 0;
};

} // namespace korvell
