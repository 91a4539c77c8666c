#include "Audio/PacedChanges.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

/// A timer may come a rounding error before its time.
constexpr Seconds rounding{1e-6};

} // namespace

PacedChanges::PacedChanges(Queue& queue, Send send)
    : queue_(queue), send_(std::move(send)), timer_(queue.timer([this] { pass(); })) {}

void PacedChanges::add(const std::string& target, const SoundChange& change) {
  auto& waiting = rows_[target].waiting;
  if (change.volume) waiting.volume = change.volume;
  if (change.muted) waiting.muted = change.muted;
  pass();
}

SoundChange PacedChanges::waiting(const std::string& target) const {
  const auto row = rows_.find(target);
  return row == rows_.end() ? SoundChange() : row->second.waiting;
}

void PacedChanges::pass() {
  const auto now = queue_.clock().monotonic();
  std::optional<Seconds> due;
  for (auto row = rows_.begin(); row != rows_.end();) {
    auto& [target, state] = *row;
    const bool isEmpty = state.waiting == SoundChange();
    if (state.next > now + rounding) {
      if (!isEmpty) due = std::min(due.value_or(state.next), state.next);
      ++row;
    } else if (isEmpty) {
      row = rows_.erase(row);
    } else {
      state.next = now + pause;
      send_(target, std::exchange(state.waiting, {}));
      ++row;
    }
  }
  if (due) timer_->schedule(*due - now, Seconds(0), Seconds(0));
}

void PacedChanges::finish() {
  timer_->cancel();
  for (const auto& [target, state] : std::exchange(rows_, {}))
    if (state.waiting != SoundChange()) send_(target, state.waiting);
}

} // namespace korvell
