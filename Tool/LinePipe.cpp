#include "Tool/LinePipe.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <unistd.h>

namespace korvell {

void LinePipe::send(std::string_view line) {
  if (isBroken_) return;
  pending_.append(line).push_back('\n');
}

void LinePipe::whenFetched(Task task) { pending_.empty() ? task() : void(fetched_ = std::move(task)); }

std::vector<pollfd> LinePipe::polled() {
  std::vector<pollfd> polled;
  if (isReading_ && pending_.size() < mostPending) polled.push_back({in_, POLLIN, 0});
  if (!pending_.empty()) polled.push_back({out_, POLLOUT, 0});
  return polled;
}

void LinePipe::ready(const std::vector<pollfd>& polled) {
  for (const auto& file : polled) {
    if (!file.revents) continue;
    file.fd == in_ && (file.events & POLLIN) ? read() : write();
  }
}

void LinePipe::read() {
  char buffer[64 << 10];
  const auto count = ::read(in_, buffer, sizeof buffer);
  if (count > 0) lines_.add({buffer, std::size_t(count)}, take_);
  if (count == 0) lines_.end(take_);
  if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) end();
}

void LinePipe::write() {
  // A pipe that can be written takes so much at once without waiting.
  const auto count = ::write(out_, pending_.data(), std::min<std::size_t>(pending_.size(), PIPE_BUF));
  if (count > 0) pending_.erase(0, std::size_t(count));
  if (count < 0 && errno != EINTR && errno != EAGAIN) {
    isBroken_ = true;
    pending_.clear();
    end();
  }
  if (pending_.empty() && fetched_) std::exchange(fetched_, {})();
}

void LinePipe::end() {
  if (std::exchange(isReading_, false)) ended_();
}

} // namespace korvell
