#include "Platform/Posix/PlacedWidget.h"

#include "Base/UUID.h"
#include "Platform/Posix/FileStatus.h"

#include <bit>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace korvell {

namespace {

namespace fs = std::filesystem;

constexpr const char* suffix = ".placed";

/// Nothing when the folder can't be read.
std::optional<std::vector<std::string>> registrations(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> paths;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (entry->path().extension() == suffix) paths.push_back(entry->path().string());
  if (error && error != std::errc::no_such_file_or_directory) return std::nullopt;
  return paths;
}

/// The lock is on the file of that name, not on one that was taken away meanwhile.
bool isOn(const FileLock& lock, const std::string& path) {
  struct stat held {
  }, named{};
  return fstat(lock.descriptor(), &held) == 0 && lstat(path.c_str(), &named) == 0 &&
         held.st_ino == named.st_ino && held.st_dev == named.st_dev;
}

} // namespace

std::optional<PlacedWidget> PlacedWidget::place(const std::string& folder) {
  if (!ensurePrivateFolder(folder)) return std::nullopt;
  for (const auto& path : registrations(folder).value_or(std::vector<std::string>()))
    if (const auto left = FileLock::acquire(path, Seconds(0))) unlink(path.c_str());
  // Another widget that is being placed may take a file that is not locked yet for one that was left.
  for (int attempt = 0; attempt < 8; ++attempt) {
    const auto path = folder + "/" + randomUUID() + suffix;
    auto lock = FileLock::acquire(path, Seconds(0));
    if (lock && isOn(*lock, path)) return PlacedWidget(path, std::move(*lock));
  }
  return std::nullopt;
}

PlacedWidget::~PlacedWidget() {
  if (!path_.empty()) unlink(path_.c_str());
}

std::optional<std::size_t> PlacedWidget::count(const std::string& folder) {
  const auto paths = registrations(folder);
  if (!paths) return std::nullopt;
  std::size_t held = 0;
  for (const auto& path : *paths) held += FileLock::isHeld(path) ? 1 : 0;
  return held;
}

std::uint64_t PlacedWidget::stamp(const std::string& folder) {
  struct stat info {};
  if (stat(folder.c_str(), &info) != 0) return 0;
  return std::bit_cast<std::uint64_t>(modifiedDate(info).sinceEpoch);
}

std::string placedWidgetsFolder(const UserFolders& folders) { return folders.data + "/Widget/Placed"; }

} // namespace korvell
