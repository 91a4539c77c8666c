#include "Helper/Linux/UsageReader.h"

#include "Helper/Shared/RusageService.h"
#include "Platform/Formats/ProcessFiles.h"

namespace korvell {

namespace {

/// Enough for every process of one whole request and of those before it.
constexpr std::size_t mostKnown = 2 * RusageService::mostProcesses;
/// One process must not use up the time of all.
constexpr std::int64_t mostThreads = 512;

} // namespace

void UsageReader::beginRequest() {
  ++request_;
  if (known_.size() > mostKnown)
    std::erase_if(known_, [this](const auto& entry) { return entry.second.request + 1 < request_; });
  if (known_.size() > mostKnown) known_.clear();
}

std::optional<RusageSample> UsageReader::read(ProcessID pid) {
  const auto statText = proc_.read(pid, "stat");
  const auto stat =
      statText.access == ProcDirectory::Access::ok ? parseProcessStat(statText.text) : std::nullopt;
  if (!stat) return std::nullopt;
  const auto start = stat->start, childFaults = stat->childMinorFaults;
  const auto ioText = proc_.read(pid, "io");
  const auto io = ioText.access == ProcDirectory::Access::ok ? parseProcessIO(ioText.text) : std::nullopt;
  if (!io) return std::nullopt;

  auto [entry, isNew] = known_.try_emplace(pid);
  auto& known = entry->second;
  const auto threads = [&]() -> std::optional<ProcessIO> {
    return stat->threads <= mostThreads ? liveThreads(pid) : std::nullopt;
  };
  if (isNew || known.start != start) {
    known = {start, request_, {}};
    known.storage.begin(*io, childFaults, threads);
  } else {
    known.request = request_;
    known.storage.advance(*io, childFaults, threads);
  }
  const auto& own = known.storage.total();
  return RusageSample{.diskRead = own.read, .diskWritten = own.written, .start = start};
}

std::optional<ProcessIO> UsageReader::liveThreads(ProcessID pid) {
  if (proc_.numbers(pid, "task", threads_) != ProcDirectory::Access::ok) return std::nullopt;
  ProcessIO sum;
  for (const int thread : threads_) {
    const auto text = proc_.read(pid, ("task/" + std::to_string(thread) + "/io").c_str());
    const auto io = text.access == ProcDirectory::Access::ok ? parseProcessIO(text.text) : std::nullopt;
    if (!io) continue; // it has ended
    sum.read += io->read;
    sum.written += io->written;
  }
  return sum;
}

} // namespace korvell
