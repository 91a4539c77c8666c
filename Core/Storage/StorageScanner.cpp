#include "Core/Storage/StorageScanner.h"

#include "Core/Storage/StorageFound.h"
#include "Core/Storage/StorageLog.h"

#include <algorithm>
#include <mutex>

namespace korvell {

/// Sees to it that every clean-up is logged, once: on the main queue, where it is told, or, when the scanner
/// has ended by then, by whoever learns of it last.
class StorageScanner::Logbook {
public:
  explicit Logbook(UserDefaults& defaults) : defaults_(defaults) {}

  /// On the work queue. False when nobody is there any more to tell it to; it is logged then.
  bool handOver(const std::shared_ptr<const Cleanup>& cleanup, Date now) {
    {
      const std::lock_guard lock(mutex_);
      if (!closed_) waiting_.push_back(cleanup);
      if (!closed_) return true;
    }
    record(*cleanup, now);
    return false;
  }
  [[nodiscard]] bool log(const std::shared_ptr<const Cleanup>& cleanup, Date now) {
    {
      const std::lock_guard lock(mutex_);
      std::erase(waiting_, cleanup);
    }
    return record(*cleanup, now);
  }
  void close(Date now) {
    std::vector<std::shared_ptr<const Cleanup>> untold;
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
      untold.swap(waiting_);
    }
    for (const auto& cleanup : untold) record(*cleanup, now);
  }

private:
  bool record(const Cleanup& cleanup, Date now) {
    return StorageLog::record(freedBytes(cleanup.plan, cleanup.outcome).logged(), now, defaults_);
  }

  UserDefaults& defaults_;
  std::mutex mutex_;
  bool closed_ = false;
  std::vector<std::shared_ptr<const Cleanup>> waiting_; ///< done, and to be told on the main queue
};

StorageScanner::StorageScanner(StorageWork work, UserDefaults& defaults, Queue& mainQueue, Queue& workQueue)
    : result(mainQueue), isScanning(mainQueue), progress(mainQueue), step(mainQueue), notice(mainQueue),
      working(mainQueue), selection(mainQueue), feedback(mainQueue),
      freedTotal(mainQueue, StorageLog::total(defaults)),
      work_(std::make_shared<const StorageWork>(std::move(work))), defaults_(defaults), mainQueue_(mainQueue),
      workQueue_(workQueue), logbook_(std::make_shared<Logbook>(defaults)) {}

StorageScanner::~StorageScanner() {
  if (task_) task_->cancel();
  ending_.cancel();
  logbook_->close(mainQueue_.clock().now());
}

std::optional<std::int64_t> StorageScanner::reclaimableBytes() const {
  return *result ? std::optional((*result)->reclaimableBytes()) : std::nullopt;
}

void StorageScanner::tellScanned(bool isCurrent) {
  if (const auto scanned = std::exchange(scanned_, {})) scanned(isCurrent);
}

void StorageScanner::scan(const std::vector<StorageKind>& kinds, std::function<void(bool)> done) {
  if (task_) task_->cancel();
  const auto generation = ++generation_;
  tellScanned(false);
  if (!isCurrent(generation)) return done ? done(false) : void(); // who heard that started another one
  scanned_ = std::move(done);
  isScanning.set(true);
  progress.set(0);
  step.set("");
  result.set(std::nullopt);
  selection.set({});
  if (!isCurrent(generation)) return; // an observer started another one
  const Cancellation task;
  task_ = task;

  // Runs on the work queue; the scanner itself is touched on the main queue only.
  workQueue_.async([work = work_, watch = life_.watch(), main = &mainQueue_, task, generation, kinds] {
    const auto hand = [&](std::function<void(StorageScanner&)> apply) {
      main->async([watch, generation, apply = std::move(apply)] {
        if (auto* scanner = watch.get(); scanner && scanner->isCurrent(generation)) apply(*scanner);
      });
    };
    std::vector<StorageCategory> categories;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      if (task.isCancelled()) return;
      const auto kind = kinds[i];
      hand([kind, done = double(i) / double(kinds.size())](StorageScanner& scanner) {
        scanner.begin(kind, done);
      });
      if (auto found = work->measure(kind, task)) categories.push_back(std::move(*found));
    }
    if (task.isCancelled()) return;
    hand([categories = std::move(categories), kinds](StorageScanner& scanner) {
      scanner.end(categories, kinds);
    });
  });
}

void StorageScanner::begin(StorageKind kind, double done) {
  step.set(title(kind));
  progress.set(done);
  if (work_->asksForAccess && isPrivacyProtected(kind))
    notice.set(
        localized("macOS may ask Korvell for access to this folder. The scan continues once you answer."));
  else
    notice.setIfChanged(std::nullopt);
}

void StorageScanner::end(std::vector<StorageCategory> categories, const std::vector<StorageKind>& kinds) {
  task_.reset();
  progress.set(1);
  step.set("");
  notice.setIfChanged(std::nullopt);
  isScanning.set(false);
  const StorageScanResult found{std::move(categories), mainQueue_.clock().now()};
  StorageFound::remember(found, kinds, defaults_);
  result.set(found);
  tellScanned(true);
}

void StorageScanner::cancel() {
  if (!*isScanning) return;
  if (task_) task_->cancel();
  task_.reset();
  ++generation_;
  step.set("");
  notice.setIfChanged(std::nullopt);
  isScanning.set(false);
  tellScanned(false);
}

void StorageScanner::forgetFeedback() { feedback.set(std::nullopt); }

void StorageScanner::interrupt() {
  ++interruptions_;
  std::exchange(ending_, Cancellation()).cancel();
}

void StorageScanner::clean(const std::vector<StorageItem>& items,
                           std::function<void(const CleanupReport&)> done) {
  std::vector<StorageItem> idle;
  std::ranges::copy_if(items, std::back_inserter(idle),
                       [&](const StorageItem& item) { return !working->contains(item.kind); });
  auto plan = *result ? CleanupPlan::of(**result, idle) : CleanupPlan{};
  if (plan.empty()) {
    feedback.set(FreedBytes{}.feedback());
    return done ? done({.feedback = FreedBytes{}.feedback()}) : void();
  }

  auto busy = *working;
  for (const auto& [kind, category] : plan.before) busy.insert(kind);
  working.set(std::move(busy));
  workQueue_.async([work = work_, watch = life_.watch(), logbook = logbook_, ending = ending_,
                    main = &mainQueue_, plan = std::move(plan), done = std::move(done)]() mutable {
    auto outcome = carryOut(plan, *work, ending);
    auto cleanup =
        std::make_shared<const Cleanup>(Cleanup{std::move(plan), std::move(outcome), std::move(done)});
    if (!logbook->handOver(cleanup, main->clock().now())) return;
    main->async([watch, cleanup] {
      if (auto* scanner = watch.get()) scanner->finish(cleanup);
    });
  });
}

void StorageScanner::finish(const std::shared_ptr<const Cleanup>& done) {
  const auto& cleanup = *done;
  const auto& outcome = cleanup.outcome;
  CleanupReport report{.freed = freedBytes(cleanup.plan, outcome),
                       .problems = outcome.problems,
                       .interrupted = outcome.interrupted,
                       .commandFailed = outcome.commandFailed};
  report.feedback = korvell::feedback(outcome, report.freed);
  if (!logbook_->log(done, mainQueue_.clock().now()))
    report.problems.insert(
        report.problems.begin(),
        localized("What was freed could not be added to the log or to its total in the settings."));
  freedTotal.set(StorageLog::total(defaults_));

  auto ticked = *selection;
  auto busy = *working;
  for (const auto& [kind, category] : cleanup.plan.before) busy.erase(kind);
  for (const auto& cleaned : cleanup.plan.steps)
    for (const auto& item : cleaned.items) ticked.erase(item.id);
  selection.setIfChanged(std::move(ticked));
  // A scan that was started meanwhile measures everything itself.
  if (*result) {
    result.set(merged(**result, cleanup.plan, outcome));
    std::vector<StorageKind> cleaned;
    for (const auto& [kind, category] : cleanup.plan.before) cleaned.push_back(kind);
    StorageFound::remember(**result, cleaned, defaults_);
  }
  working.set(std::move(busy));
  feedback.set(report.feedback);
  if (cleanup.done) cleanup.done(report);
}

std::vector<StorageKind> allStorageKinds() {
  std::vector<StorageKind> kinds;
  for (const auto& row : allCases<StorageKind>()) kinds.push_back(row.value);
  return kinds;
}

} // namespace korvell
