#pragma once
// How running widgets are counted: each holds a lock on a file of its own in one folder. A widget that was
// killed holds nothing, so it does not count; its file goes when the next widget is placed.

#include "Base/FileLock.h"
#include "Base/UserFolders.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace korvell {

class PlacedWidget {
public:
  /// Counts until it ends. Nothing when the folder can't be written.
  static std::optional<PlacedWidget> place(const std::string& folder);
  PlacedWidget(PlacedWidget&& other) noexcept
      : path_(std::exchange(other.path_, {})), lock_(std::move(other.lock_)) {}
  PlacedWidget& operator=(PlacedWidget&&) = delete;
  ~PlacedWidget();

  /// How many there are; nothing when the folder can't be read, none when it is not there.
  static std::optional<std::size_t> count(const std::string& folder);
  /// Another value after a widget came or went in good order; one look at the folder.
  static std::uint64_t stamp(const std::string& folder);

private:
  PlacedWidget(std::string path, FileLock lock) : path_(std::move(path)), lock_(std::move(lock)) {}
  std::string path_;
  std::optional<FileLock> lock_;
};

/// The folder in which this user's widgets count.
std::string placedWidgetsFolder(const UserFolders& folders);

} // namespace korvell
