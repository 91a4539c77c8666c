#pragma once
// The storage clean-up as the views see it: one scan or clean-up after the other on a work queue, everything
// published on the main queue. Main queue only.
//
// Each start and each cancelling of a scan begins a new generation; what a scan of an earlier one still finds
// is dropped. A clean-up that a scan overtakes is finished all the same, and logged. One that is under way
// when the scanner ends is cut short, a command that it runs asked to end; what it freed by then is logged.

#include "Base/Cancellation.h"
#include "Base/Lifeline.h"
#include "Base/Published.h"
#include "Base/Queue.h"
#include "Core/Storage/StorageCleanup.h"
#include "Core/Storage/StorageModels.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvell {

class StorageScanner {
public:
  /// `workQueue` runs the measuring and the actions, at low priority. It is destroyed after the scanner,
  /// which does not wait for it, and before `mainQueue`, which it posts to, and `defaults`. Its destruction
  /// waits for a clean-up that is cut short.
  StorageScanner(StorageWork work, UserDefaults& defaults, Queue& mainQueue, Queue& workQueue);
  ~StorageScanner();
  StorageScanner(const StorageScanner&) = delete;
  StorageScanner& operator=(const StorageScanner&) = delete;

  Published<std::optional<StorageScanResult>> result; ///< absent before the first scan and while one runs
  Published<bool> isScanning;
  Published<double> progress;                     ///< 0 to 1
  Published<std::string> step;                    ///< the title of the kind that is measured; empty when idle
  Published<std::optional<std::string>> notice;   ///< the system may ask the user something meanwhile
  Published<std::set<StorageKind>> working;       ///< kinds that are being cleaned
  Published<std::set<std::string>> selection;     ///< ids of the ticked items
  Published<std::optional<std::string>> feedback; ///< what the last clean-up did
  Published<std::int64_t> freedTotal;             ///< bytes, over all time

  /// The sum of the categories; absent without a result.
  std::optional<std::int64_t> reclaimableBytes() const;

  /// `done` hears whether the result is that of this scan: it is not when it was cancelled or another one
  /// began.
  void scan(const std::vector<StorageKind>& kinds, std::function<void(bool)> done = {});
  /// Ends a running scan and drops what it found; nothing without one.
  void cancel();
  /// Carries out what was confirmed. Items that the present result doesn't hold as they are, and those of a
  /// kind that is being cleaned, are refused. `done` is called once, with what there is to tell.
  void clean(const std::vector<StorageItem>& items, std::function<void(const CleanupReport&)> done = {});
  /// It was read.
  void forgetFeedback();
  /// Cuts short the clean-ups that are under way and drops those that wait; they tell what they did.
  void interrupt();
  std::uint64_t interruptions() const { return interruptions_; } ///< how often that was asked for
  /// What would be done, without the rest of the scanner; it may be asked on any queue but the main one.
  const std::shared_ptr<const StorageWork>& work() const { return work_; }

private:
  struct Cleanup {
    CleanupPlan plan;
    CleanupOutcome outcome;
    std::function<void(const CleanupReport&)> done;
  };
  class Logbook;

  bool isCurrent(std::int64_t generation) const { return generation == generation_; }
  void begin(StorageKind kind, double progress);
  void end(std::vector<StorageCategory> categories, const std::vector<StorageKind>& kinds);
  void tellScanned(bool isCurrent);
  void finish(const std::shared_ptr<const Cleanup>& done);

  std::shared_ptr<const StorageWork> work_;
  UserDefaults& defaults_;
  Queue& mainQueue_;
  Queue& workQueue_;
  std::int64_t generation_ = 0;
  std::optional<Cancellation> task_;  ///< of the running scan
  std::function<void(bool)> scanned_; ///< the same one's; null when nobody wants to know
  std::uint64_t interruptions_ = 0;
  Cancellation ending_; ///< of the clean-ups
  std::shared_ptr<Logbook> logbook_;
  Lifeline<StorageScanner> life_{*this};
};

/// All kinds, in order.
std::vector<StorageKind> allStorageKinds();

} // namespace korvell
