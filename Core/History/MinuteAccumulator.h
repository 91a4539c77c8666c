#pragma once
// Sums the samples of one minute and makes the minute's rows of them. Pure; used on the history's queue.

#include "Core/History/HistoryTypes.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvell {

/// The start of the minute that an instant lies in, as Unix time.
std::int64_t minuteOf(Date date);

HistorySample historySample(const SystemSnapshot& snapshot, std::optional<int> score);

/// How many applications are kept for each value. The kept set is the union over the values, so that a
/// minute has at most 90 rows, usually far fewer.
inline constexpr std::size_t keptAppsPerValue = 15;

/// The applications worth a row: for every value but the graphics processor's the largest ones above 0.
/// In the order of `apps`.
std::vector<HistoryApp> keptApps(std::vector<HistoryApp> apps);

class MinuteAccumulator {
public:
  bool isEmpty() const { return sampleCount_ < 1; }
  std::int64_t minute() const { return minute_; }

  /// Adds a sample to its minute. A sample of another minute than the one being summed is only to be added
  /// after take().
  void add(HistorySample&& sample);
  /// The minute's means and kept applications; afterwards the accumulator is empty.
  HistoryMinute take();

private:
  std::int64_t minute_ = 0;
  int sampleCount_ = 0;
  double scoreSum_ = 0;
  int scoreCount_ = 0;
  HistoryValues systemSums_{};
  std::vector<HistoryApp> appSums_; ///< in the order of their first sample
  std::unordered_map<std::string, std::size_t> appIndex_;
};

} // namespace korvell
