#include "Core/AIUsage/Scan.h"

#include "Base/CPUTime.h"

#include <system_error>
#include <thread>

namespace korvell {

namespace {

constexpr std::size_t mostBatchBytes = std::size_t{512} << 10;
constexpr std::size_t mostWaitingBytes = std::size_t{1} << 20;

} // namespace

Scan::Scan(LogFiles& files, const TimeZone& zone, std::string home, Date now, Accounting& accounting,
           std::vector<ScanTask>& tasks, ScanProgress progress, Cancellation cancellation)
    : files_(files), zone_(zone), home_(std::move(home)), now_(now), accounting_(accounting), tasks_(tasks),
      progress_(std::move(progress)), cancellation_(std::move(cancellation)) {}

Seconds Scan::run(int threads) {
  std::vector<std::thread> helpers;
  for (int i = 1; i < threads && std::size_t(i) < tasks_.size(); ++i) {
    try {
      helpers.emplace_back([this] {
        work();
        const std::scoped_lock lock(mutex_);
        helpersTime_ += threadCPUTime();
      });
    } catch (const std::system_error&) {
      break; // no more threads to be had: those that run do it all
    }
  }
  work();
  for (auto& helper : helpers) helper.join();
  return helpersTime_;
}

void Scan::work() {
  LineTools tools(zone_, home_, now_);
  BlockBuffer buffer;
  for (std::size_t index = next_++; index < tasks_.size(); index = next_++) read(index, tools, buffer);
}

void Scan::read(std::size_t index, LineTools& tools, BlockBuffer& buffer) {
  auto& task = tasks_[index];
  auto batch = std::make_unique<EventBatch>();
  const auto log = stopped() ? nullptr : files_.open(task.path);
  if (log) {
    LineBlocks blocks(*log, buffer, task.state.offset);
    ClaudeLines claude(tools, *batch);
    CodexLines codex(tools, *batch, task.state);
    std::string_view lines;
    while (!stopped() && blocks.next(lines)) {
      task.tool == AITool::claude ? claude.lines(lines) : codex.lines(lines);
      task.state.offset = blocks.offset();
      report(std::int64_t(lines.size()));
      if (batch->bytes() > mostBatchBytes) mergeInTurn(index, *batch);
    }
    task.state.offset = blocks.offset();
  }
  finish(index, std::move(batch));
}

void Scan::mergeInTurn(std::size_t index, EventBatch& batch) {
  {
    std::unique_lock lock(mutex_);
    turn_.wait(lock, [&] { return due_ == index; });
  }
  // While this file is due and not finished, nobody else merges.
  accounting_.merge(tasks_[index].tool, tasks_[index].state, batch);
  stopped_ = accounting_.failed();
  batch.clear();
}

void Scan::finish(std::size_t index, Batch batch) {
  std::unique_lock lock(mutex_);
  waitingBytes_ += batch->bytes();
  waiting_.emplace(index, std::move(batch));
  if (!merging_) mergeDue(lock);
  // The file that is due is in the hands of another thread, which waits for nobody.
  turn_.wait(lock, [&] { return waitingBytes_ <= mostWaitingBytes || waiting_.empty(); });
}

/// Merges outside the lock, so that other threads go on reading while the database takes its time.
void Scan::mergeDue(std::unique_lock<std::mutex>& lock) {
  merging_ = true;
  for (auto due = waiting_.begin(); due != waiting_.end() && due->first == due_; due = waiting_.begin()) {
    const Batch batch = std::move(waiting_.extract(due).mapped());
    auto& task = tasks_[due_];
    lock.unlock();
    accounting_.merge(task.tool, task.state, *batch);
    accounting_.finishFile(task.path, task.state);
    lock.lock();
    stopped_ = accounting_.failed();
    waitingBytes_ -= batch->bytes();
    ++due_;
    turn_.notify_all();
  }
  merging_ = false;
}

void Scan::report(std::int64_t bytes) {
  if (!progress_) return;
  const std::scoped_lock lock(progressMutex_);
  progress_(bytesRead_ += bytes);
}

} // namespace korvell
