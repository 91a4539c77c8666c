#pragma once
// Where the user put the widget and in which size: "widget.json" in Korvell's configuration folder, written
// by the widget alone. A file that is missing or damaged is the large one, wherever the desktop puts it.

#include "Base/UserFolders.h"
#include "Widget/WidgetPage.h"

namespace korvell {

struct WidgetPlace {
  WidgetSize size = WidgetSize::large;
  std::optional<int> x, y; ///< the top left corner in logical pixels of the desktop

  bool operator==(const WidgetPlace&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"size", &WidgetPlace::size}, Field{"x", &WidgetPlace::x},
                      Field{"y", &WidgetPlace::y}};
  }

  static WidgetPlace load(const UserFolders& folders);
  /// False when it can't be written: the widget stays where it is until it ends.
  [[nodiscard]] bool save(const UserFolders& folders) const;
};

} // namespace korvell
