#pragma once
// Who shows the application's widgets: the widget framework on macOS; on Linux the running widgets
// themselves, each of which holds a file for as long as it lives.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace korvell {

class WidgetCenter {
public:
  virtual ~WidgetCenter() = default;
  /// How many widgets are placed. `answer` is called once, on any thread, perhaps before this returns;
  /// nothing when that could not be found out.
  virtual void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) = 0;
  /// Another value after a widget was placed or removed, where that can be told at a glance; else always the
  /// same. Called every few seconds.
  virtual std::uint64_t stamp() const { return 0; }
  /// Asks for what all widgets show to be made anew. From any thread.
  virtual void reloadAllTimelines() = 0;
};

/// Nobody has a widget.
class NoWidgetCenter final : public WidgetCenter {
public:
  void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override { answer(0); }
  void reloadAllTimelines() override {}
};

} // namespace korvell
