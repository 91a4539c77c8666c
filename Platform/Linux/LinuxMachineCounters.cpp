#include "Platform/Linux/LinuxMachineCounters.h"

#include "Base/Text.h"
#include "Platform/Formats/LinuxMemory.h"
#include "Platform/Formats/LinuxProcessor.h"
#include "Platform/Formats/MountTable.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace korvell {

namespace {
/// Files that the kernel writes in one piece come with the first reading.
constexpr std::size_t oneReading = 8192;
} // namespace

std::optional<VolumeSpace> volumeSpace(const std::string& mountPoint) {
  // Single files can be mount points too (containers get their host names that way); those are no volumes.
  const int folder = ::open(mountPoint.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return std::nullopt;
  struct statvfs space {};
  const bool told = ::fstatvfs(folder, &space) == 0;
  ::close(folder);
  if (!told) return std::nullopt;
  return VolumeSpace{std::int64_t(space.f_blocks * space.f_frsize),
                     std::int64_t(space.f_bavail * space.f_frsize)};
}

LinuxMachineCounters::LinuxMachineCounters(LinuxMachineRoots roots, std::shared_ptr<SharedReadings> shared)
    : roots_(std::move(roots)),
      shared_(shared ? std::move(shared) : std::make_shared<SharedReadings>(roots_.proc, roots_.sys)),
      stat_(roots_.proc + "/stat"), load_(roots_.proc + "/loadavg"), stall_(roots_.proc + "/pressure/memory"),
      arc_(roots_.proc + "/spl/kstat/zfs/arcstats"), disks_(roots_.proc, roots_.sys),
      links_(roots_.proc, roots_.sys),
      graphics_(roots_.proc, roots_.sys, roots_.pciIDs, roots_.nvidiaLibrary), power_(roots_.sys, shared_) {
  graphics_.find(reader_);
  power_.find(reader_);
}

CPUCounters LinuxMachineCounters::cpu() {
  constexpr std::size_t most = 4 << 20;
  CPUCounters counters;
  if (const auto text = load_.readBeginning(reader_, oneReading)) counters.load1 = parseLoadAverage(*text);
  // Behind the cores stands a line with a figure for every interrupt, hundreds of kilobytes on large
  // machines.
  for (; statBytes_ <= most; statBytes_ *= 2) {
    const auto text = stat_.readBeginning(reader_, statBytes_);
    if (!text) break;
    if (auto cores = parseProcStat(*text)) {
      counters.cores = std::move(*cores);
      break;
    }
    if (text->size() < statBytes_) break;
  }
  return counters;
}

MemoryCounters LinuxMachineCounters::memory() {
  const auto& info = shared_->memory(SharedReadings::Half::machine, reader_).info;
  if (!info) return {};
  const auto stallText = stall_.readBeginning(reader_, oneReading);
  const auto stall = stallText ? parseMemoryStall(*stallText) : std::nullopt;
  const auto arcText = arc_.read(reader_);
  const auto arc = arcText ? parseReclaimableARC(*arcText) : 0;
  return memoryCounters(*info, stall, disks_.zramBytes(reader_), arc);
}

std::map<std::uint64_t, ByteCounters> LinuxMachineCounters::disks() { return disks_.counters(reader_); }

std::vector<Volume> LinuxMachineCounters::volumes() {
  graphics_.find(reader_);
  power_.find(reader_);
  std::vector<Volume> volumes;
  const auto table = reader_.read(roots_.proc + "/self/mountinfo");
  for (const auto& mount : volumesWorthShowing(parseMountInfo(table.value_or(std::string_view{})))) {
    if (const auto space = roots_.spaceOf(mount.mountPoint))
      volumes.push_back({{}, mount.mountPoint, space->total, space->available});
  }
  return volumes;
}

std::vector<InterfaceCounters> LinuxMachineCounters::interfaces() { return links_.counters(reader_); }
std::vector<GPUCounters> LinuxMachineCounters::gpus() { return graphics_.counters(reader_); }
PowerReading LinuxMachineCounters::power() { return power_.read(reader_); }

MachineFacts LinuxMachineCounters::facts() {
  MachineFacts facts;
  facts.chipName = chipName();
  facts.graphicsName = graphics_.name(reader_);
  countCores(facts);
  return facts;
}

std::string LinuxMachineCounters::chipName() {
  KeptFile processors(roots_.proc + "/cpuinfo");
  if (const auto text = processors.readBeginning(reader_, oneReading)) // one of many processors is enough
    if (auto name = parseCPUModel(*text); !name.empty()) return name;
  // Boards name themselves in the device tree, with a zero byte at the end.
  const auto model = reader_.read(roots_.proc + "/device-tree/model");
  return model ? std::string(trimmed(model->substr(0, model->find('\0')))) : std::string{};
}

void LinuxMachineCounters::countCores(MachineFacts& facts) {
  const auto online = cpuList(roots_.sys + "/devices/system/cpu/online");
  facts.logicalProcessors = online.empty() ? std::max(1, int(cpu().cores.size())) : int(online.size());

  // Intel's hybrid processors list their kinds of cores; the third kind is a slow one as well.
  const auto fast = cpuList(roots_.sys + "/devices/cpu_core/cpus");
  const auto slow = cpuList(roots_.sys + "/devices/cpu_atom/cpus");
  const auto slowest = cpuList(roots_.sys + "/devices/cpu_lowpower/cpus");
  if (!fast.empty() && !slow.empty()) {
    facts.performanceCores = int(fast.size());
    facts.efficiencyCores = int(slow.size() + slowest.size());
    return;
  }
  for (const char* file : {"/cpu_capacity", "/acpi_cppc/highest_perf"}) {
    std::vector<std::uint64_t> capacities;
    for (const int number : online) {
      const auto text = reader_.read(roots_.sys + "/devices/system/cpu/cpu" + std::to_string(number) + file);
      const auto capacity = text ? parseInteger<std::uint64_t>(trimmed(*text)) : std::nullopt;
      if (capacity) capacities.push_back(*capacity);
    }
    if (capacities.size() != online.size()) continue;
    const auto kinds = coreKinds(capacities);
    facts.performanceCores = kinds.performance;
    facts.efficiencyCores = kinds.efficiency;
    if (kinds != CoreKinds{}) return;
  }
}

std::vector<int> LinuxMachineCounters::cpuList(const std::string& path) {
  const auto text = reader_.read(path);
  return text ? parseCPUList(*text) : std::vector<int>{};
}

} // namespace korvell
