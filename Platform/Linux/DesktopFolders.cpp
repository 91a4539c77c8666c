#include "Platform/Linux/DesktopFolders.h"

#include "Base/Files.h"
#include "Base/Text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace korvell {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view ending = ".desktop";
constexpr size_t largestEntry = 256 * 1024;
constexpr size_t mostEntries = 10'000;

std::vector<std::string> absoluteParts(std::string_view list) {
  std::vector<std::string> parts;
  for (const auto part : split(list, ':'))
    if (part.starts_with('/')) parts.emplace_back(part);
  return parts;
}

} // namespace

DesktopFolders DesktopFolders::of(const UserFolders& folders, const Environment& environment) {
  std::vector<std::string> data = {folders.dataHome, folders.dataHome + "/flatpak/exports/share"};
  for (auto& part : absoluteParts(environment("XDG_DATA_DIRS").value_or("/usr/local/share:/usr/share")))
    data.push_back(std::move(part));
  data.insert(data.end(), {"/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"});
  std::vector<std::string> applications;
  for (const auto& folder : data)
    if (auto path = folder + "/applications"; std::ranges::find(applications, path) == applications.end())
      applications.push_back(std::move(path));
  return {std::move(applications),
          absoluteParts(environment("PATH").value_or("/usr/local/bin:/usr/bin:/bin:/usr/games"))};
}

std::uint64_t DesktopFolders::stamp() {
  std::uint64_t stamp = 0;
  for (const auto& folder : applications_) {
    struct stat info {};
    if (::stat(folder.c_str(), &info) != 0) continue;
    const auto time =
        std::uint64_t(info.st_mtim.tv_sec) * 1'000'000'000 + std::uint64_t(info.st_mtim.tv_nsec);
    stamp = stamp * 31 + time + info.st_ino;
  }
  return stamp;
}

std::vector<DesktopFile> DesktopFolders::read() {
  std::vector<DesktopFile> files;
  std::set<std::string> seen;
  for (const auto& folder : applications_) {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      const auto& path = entry->path().native();
      if (entry.depth() > 4) entry.disable_recursion_pending();
      if (!path.ends_with(ending) || files.size() >= mostEntries) continue;
      auto id = path.substr(folder.size() + 1, path.size() - folder.size() - 1 - ending.size());
      std::ranges::replace(id, '/', '-');
      if (!seen.insert(id).second) continue;
      if (auto text = readFile(path, largestEntry)) files.push_back({std::move(id), path, std::move(*text)});
    }
  }
  return files;
}

std::optional<std::string> DesktopFolders::realProgram(const std::string& program) {
  const auto real = [](const std::string& path) -> std::optional<std::string> {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    if (!resolved || ::access(resolved.get(), X_OK) != 0) return std::nullopt;
    return std::string(resolved.get());
  };
  if (program.starts_with('/')) return real(program);
  if (program.empty() || program.find('/') != std::string::npos) return std::nullopt;
  for (const auto& folder : programs_)
    if (auto path = real(folder + "/" + program)) return path;
  return std::nullopt;
}

} // namespace korvell
