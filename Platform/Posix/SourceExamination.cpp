#include "Platform/Posix/SourceExamination.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace korvell {

std::optional<double> readingMicroseconds(const Clock* clock, const std::function<void()>& reading) {
  if (!clock) return std::nullopt;
  constexpr int times = 7;
  std::vector<double> costs;
  for (int i = 0; i < times; ++i) {
    const auto begin = clock->monotonic();
    reading();
    costs.push_back((clock->monotonic() - begin).count() * 1e6);
  }
  std::ranges::nth_element(costs, costs.begin() + times / 2);
  return costs[times / 2];
}

SourceReport::State fileState(const std::string& path) {
  using enum SourceReport::State;
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno == ENOENT || errno == ENOTDIR ? missing : refused;
  char byte;
  const bool isReadable = ::read(descriptor, &byte, 1) > 0;
  ::close(descriptor);
  return isReadable ? readable : refused;
}

} // namespace korvell
