#include "Helper/Shared/RusageService.h"

#include "Platform/Formats/UsagePackets.h"

#include <algorithm>

namespace korvell {

static_assert(UsagePackets::mostProcesses == RusageService::mostProcesses);
static_assert(UsagePackets::recordSize == RusageSample::recordSize);

RusageService::RusageService(Reader reader, std::function<void()> onRequest)
    : reader_(std::move(reader)), onRequest_(std::move(onRequest)) {}

RusageSample::Map RusageService::rusage(std::span<const ProcessID> pids) const {
  noteRequest();
  return read(pids.first(std::min(pids.size(), mostProcesses)));
}

RusageSample::Map RusageService::read(std::span<const ProcessID> pids) const {
  RusageSample::Map samples;
  for (const ProcessID pid : pids) {
    if (pid < 1 || samples.contains(pid)) continue;
    if (const auto sample = reader_(pid)) samples.emplace(pid, *sample);
  }
  return samples;
}

} // namespace korvell
