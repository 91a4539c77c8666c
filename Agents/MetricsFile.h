#pragma once
// Keeps the text file for a collector up to date while the setting names one: after a cycle, but not more
// often than collectors look. Main queue only; written on a queue of its own, for the disk may be slow. A
// file that can't be written is told once, until it could be again or another one is named. When the setting
// is removed the file stays: it says itself how old its figures are.

#include "App/AppModel.h"
#include "Base/Trouble.h"

#include <functional>
#include <memory>
#include <string>

namespace korvell {

class MetricsFile {
public:
  static constexpr Seconds interval{15};
  using Tell = std::function<void(const Trouble&)>;

  /// All outlive it. `tell` is called on the main queue.
  MetricsFile(Queue& main, AppModel& model, const UserDefaults& defaults, const QueueFactory& makeQueue,
              std::string version, Tell tell);

private:
  void cycle();
  void hear(const std::string& path, const std::string& trouble);

  Queue& main_;
  const AppModel& model_;
  const UserDefaults& defaults_;
  const std::string version_;
  const Tell tell_;
  std::string trouble_; ///< the last that was told; empty while all is well
  std::optional<Seconds> last_;
  bool isWriting_ = false;
  Lifeline<MetricsFile> life_{*this};
  std::unique_ptr<Queue> disk_;
  Subscription cycles_;
};

} // namespace korvell
