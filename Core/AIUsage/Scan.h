#pragma once
// Reading files with several threads, with the result of one thread that reads them one after the other.
//
// Threads take the files in order and turn lines into events; events are merged in the order of the files,
// by whichever thread finishes the one that is due. A thread whose file is not due keeps its events for
// later; when many wait, it waits itself, so that memory does not grow with the logs.

#include "Base/Cancellation.h"
#include "Core/AIUsage/Accounting.h"
#include "Core/AIUsage/LineBlocks.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace korvell {

struct ScanTask {
  AITool tool = AITool::claude;
  std::string path;
  FileState state; ///< as the scan begins; advanced by it
};

/// Bytes read so far. Called from the reading threads, one at a time.
using ScanProgress = std::function<void(std::int64_t bytes)>;

class Scan {
public:
  Scan(LogFiles& files, const TimeZone& zone, std::string home, Date now, Accounting& accounting,
       std::vector<ScanTask>& tasks, ScanProgress progress, Cancellation cancellation = {});

  /// Works through all tasks and returns the CPU time of the threads that it started. The calling thread is
  /// one of the `threads`.
  Seconds run(int threads);

private:
  using Batch = std::unique_ptr<EventBatch>;

  void work();
  void read(std::size_t index, LineTools& tools, BlockBuffer& buffer);
  void mergeInTurn(std::size_t index, EventBatch& batch);
  void finish(std::size_t index, Batch batch);
  void mergeDue(std::unique_lock<std::mutex>& lock);
  bool stopped() const { return stopped_ || cancellation_.isCancelled(); }
  void report(std::int64_t bytes);

  LogFiles& files_;
  const TimeZone& zone_;
  std::string home_;
  Date now_;
  Accounting& accounting_;
  std::vector<ScanTask>& tasks_;
  ScanProgress progress_;
  Cancellation cancellation_;

  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> stopped_ = false; ///< the accounting failed, going on is pointless
  std::mutex mutex_;                  ///< guards what follows
  std::condition_variable turn_;
  std::size_t due_ = 0;  ///< the file whose events are merged next, by the thread that works on it or
  bool merging_ = false; ///< by one that merges what is due; the accounting is that one thread's
  std::map<std::size_t, Batch> waiting_;
  std::size_t waitingBytes_ = 0;
  Seconds helpersTime_{0};

  std::mutex progressMutex_;
  std::int64_t bytesRead_ = 0;
};

} // namespace korvell
