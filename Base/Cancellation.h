#pragma once
// A wish to stop, shared by whoever asks and whoever works. Copies share one flag; from any thread. Work that
// may take longer than a tenth of a second looks at it in between and then returns whatever it has: the
// caller knows that it cancelled and drops it.

#include <atomic>
#include <memory>

namespace korvell {

class Cancellation {
public:
  void cancel() const { flag_->store(true, std::memory_order_relaxed); }
  bool isCancelled() const { return flag_->load(std::memory_order_relaxed); }

private:
  std::shared_ptr<std::atomic<bool>> flag_ = std::make_shared<std::atomic<bool>>(false);
};

} // namespace korvell
