#include "Base/DatabaseFile.h"

#include "Base/Descriptor.h"
#include "Base/Localization.h"
#include "Base/UserFolders.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace korvell {

namespace {

constexpr const char* databaseSuffixes[] = {"-wal", "-shm", ""};

std::string folderOf(const std::string& path) { return std::filesystem::path(path).parent_path().string(); }

/// Takes everybody else's permissions away from what is the user's and of that type.
void makePrivate(const std::string& path, mode_t type, mode_t mode) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0 || (info.st_mode & S_IFMT) != type || info.st_uid != geteuid()) return;
  if ((info.st_mode & 0077) != 0) chmod(path.c_str(), mode);
}

/// Too little for a log's first pages, by what users other than root may take.
bool isFull(const std::string& folder) {
  constexpr std::uint64_t least = 64 << 10;
  struct statvfs room {};
  return statvfs(folder.c_str(), &room) == 0 && std::uint64_t(room.f_bavail) * room.f_frsize < least;
}

} // namespace

Database openPrivateDatabase(const std::string& path, int* errorCode) {
  const auto folder = folderOf(path);
  ensurePrivateFolder(folder);
  makePrivate(folder, S_IFDIR, 0700);
  // Made here, because SQLite would take the mode from the umask; it gives its logs the mode of the file.
  const Descriptor made(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
  for (const char* suffix : databaseSuffixes) makePrivate(path + suffix, S_IFREG, 0600);
  return Database::open(path, Database::Mode::readWriteCreate, errorCode);
}

DatabaseFault faultOf(const std::string& path, int code) {
  using enum DatabaseFault;
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    if (lstat(path.c_str(), &info) == 0) return danglingLink;
  } else if (!S_ISREG(info.st_mode)) {
    return notAFile;
  }
  if (meansDamage(code)) return damaged;
  const int primary = code & 0xff;
  if (primary == SQLITE_BUSY || primary == SQLITE_LOCKED) return locked;
  const auto folder = folderOf(path);
  if (primary == SQLITE_FULL || isFull(folder)) return full;
  const bool exists = access(path.c_str(), F_OK) == 0;
  const bool isWritable = access(folder.c_str(), W_OK) == 0 && (!exists || access(path.c_str(), W_OK) == 0);
  return primary == SQLITE_READONLY || primary == SQLITE_PERM || !isWritable ? denied : failing;
}

Trouble troubleOf(DatabaseFault fault, const std::string& path) {
  std::string_view text;
  for (const auto& row : allCases<DatabaseFault>())
    if (row.value == fault) text = row.title;
  return troubleOf(text, {{"path", path}});
}

std::string sentence(DatabaseFault fault, const std::string& path) { return troubleOf(fault, path).text; }

bool meansDamage(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

bool hasMoved(const Database& database) {
  int moved = 0;
  if (database) sqlite3_file_control(database.handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved != 0;
}

std::optional<std::string> moveAside(const std::string& path, Date now) {
  const std::filesystem::path file = path;
  const auto date = std::chrono::system_clock::time_point(
      std::chrono::duration_cast<std::chrono::system_clock::duration>(Seconds{now.sinceEpoch}));
  const auto extension = file.extension().string();
  const auto stem = fmt::format("{}-damaged-{:%Y-%m-%d-%H%M%S}", file.stem().string(),
                                fmt::gmtime(std::chrono::system_clock::to_time_t(date)));
  std::error_code error;
  auto target = file.parent_path() / (stem + extension);
  for (int i = 2; std::filesystem::exists(target, error); ++i)
    target = file.parent_path() / fmt::format("{}-{}{}", stem, i, extension);
  // The logs first: a log without its database is nothing, a new database with a foreign log is damaged.
  for (const char* suffix : databaseSuffixes)
    std::filesystem::rename(path + suffix, target.string() + suffix, error);
  return error ? std::nullopt : std::optional(target.string());
}

} // namespace korvell
