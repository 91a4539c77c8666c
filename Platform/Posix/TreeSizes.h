#pragma once
// The allocated sizes of many trees at once, on several threads.
//
// The calling thread works alone until it has met enough entries for a second thread to be worth its start.
// From then on a thread without work takes the next tree, or half of the folders that wait on the highest
// level of a thread that has some; asking costs a busy thread one look at a counter for each folder.

#include "Base/Cancellation.h"
#include "Platform/Posix/FolderWalk.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

namespace korvell {

template <class Reader>
class TreeSizes {
public:
  TreeSizes(const std::vector<std::string>& paths, unsigned threads, const Cancellation& cancellation)
      : paths_(paths), threads_(std::max(threads, 1u)), cancellation_(cancellation), sums_(paths.size()) {}

  std::vector<std::int64_t> measure() {
    work(true);
    for (auto& helper : helpers_) helper.join();
    return std::move(sums_);
  }

private:
  static constexpr std::uint64_t entriesBeforeHelp = 500;
  static constexpr std::uint64_t entriesBetweenChecks = 256;

  struct Job {
    std::size_t path = 0;
    std::optional<typename FolderWalk<Reader>::Share> share; ///< absent: the whole path
  };

  struct Worker {
    FolderWalk<Reader> walk;
    std::uint64_t mount = 0; ///< that the present tree lies on
    std::int64_t sum = 0;
    std::uint64_t entries = 0;
  };

  void work(bool first) {
    Worker worker;
    while (auto job = take()) {
      worker.sum = 0;
      run(worker, *job, first);
      std::lock_guard lock(mutex_);
      sums_[job->path] += worker.sum;
    }
  }

  /// The next piece of work; nothing when all is done. A thread that waits here is counted as hungry.
  std::optional<Job> take() {
    std::unique_lock lock(mutex_);
    ++hungry_;
    for (;;) {
      if (cancellation_.isCancelled()) nextPath_ = paths_.size(), shared_.clear();
      if (!shared_.empty() || nextPath_ < paths_.size()) break;
      if (hungry_ == running_) {
        changed_.notify_all();
        return std::nullopt;
      }
      changed_.wait(lock);
    }
    --hungry_;
    if (shared_.empty()) return Job{nextPath_++, std::nullopt};
    Job job = std::move(shared_.front());
    shared_.pop_front();
    return job;
  }

  void run(Worker& worker, Job& job, bool first) {
    const auto visit = [&](int folder, const char* name, FileKind kind) {
      if (++worker.entries % entriesBetweenChecks == 0 && cancellation_.isCancelled()) return Next::stop;
      if (kind == FileKind::folder) return Next::descend;
      if (kind == FileKind::regular) add(worker, Reader::size(folder, name));
      return Next::skip;
    };
    if (job.share) {
      worker.mount = Reader::mount(job.share->parent->get());
      worker.walk.begin(std::move(*job.share));
    } else if (Descriptor folder(open(paths_[job.path].c_str(), folderFlags)); folder) {
      worker.mount = Reader::mount(folder.get());
      worker.walk.begin(std::move(folder), visit);
    } else if (const auto size = Reader::size(AT_FDCWD, paths_[job.path].c_str())) {
      worker.mount = size->mount;
      add(worker, size);
    }
    while (!cancellation_.isCancelled() && worker.walk.step(visit)) {
      if (first && helpers_.size() + 1 < threads_ && worker.entries > entriesBeforeHelp) startHelpers();
      if (hungry_.load(std::memory_order_relaxed) > 0) feed(worker, job.path);
    }
  }

  static void add(Worker& worker, const std::optional<typename Reader::Size>& size) {
    if (size && size->regular && size->links < 2 && size->mount == worker.mount)
      worker.sum += size->allocated;
  }

  void feed(Worker& worker, std::size_t path) {
    std::unique_lock lock(mutex_, std::try_to_lock);
    if (!lock || shared_.size() >= std::size_t(hungry_.load())) return;
    auto share = worker.walk.share();
    if (!share) return;
    shared_.push_back({path, std::move(share)});
    changed_.notify_one();
  }

  void startHelpers() {
    std::lock_guard lock(mutex_);
    try {
      while (helpers_.size() + 1 < threads_) {
        helpers_.emplace_back([this] { work(false); });
        ++running_;
      }
    } catch (const std::system_error&) {
      // No more threads to be had: those that run do it.
      threads_ = unsigned(helpers_.size()) + 1;
    }
  }

  const std::vector<std::string>& paths_;
  unsigned threads_;
  const Cancellation& cancellation_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t nextPath_ = 0;   // guarded by mutex_
  std::deque<Job> shared_;     // guarded by mutex_
  int running_ = 1;            // threads at work or hungry; guarded by mutex_
  std::atomic<int> hungry_{0}; // written under mutex_
  std::vector<std::int64_t> sums_;
  std::vector<std::thread> helpers_; // the calling thread's
};

} // namespace korvell
