#include "Core/Storage/StorageWords.h"

namespace korvell {

std::span<const LocalizedText> linuxStorageWords() {
  static constexpr LocalizedText words[] = {
      {"Your Mac", "Your computer"},
      {"Files apps keep in ~/Library/Caches. Apps rebuild them, but some may sign you out or download "
       "content "
       "again.",
       "Files apps keep in ~/.cache. Apps rebuild them, but some may sign you out or download content "
       "again."},
      {"Showing the 10 largest of {count} folders. macOS caches are left alone.",
       "Showing the 10 largest of {count} folders."},
      {"Permanently deletes everything in your Trash (~/.Trash). This cannot be undone.",
       "Permanently deletes everything in your Trash, on every disk. This cannot be undone."},
      {"Korvell needs Full Disk Access to see inside the Trash. Allow it in System Settings › Privacy & "
       "Security.",
       "Korvell may not look inside the Trash. Check the permissions of its folder."},
  };
  return words;
}

} // namespace korvell
