#include "Platform/Linux/AutostartFile.h"

#include "Base/Files.h"
#include "Platform/WidgetLoginItem.h"

#include <filesystem>

namespace korvell {

namespace {

constexpr std::size_t mostBytes = 64 << 10;

} // namespace

AutostartFile::AutostartFile(const UserFolders& folders, std::string program, const std::string& fileName,
                             AutostartTitle title)
    : folder_(folders.configHome + "/autostart"), path_(folder_ + "/" + fileName),
      program_(std::move(program)), title_(title) {}

std::unique_ptr<LoginItem> makeWidgetLoginItem(const UserFolders& folders, std::string program) {
  return std::make_unique<AutostartFile>(
      folders, std::move(program), "korvell-widget.desktop",
      AutostartTitle{"Korvell Widget", "Shows this computer's health on the desktop"});
}

bool AutostartFile::isEnabled() const {
  const auto text = readFile(path_, mostBytes);
  return text && isAutostartEnabled(*text);
}

Outcome AutostartFile::setEnabled(bool enabled) {
  const auto failure = Failure{localized("{path} can't be written.", {{"path", path_}})};
  int error = 0;
  const auto text = readFile(path_, mostBytes, &error);
  if (!text && error != ENOENT) return failure;
  if (enabled && program_.empty()) return Failure{localized("Korvell's own program is not found.")};
  if (!enabled && !(text && isAutostartEnabled(*text))) return success();
  // Like the desktops' own: others may read it.
  std::error_code ignored;
  std::filesystem::create_directories(folder_, ignored);
  if (!replaceFile(path_, autostartEntry(text.value_or(""), program_, enabled, title_))) return failure;
  return success();
}

bool AutostartFile::isThere() const {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path_, error));
}

Outcome AutostartFile::remove() {
  std::error_code error;
  std::filesystem::remove(path_, error);
  if (error) return Failure{localized("{path} can't be written.", {{"path", path_}})};
  return success();
}

} // namespace korvell
