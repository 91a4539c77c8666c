#include "Base/SystemQueue.h"

#include "Base/ThreadQueue.h"

namespace korvell {

QueueFactory systemQueueFactory() {
  return [](std::string label) { return std::make_unique<ThreadQueue>(std::move(label)); };
}

} // namespace korvell
