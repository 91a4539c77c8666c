#include "Platform/Linux/LinuxTrash.h"

#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/UserFolders.h"
#include "Platform/Formats/TrashInfo.h"
#include "Platform/Linux/PlainPath.h"
#include "Platform/Posix/FileStatus.h"
#include "Platform/Posix/LinkResolution.h"
#include "Platform/Posix/PosixFileTree.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>

namespace korvell {
namespace {

Failure failure(int error) {
  switch (error) {
  case ENOENT:
    return {localized("It is no longer there.")};
  case EACCES:
  case EPERM:
  case EROFS:
    return {localized("You may not move it.")};
  case EBUSY:
    return {localized("It is in use.")};
  case EXDEV:
    return {localized("Its disk has no Trash.")};
  case ENOSPC:
  case EDQUOT:
    return {localized("The disk is full.")};
  default:
    return {localized("It could not be moved.")};
  }
}

std::optional<struct stat> statusOf(int folder, const char* name) {
  struct stat status {};
  if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
  return status;
}

/// What shall be moved: a name in an open folder.
struct Source {
  Descriptor folder;
  std::string path; ///< with no link before the last part
  std::string name;
  FileIdentity identity;
};

/// A Trash that is ready to take something.
struct Place {
  Descriptor entries;
  Descriptor records;
  std::string top; ///< what recorded paths are relative to; empty for absolute ones
};

/// Without any link; empty when it is not there.
std::string realFolder(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
  return real ? real.get() : std::string();
}

std::string joined(const std::string& folder, const std::string& name) {
  return folder == "/" ? folder + name : folder + "/" + name;
}

/// Finds the source. The path of something that was picked must lead to it without any link; other paths may
/// pass links.
std::optional<Source> findSource(const TrashRequest& request) {
  errno = ENOENT;
  const auto slash = request.path.rfind('/');
  if (!request.path.starts_with('/') || !isPlainName(request.path.substr(slash + 1))) return std::nullopt;
  Source source;
  source.name = request.path.substr(slash + 1);
  const auto parent =
      request.picked ? request.path.substr(0, slash) : realFolder(request.path.substr(0, slash + 1));
  if (parent.empty() && slash > 0) return std::nullopt;
  source.path = joined(parent.empty() ? "/" : parent, source.name);
  source.folder = plainFolder(parent.empty() ? "/" : parent);
  if (!source.folder) return std::nullopt;
  const auto status = statusOf(source.folder.get(), source.name.c_str());
  if (!status) return std::nullopt;
  source.identity = identityOf(*status);
  if (request.picked && *request.picked != source.identity) {
    errno = ENOENT;
    return std::nullopt;
  }
  return source;
}

/// A folder of the Trash, made when it is missing. It must be a real folder of the user's own.
Descriptor ownFolder(int parent, const std::string& name, uid_t user) {
  if (mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST) return {};
  Descriptor folder(openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  if (folder && fstat(folder.get(), &status) == 0 && status.st_uid == user) return folder;
  errno = EACCES;
  return {};
}

std::optional<Place> placeIn(const Descriptor& trash, std::string top, uid_t user) {
  if (!trash) return std::nullopt;
  Place place{ownFolder(trash.get(), "files", user), {}, std::move(top)};
  if (place.entries) place.records = ownFolder(trash.get(), "info", user);
  if (!place.records) return std::nullopt;
  return place;
}

/// An administrator's ".Trash" counts only when nobody can pull it away: a real folder with the sticky bit.
Descriptor sharedTrash(int top) {
  const auto status = statusOf(top, ".Trash");
  if (!status || !S_ISDIR(status->st_mode) || !(status->st_mode & S_ISVTX)) return {};
  return Descriptor(openat(top, ".Trash", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

std::optional<Place> volumePlace(const std::string& top, uid_t user) {
  const Descriptor folder = plainFolder(top);
  if (!folder) return std::nullopt;
  if (const Descriptor shared = sharedTrash(folder.get()))
    if (auto place = placeIn(ownFolder(shared.get(), std::to_string(user), user), top, user)) return place;
  return placeIn(ownFolder(folder.get(), ".Trash-" + std::to_string(user), user), top, user);
}

std::optional<Place> homePlace(const std::string& dataHome, uid_t user) {
  if (!ensurePrivateFolder(dataHome)) return std::nullopt;
  const Descriptor folder(open(dataHome.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  return folder ? placeIn(ownFolder(folder.get(), "Trash", user), "", user) : std::nullopt;
}

bool writeAll(const Descriptor& file, std::string_view text) {
  while (!text.empty()) {
    const auto written = write(file.get(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(std::size_t(written));
  }
  return fdatasync(file.get()) == 0;
}

/// Renames without ever replacing anything. File systems that don't know how to are asked first.
bool renameNew(int from, const std::string& name, int to, const std::string& newName) {
  if (renameat2(from, name.c_str(), to, newName.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  if (statusOf(to, newName.c_str())) {
    errno = EEXIST;
    return false;
  }
  return renameat(from, name.c_str(), to, newName.c_str()) == 0;
}

/// Moves the source under one name; false with EEXIST when the name is taken.
bool moveAs(const Source& source, const Place& place, const std::string& name, const std::string& record) {
  const std::string recordName = name + std::string(trashInfoSuffix);
  const int records = place.records.get();
  {
    const Descriptor file(
        openat(records, recordName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) return false;
    if (writeAll(file, record) && renameNew(source.folder.get(), source.name, place.entries.get(), name)) {
      const auto moved = statusOf(place.entries.get(), name.c_str());
      if (moved && identityOf(*moved) == source.identity) return true;
      // Something else took its place in the last moment: that is put back.
      renameNew(place.entries.get(), name, source.folder.get(), source.name);
      errno = ENOENT;
    }
  }
  const int error = errno;
  unlinkat(records, recordName.c_str(), 0);
  errno = error;
  return false;
}

Outcome moveInto(const Source& source, const Place& place, const LocalTime& now) {
  constexpr int mostAttempts = 10'000;
  const auto top = place.top == "/" ? std::string_view() : std::string_view(place.top);
  const auto origin = place.top.empty() ? std::string_view(source.path)
                                        : std::string_view(source.path).substr(top.size() + 1);
  const auto record = trashInfo(origin, now);
  for (int attempt = 1; attempt <= mostAttempts; ++attempt) {
    if (moveAs(source, place, trashName(source.name, attempt), record)) return success();
    if (errno == EXDEV) return Failure{localized("It can't be moved to the Trash without copying it.")};
    if (errno != EEXIST) return failure(errno);
  }
  return failure(EEXIST);
}

/// True for the Trash itself, what is in it and what it is in.
bool touches(const std::string& path, const std::string& trash) {
  return isInside(path, trash) || isInside(trash, path);
}

} // namespace

LinuxTrash::LinuxTrash(std::string home, std::string dataHome, uid_t user, const Clock& clock,
                       const TimeZone& zone, std::string mountInfo)
    : home_(std::move(home)), dataHome_(std::move(dataHome)), user_(user), clock_(clock), zone_(zone),
      mountInfo_(std::move(mountInfo)) {}

std::vector<Mount> LinuxTrash::mounts() const {
  return parseMountInfo(readFile(mountInfo_, largestMountTable).value_or(""));
}

std::vector<Outcome> LinuxTrash::move(const std::vector<TrashRequest>& requests) {
  const auto table = mounts();
  const auto places = mountedPlaces(table);
  const auto dataHome = reachableDataHome(BlockingPlaces(places, realFolder(home_)));
  std::vector<Outcome> outcomes;
  for (const auto& request : requests) outcomes.push_back(move(request, table, places, dataHome));
  return outcomes;
}

Outcome LinuxTrash::move(const TrashRequest& request, const std::vector<Mount>& mounts,
                         const std::vector<MountedPlace>& places, const std::string& dataHome) const {
  // Moved, a mount would go on living below the Trash. Asked before the path is looked at, which may block.
  if (const auto* mount = mountInside(request.path, places)) return Failure{refusal(*mount)};
  const auto source = findSource(request);
  if (!source) return failure(errno == ELOOP || errno == ENOTDIR ? ENOENT : errno);
  if (const auto* mount = mountInside(source->path, places)) return Failure{refusal(*mount)};

  const bool hasHome = !dataHome.empty();
  if (hasHome) ensurePrivateFolder(dataHome);
  const auto homeTrash = joined(hasHome ? realFolder(dataHome) : "", "Trash");
  const auto top = mountPointOf(source->path, mounts);
  const auto volumeTrash = joined(top, ".Trash");
  if ((hasHome && touches(source->path, homeTrash)) || isInside(source->path, volumeTrash) ||
      isInside(source->path, volumeTrash + "-" + std::to_string(user_)))
    return Failure{localized("The Trash can't be moved to the Trash.")};

  const bool atHome = hasHome && top == mountPointOf(homeTrash, mounts);
  if (!atHome && !isEmptied(top, mounts)) return failure(EXDEV);
  const auto place = atHome ? homePlace(dataHome, user_) : volumePlace(top, user_);
  if (!place) return failure(atHome ? errno : EXDEV);
  return moveInto(*source, *place, localTime(zone_, clock_.now()));
}

/// The data home, which need not exist; empty when its Trash can't be looked at without waiting for a server.
std::string LinuxTrash::reachableDataHome(const BlockingPlaces& blocking) const {
  auto path = linksResolved(dataHome_, blocking);
  return blocking.hold(joined(path, "Trash")) ? std::string() : path;
}

/// Whether `folders` looks for a Trash at a mount: nothing is put where it is not found again.
bool LinuxTrash::isEmptied(const std::string& top, const std::vector<Mount>& mounts) const {
  const auto known = mountsForFiles(mounts, realFolder(home_));
  return std::ranges::find(known, top, &Mount::mountPoint) != known.end();
}

std::vector<TrashFolder> LinuxTrash::folders() {
  std::vector<TrashFolder> folders;
  std::set<std::pair<std::uint64_t, std::uint64_t>> known; // device and inode
  const auto table = mounts();
  const auto places = mountedPlaces(table);
  const auto home = realFolder(home_);
  const BlockingPlaces blocking(places, home);
  std::unordered_set<std::string_view> mountPoints; // of the table
  for (const auto& mount : table) mountPoints.insert(mount.mountPoint);
  const auto add = [&](const std::string& parent, const std::string& name) {
    const auto trash = joined(parent, name);
    // What somebody mounted there was not thrown away.
    if (mountPoints.contains(trash + "/files") || mountPoints.contains(trash + "/info")) return;
    if (blocking.hold(trash)) return;
    const auto status = statusOf(AT_FDCWD, trash.c_str());
    if (!status || !S_ISDIR(status->st_mode) || status->st_uid != user_) return;
    if (const auto identity = identityOf(*status); !known.emplace(identity.device, identity.inode).second)
      return;
    folders.push_back({trash + "/files", trash + "/info", std::string(trashInfoSuffix)});
  };
  if (const auto own = reachableDataHome(blocking); !own.empty()) add(own, "Trash");
  for (const auto& mount : mountsForFiles(table, home)) {
    const auto top = realFolder(mount.mountPoint);
    if (top.empty()) continue;
    const Descriptor folder = plainFolder(top);
    if (folder && !blocking.hold(joined(top, ".Trash")) && sharedTrash(folder.get()))
      add(joined(top, ".Trash"), std::to_string(user_));
    add(top, ".Trash-" + std::to_string(user_));
  }
  return folders;
}

} // namespace korvell
