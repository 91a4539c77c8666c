#include "Bench/UI/BusyHome.h"

#include "Base/UserFolders.h"
#include "Bench/AIUsage/LogGenerator.h"
#include "Bench/History/Month.h"
#include "Core/History/HistoryStore.h"

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace korvell {

namespace {

namespace fs = std::filesystem;

constexpr int projects = 200;

void write(const fs::path& file, std::size_t bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream(file) << std::string(bytes, 'x');
}

/// Dependencies count as stale when nothing around them has changed for a month.
void addOldProject(const fs::path& project) {
  write(project / "package.json", 100);
  write(project / "node_modules" / "library" / "index.js", 20'000);
  const auto then = fs::file_time_type::clock::now() - std::chrono::hours(24 * 90);
  fs::last_write_time(project / "package.json", then);
  fs::last_write_time(project / "node_modules", then);
  fs::last_write_time(project, then);
}

} // namespace

void fillHome(const std::string& home, std::int64_t now) {
  const auto folders = linuxUserFolders(
      [&](std::string_view name) { return name == "HOME" ? std::optional(home) : std::nullopt; });
  ensurePrivateFolder(folders.data);
  generateMonth(folders.data + "/" + std::string(HistoryStore::fileName), now, 15);
  generateLogs(home, 30'000'000, 60, 1, now);
  for (int i = 0; i < projects; ++i) addOldProject(fs::path(home) / "code" / fmt::format("project-{:03}", i));
}

} // namespace korvell
