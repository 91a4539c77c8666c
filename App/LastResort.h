#pragma once
// Ends the process when it is not destroyed in time: a thread that hangs in a system call, in a folder whose
// server is gone, can't be waited for.

#include "Base/Date.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace korvell {

class LastResort {
public:
  LastResort(Seconds limit, int exitStatus);
  ~LastResort();
  LastResort(const LastResort&) = delete;
  LastResort& operator=(const LastResort&) = delete;

private:
  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  std::thread thread_; ///< last: it uses the others
};

} // namespace korvell
