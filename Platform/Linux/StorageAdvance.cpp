#include "Platform/Linux/StorageAdvance.h"

namespace korvell {

namespace {

std::uint64_t difference(std::uint64_t a, std::uint64_t b) { return a > b ? a - b : 0; }

ProcessIO operator-(const ProcessIO& a, const ProcessIO& b) {
  return {difference(a.read, b.read), difference(a.written, b.written)};
}

} // namespace

ProcessIO StorageAdvance::inheritedOf(const ProcessIO& process, const LiveThreads& liveThreads) const {
  const auto live = liveThreads();
  return live ? process - *live : process - (last_ - inherited_);
}

void StorageAdvance::begin(const ProcessIO& process, std::uint64_t childFaults,
                           const LiveThreads& liveThreads) {
  last_ = total_ = process;
  childFaults_ = childFaults;
  inherited_ = childFaults != 0 ? inheritedOf(process, liveThreads) : ProcessIO{};
}

void StorageAdvance::advance(const ProcessIO& process, std::uint64_t childFaults,
                             const LiveThreads& liveThreads) {
  auto own = process - last_;
  if (childFaults != childFaults_ && own != ProcessIO{}) {
    const auto inherited = inheritedOf(process, liveThreads);
    own = own - (inherited - inherited_);
    inherited_ = inherited;
  }
  childFaults_ = childFaults;
  last_ = process;
  total_.read += own.read;
  total_.written += own.written;
}

} // namespace korvell
