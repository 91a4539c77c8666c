#include "Platform/macOS/MacMachineCounters.h"

#include "Base/macOS/CoreFoundation.h"
#include "Platform/Formats/InterfaceList.h"
#include "Platform/Formats/MacCounters.h"
#include "Platform/macOS/IORegistry.h"
#include "Platform/macOS/MountedVolumes.h"
#include "Platform/macOS/Sysctl.h"

#include <IOKit/ps/IOPSKeys.h>
#include <IOKit/ps/IOPowerSources.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include <algorithm>
#include <cstdlib>
#include <mach/mach_host.h>
#include <mach/processor_info.h>
#include <net/if.h>
#include <net/route.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korvell {

namespace {

std::map<std::string, std::string> interfaceDisplayNames() {
  std::map<std::string, std::string> names;
  const CFOwned<CFArrayRef> all(SCNetworkInterfaceCopyAll());
  if (!all) return names;
  for (CFIndex i = 0; i < CFArrayGetCount(all.get()); ++i) {
    const auto interface = static_cast<SCNetworkInterfaceRef>(CFArrayGetValueAtIndex(all.get(), i));
    const CFStringRef name = SCNetworkInterfaceGetBSDName(interface);
    const CFStringRef display = SCNetworkInterfaceGetLocalizedDisplayName(interface);
    if (name && display) names[cfText(name)] = cfText(display);
  }
  return names;
}

/// The buffer of host_processor_info, given back to the kernel at the end.
struct ProcessorInfo {
  processor_info_array_t info = nullptr;
  mach_msg_type_number_t count = 0; ///< integers, not bytes
  ~ProcessorInfo() {
    if (info)
      vm_deallocate(mach_task_self(), reinterpret_cast<vm_address_t>(info), count * sizeof(integer_t));
  }
};

std::optional<MacPageCounts> pageCounts(mach_port_t host) {
  vm_statistics64_data_t statistics{};
  mach_msg_type_number_t count = HOST_VM_INFO64_COUNT;
  if (host_statistics64(host, HOST_VM_INFO64, reinterpret_cast<host_info64_t>(&statistics), &count) !=
      KERN_SUCCESS)
    return std::nullopt;
  return MacPageCounts{.internal = statistics.internal_page_count,
                       .external = statistics.external_page_count,
                       .purgeable = statistics.purgeable_count,
                       .wired = statistics.wire_count,
                       .compressor = statistics.compressor_page_count};
}

/// Of the first power source: the battery.
std::optional<int> chargePercent() {
  const CFOwned<CFTypeRef> info(IOPSCopyPowerSourcesInfo());
  if (!info) return std::nullopt;
  const CFOwned<CFArrayRef> sources(IOPSCopyPowerSourcesList(info.get()));
  if (!sources || CFArrayGetCount(sources.get()) == 0) return std::nullopt;
  const CFDictionaryRef source =
      IOPSGetPowerSourceDescription(info.get(), CFArrayGetValueAtIndex(sources.get(), 0));
  if (!source) return std::nullopt;
  const auto percent = cfValue(CFDictionaryGetValue(source, CFSTR(kIOPSCurrentCapacityKey)));
  return macCount(&percent);
}

/// The battery, when its first entry can be read.
std::optional<BatteryReading> battery() {
  const auto entries = registryEntries("AppleSmartBattery");
  if (entries.empty()) return std::nullopt;
  const auto properties = registryProperties(entries.front(), macBatteryProperties);
  if (properties.isNull()) return std::nullopt;
  return macBattery(properties, chargePercent());
}

std::optional<double> adapterWatts() {
  const CFOwned<CFDictionaryRef> adapter(IOPSCopyExternalPowerAdapterDetails());
  if (!adapter) return std::nullopt;
  return cfValue(CFDictionaryGetValue(adapter.get(), CFSTR(kIOPSPowerAdapterWattsKey))).asDouble();
}

MachineFacts machineFacts() {
  const auto chip = sysctlText("machdep.cpu.brand_string");
  return {.chipName = chip,
          .graphicsName = chip, // one chip does both
          .performanceCores = sysctlValue<std::int32_t>("hw.perflevel0.logicalcpu").value_or(0),
          .efficiencyCores = sysctlValue<std::int32_t>("hw.perflevel1.logicalcpu").value_or(0),
          .logicalProcessors = std::max(1, int(sysconf(_SC_NPROCESSORS_ONLN)))};
}

std::optional<double> loadAverage() {
  double averages[3];
  if (getloadavg(averages, 3) < 1) return std::nullopt;
  return averages[0];
}

} // namespace

MacMachineCounters::MacMachineCounters()
    : host_(mach_host_self()), facts_(machineFacts()), displayNames_(interfaceDisplayNames()) {}

MacMachineCounters::~MacMachineCounters() { mach_port_deallocate(mach_task_self(), host_); }

CPUCounters MacMachineCounters::cpu() {
  CPUCounters counters{.load1 = loadAverage(), .cores = {}, .width = TickWidth::wraps32};
  ProcessorInfo processors;
  natural_t cores = 0;
  if (host_processor_info(host_, PROCESSOR_CPU_LOAD_INFO, &cores, &processors.info, &processors.count) !=
      KERN_SUCCESS)
    return counters;
  for (natural_t core = 0; core < cores && (core + 1) * CPU_STATE_MAX <= processors.count; ++core) {
    // The array's integers are signed, the ticks are not.
    const auto ticks = [&](int state) {
      return std::uint32_t(processors.info[core * CPU_STATE_MAX + state]);
    };
    counters.cores[int(core)] = {.user = ticks(CPU_STATE_USER),
                                 .system = ticks(CPU_STATE_SYSTEM),
                                 .idle = ticks(CPU_STATE_IDLE),
                                 .nice = ticks(CPU_STATE_NICE)};
  }
  return counters;
}

MemoryCounters MacMachineCounters::memory() {
  MemoryCounters memory{.total = sysctlValue<std::uint64_t>("hw.memsize").value_or(0), .use = {}};
  const auto pages = pageCounts(host_);
  if (!pages) return memory;
  memory.use = macMemory(*pages, vm_kernel_page_size);
  if (const auto swap = sysctlValue<xsw_usage>("vm.swapusage")) memory.use->swapUsed = swap->xsu_used;
  memory.use->pressure = macPressure(sysctlValue<std::int32_t>("kern.memorystatus_vm_pressure_level"));
  return memory;
}

std::map<std::uint64_t, ByteCounters> MacMachineCounters::disks() {
  std::map<std::uint64_t, ByteCounters> disks;
  for (const auto& entry : registryEntries("IOBlockStorageDriver")) {
    std::uint64_t id = 0;
    if (IORegistryEntryGetRegistryEntryID(entry.get(), &id) != KERN_SUCCESS) continue;
    if (const auto bytes = macDiskCounters(registryProperties(entry, macDiskProperties))) disks[id] = *bytes;
  }
  return disks;
}

std::vector<Volume> MacMachineCounters::volumes() { return mountedVolumes(); }

std::vector<InterfaceCounters> MacMachineCounters::interfaces() {
  const auto buffer = sysctlBytes({CTL_NET, PF_ROUTE, 0, 0, NET_RT_IFLIST2, 0});
  auto interfaces = parseInterfaceList(buffer, [](unsigned index) -> std::optional<std::string> {
    char name[IF_NAMESIZE];
    if (!if_indextoname(index, name)) return std::nullopt;
    return std::string(name);
  });
  std::erase_if(interfaces, [](const InterfaceCounters& i) { return !isMacLink(i.name); });
  for (auto& interface : interfaces)
    if (const auto known = displayNames_.find(interface.name); known != displayNames_.end())
      interface.displayName = known->second;
  return interfaces;
}

std::vector<GPUCounters> MacMachineCounters::gpus() {
  std::vector<GPUCounters> gpus;
  for (const auto& entry : registryEntries("IOAccelerator"))
    if (const auto gpu = macGPUCounters(registryProperties(entry, macGPUProperties))) gpus.push_back(*gpu);
  return gpus;
}

PowerReading MacMachineCounters::power() {
  PowerReading power{.battery = battery(), .adapterWatts = {}, .packages = {}};
  if (!power.battery) power.adapterWatts = adapterWatts();
  return power;
}

} // namespace korvell
