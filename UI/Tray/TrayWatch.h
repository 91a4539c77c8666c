#pragma once
// Whether the desktop has a place for the tray item. At login the panel may start after Korvell, and it may
// be restarted; the item is made when there is a place, because the toolkit decides only once which kind of
// tray it talks to. Main thread only.

#include <functional>
#include <memory>

namespace korvell {

class TrayWatch {
public:
  enum class State {
    unknown, ///< nobody has answered yet
    absent,
    present,
  };

  /// `changed` is told once the first answer is there, and when a place appears later.
  explicit TrayWatch(std::function<void(State)> changed);
  ~TrayWatch();
  TrayWatch(const TrayWatch&) = delete;
  TrayWatch& operator=(const TrayWatch&) = delete;

  /// Whether the place is a menu bar: wide, and tinting what it shows; a square in any other tray.
  static bool isMenuBar();

private:
  struct Search;
  std::unique_ptr<Search> search_;
};

} // namespace korvell
