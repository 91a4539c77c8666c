#pragma once
// Zones made of the instants at which their clocks change.

#include "Base/LocalTime.h"

#include <atomic>
#include <utility>
#include <vector>

namespace korvell {

class FakeTimeZone final : public TimeZone {
public:
  explicit FakeTimeZone(int offset = 0) : initial_(offset) {}
  /// `changes` are (instant, offset from then on), ascending.
  FakeTimeZone(int offset, std::vector<std::pair<std::int64_t, int>> changes)
      : initial_(offset), changes_(std::move(changes)) {}

  int secondsFromGMT(std::int64_t instant) const override {
    ++asked;
    int offset = initial_;
    for (const auto& [from, next] : changes_)
      if (instant >= from) offset = next;
    return offset;
  }
  void reload() override {
    if (afterReload_) initial_ = *std::exchange(afterReload_, std::nullopt);
  }
  /// The user moves: the next reload() sees it.
  void move(int offset) { afterReload_ = offset; }

  mutable std::atomic<int> asked = 0; ///< scans ask from several threads

private:
  int initial_;
  std::vector<std::pair<std::int64_t, int>> changes_;
  std::optional<int> afterReload_;
};

} // namespace korvell
