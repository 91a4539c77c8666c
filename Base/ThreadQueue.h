#pragma once
// A serial queue with one thread of its own, which bears the queue's label. The thread sleeps until a task is
// added or a timer is due; a timer's leeway is handed to the kernel as that sleep's slack. The thread leaves
// signals to the others. A queue that is destroyed by one of its own tasks lets that task end by itself.

#include "Base/QueueCore.h"

#include <thread>

namespace korvell {

class ThreadQueue final : public Queue {
public:
  explicit ThreadQueue(std::string label);
  ~ThreadQueue() override;
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  const std::string& label() const override { return label_; }
  void async(Task task) override;
  void sync(const Task& task) override;
  [[nodiscard]] std::unique_ptr<Timer> timer(Task handler) override;
  bool isCurrent() const override;
  const Clock& clock() const override;

private:
  struct Shared;
  static void run(const std::shared_ptr<Shared>& shared, const std::string& label);

  const std::string label_;
  std::shared_ptr<Shared> shared_; ///< outlives the queue when a task destroys it
  std::thread thread_;
};

} // namespace korvell
