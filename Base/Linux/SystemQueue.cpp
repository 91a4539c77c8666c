#include "Base/SystemQueue.h"

#include "Base/ThreadQueue.h"

#include <sys/resource.h>

namespace korvell {

QueueFactory systemQueueFactory() {
  return [](std::string label) { return std::make_unique<ThreadQueue>(std::move(label)); };
}

QueueFactory utilityQueueFactory() {
  return [](std::string label) {
    constexpr int niceness = 10;
    auto queue = std::make_unique<ThreadQueue>(std::move(label));
    queue->async([] { setpriority(PRIO_PROCESS, 0, niceness); }); // of the calling thread, on Linux
    return queue;
  };
}

} // namespace korvell
