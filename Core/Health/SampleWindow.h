#pragma once
// The last hour of one application, a sample every ten seconds at most.

#include "Base/Date.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace korvell {

struct UsageSample {
  Date date;
  double cpu = 0;     ///< percent of the whole machine
  double memory = 0;  ///< bytes
  double disk = 0;    ///< bytes a second, read and written
  double network = 0; ///< bytes a second, in and out
};

/// A ring that grows to what an hour needs and no further; oldest first.
class SampleWindow {
public:
  static constexpr Seconds span{3600};
  static constexpr Seconds interval{10}; ///< between samples
  static constexpr std::size_t most = std::size_t(span / interval) + 1;
  /// How much of a period may be missing at its beginning: samples never come exactly on time.
  static constexpr Seconds slack{20};

  /// Forgets what is older than the span before the sample, or later than the sample itself.
  void add(const UsageSample& sample);

  bool empty() const { return count_ == 0; }
  std::size_t size() const { return count_; }
  const UsageSample& oldest() const { return at(0); }
  const UsageSample& newest() const { return at(count_ - 1); }

  /// The mean of one figure over the samples of the last `period`; nothing when they do not cover it.
  std::optional<double> average(double UsageSample::*figure, Seconds period, Date now) const;

private:
  const UsageSample& at(std::size_t index) const { return ring_[(first_ + index) % ring_.size()]; }
  void grow();

  std::vector<UsageSample> ring_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

} // namespace korvell
