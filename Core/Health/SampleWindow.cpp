#include "Core/Health/SampleWindow.h"

#include <algorithm>

namespace korvell {

void SampleWindow::add(const UsageSample& sample) {
  while (count_ > 0 && newest().date > sample.date) --count_;
  while (count_ > 0 && (oldest().date < sample.date - span || count_ == most)) {
    first_ = (first_ + 1) % ring_.size();
    --count_;
  }
  if (count_ == ring_.size()) grow();
  ring_[(first_ + count_) % ring_.size()] = sample;
  ++count_;
}

void SampleWindow::grow() {
  std::vector<UsageSample> larger(std::min(most, std::max<std::size_t>(8, ring_.size() * 2)));
  for (std::size_t i = 0; i < count_; ++i) larger[i] = at(i);
  ring_ = std::move(larger);
  first_ = 0;
}

std::optional<double> SampleWindow::average(double UsageSample::*figure, Seconds period, Date now) const {
  double sum = 0;
  std::size_t taken = 0;
  while (taken < count_ && at(count_ - 1 - taken).date >= now - period) {
    sum += at(count_ - 1 - taken).*figure;
    ++taken;
  }
  if (taken == 0 || now - at(count_ - taken).date < period - slack) return std::nullopt;
  return sum / double(taken);
}

} // namespace korvell
