#pragma once
// A serial queue over the system's own: dispatch queues and their timer sources, which save more power than a
// thread of ours because the system merges their wake-ups. No dispatch type stands in this header: the same
// name is another type in Objective-C++.

#include "Base/Queue.h"

namespace korvell {

class DispatchQueue final : public Queue {
public:
  enum class Priority { usual, utility };
  explicit DispatchQueue(std::string label, Priority priority = Priority::usual);
  ~DispatchQueue() override;
  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;

  const std::string& label() const override { return label_; }
  void async(Task task) override;
  void sync(const Task& task) override;
  [[nodiscard]] std::unique_ptr<Timer> timer(Task handler) override;
  bool isCurrent() const override;
  const Clock& clock() const override { return clock_; }

private:
  struct Shared;
  const std::string label_;
  const SystemClock clock_;
  std::shared_ptr<Shared> shared_;
};

} // namespace korvell
