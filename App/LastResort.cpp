#include "App/LastResort.h"

#include <cstdlib>

namespace korvell {

LastResort::LastResort(Seconds limit, int exitStatus)
    : thread_([this, limit, exitStatus] {
        std::unique_lock lock(mutex_);
        if (!over_.wait_for(lock, limit, [this] { return isOver_; })) std::_Exit(exitStatus);
      }) {}

LastResort::~LastResort() {
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  over_.notify_one();
  thread_.join();
}

} // namespace korvell
