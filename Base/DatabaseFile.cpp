#include "Base/DatabaseFile.h"

#include <filesystem>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sqlite3.h>

namespace korvell {

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
  const auto stem = fmt::format("{}-damaged-{:%Y-%m-%d-%H%M%S}", file.stem().string(),
                                fmt::gmtime(std::chrono::system_clock::to_time_t(date)));
  std::error_code error;
  auto target = file.parent_path() / (stem + ".sqlite");
  for (int i = 2; std::filesystem::exists(target, error); ++i)
    target = file.parent_path() / fmt::format("{}-{}.sqlite", stem, i);
  // The logs first: a log without its database is nothing, a new database with a foreign log is damaged.
  for (const char* suffix : {"-wal", "-shm", ""})
    std::filesystem::rename(path + suffix, target.string() + suffix, error);
  return error ? std::nullopt : std::optional(target.string());
}

} // namespace korvell
