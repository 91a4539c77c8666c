#pragma once
// Widgets that a test places; it answers when the test says so.

#include "Platform/WidgetCenter.h"

#include <utility>
#include <vector>

namespace korvell {

class FakeWidgetCenter final : public WidgetCenter {
public:
  std::uint64_t current = 0; ///< the stamp
  int reloads = 0;

  void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override {
    waiting_.push_back(std::move(answer));
  }
  std::uint64_t stamp() const override { return current; }
  void reloadAllTimelines() override { ++reloads; }

  std::size_t asked() const { return waiting_.size(); }
  void answer(std::optional<std::size_t> placed) {
    for (const auto& each : std::exchange(waiting_, {})) each(placed);
  }

private:
  std::vector<std::function<void(std::optional<std::size_t>)>> waiting_;
};

} // namespace korvell
