#pragma once
// Where the pictures of applications lie on a free desktop: a name is looked up in the chosen icon theme, in
// those that it inherits, in "hicolor", and at last among the loose pictures. Reads the disk; for one thread,
// which is not the main one.

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// What the Icon key of a desktop entry says: a name, or an absolute path; nothing without one.
std::optional<std::string> entryIcon(std::string_view entry);

class IconTheme {
public:
  struct Options {
    /// The folders that "icons" and "pixmaps" lie in, the first one first. Absolute.
    std::vector<std::string> dataFolders;
    std::string theme;                   ///< as the desktop has chosen; empty for none
    std::vector<std::string> extensions; ///< of what can be shown, the best one first: "png", "svg"
  };
  explicit IconTheme(Options options) : options_(std::move(options)) {}

  /// The file of the picture that is best for so many device pixels a side; nothing when there is none.
  std::optional<std::string> find(const std::string& name, int pixels);

private:
  struct Folder {
    std::string name; ///< below the theme's own
    int least = 0, most = 0;
  };
  struct Theme {
    std::vector<std::string> places; ///< the theme's folders
    std::vector<Folder> folders;
    std::vector<std::string> inherits;
  };
  const Theme& theme(const std::string& name);
  /// Each theme once, the chosen one first.
  std::vector<std::string> chain();
  std::optional<std::string> findIn(const Theme& theme, const std::string& name, int pixels) const;

  const Options options_;
  std::map<std::string, Theme> themes_;
};

} // namespace korvell
