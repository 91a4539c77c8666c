#include "Base/SystemQueue.h"

#include "Base/macOS/DispatchQueue.h"

namespace korvell {

QueueFactory systemQueueFactory() {
  return [](std::string label) { return std::make_unique<DispatchQueue>(std::move(label)); };
}

QueueFactory utilityQueueFactory() {
  return [](std::string label) {
    return std::make_unique<DispatchQueue>(std::move(label), DispatchQueue::Priority::utility);
  };
}

} // namespace korvell
