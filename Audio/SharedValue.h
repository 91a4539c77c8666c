#pragma once
// One value of a stream that both Korvell and others set. The system tells every change, its own and others'
// alike and some time later; what was sent and has not come back yet is known here, so that an echo is never
// taken for somebody else's wish. What has not come back within seconds never will: a value that was in force
// already is told to nobody.

#include "Base/Date.h"

#include <cmath>
#include <deque>
#include <optional>

namespace korvell {

enum class ValueNews {
  none,   ///< as it was
  ours,   ///< what was sent has arrived
  others, ///< somebody else has set it
};

template <class T>
class SharedValue {
public:
  static constexpr Seconds echoTime{5};
  /// So long what was sent is shown as if it were in force. Echoes take milliseconds.
  static constexpr Seconds shownTime{1};

  void sent(T value, Seconds now) { sent_.push_back({value, now}); }

  ValueNews told(T value, Seconds now) {
    while (!sent_.empty() && now - sent_.front().at > echoTime) sent_.pop_front();
    const bool isFirst = !told_, isChange = isFirst || !isSame(*told_, value);
    told_ = value;
    for (auto sent = sent_.begin(); sent != sent_.end(); ++sent)
      if (isSame(sent->value, value)) {
        // Earlier ones were overtaken: servers tell the last of several quick changes only.
        sent_.erase(sent_.begin(), std::next(sent));
        return ValueNews::ours;
      }
    return isChange && !isFirst ? ValueNews::others : ValueNews::none;
  }

  /// What is in force once everything that was sent has arrived; absent before anything is known.
  std::optional<T> value(Seconds now) const {
    const bool isAwaited = !sent_.empty() && now - sent_.back().at <= shownTime;
    return isAwaited ? sent_.back().value : told_;
  }

private:
  struct Sent {
    T value;
    Seconds at;
  };
  /// Servers keep volumes in whole steps, or as other powers of them.
  static bool isSame(double a, double b) { return std::abs(a - b) < 0.002; }
  static bool isSame(bool a, bool b) { return a == b; }

  std::optional<T> told_;
  std::deque<Sent> sent_;
};

} // namespace korvell
