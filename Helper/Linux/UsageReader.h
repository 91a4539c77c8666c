#pragma once
// Reads what the kernel hides of other users' processes: their storage bytes. With them comes the start time,
// which tells whether the answer means the process that was asked about. Processor time and memory anybody
// may read, so they are left 0 here, as is energy.
//
// Keeps, of each process asked about lately, what its ended children passed on to it, so that only its own
// bytes are told. One thread.

#include "Helper/Shared/RusageSample.h"
#include "Platform/Linux/ProcDirectory.h"
#include "Platform/Linux/StorageAdvance.h"

#include <optional>
#include <unordered_map>
#include <vector>

namespace korvell {

class UsageReader {
public:
  /// `proc` is the root of the process file system.
  explicit UsageReader(std::string proc = "/proc") : proc_(std::move(proc)) {}

  std::optional<RusageSample> read(ProcessID pid);
  /// At the start of each request: forgets processes that nobody asks about any more.
  void beginRequest();

private:
  struct Known {
    std::uint64_t start = 0;
    std::uint64_t request = 0;
    StorageAdvance storage;
  };
  std::optional<ProcessIO> liveThreads(ProcessID pid);

  ProcDirectory proc_;
  std::unordered_map<ProcessID, Known> known_;
  std::uint64_t request_ = 0;
  std::vector<int> threads_;
};

} // namespace korvell
