// Any bytes as the texts of the kernel that the machine's counters are read from.

#include "Fuzz/Expect.h"
#include "Platform/Formats/DRMClient.h"
#include "Platform/Formats/Graphics.h"
#include "Platform/Formats/LinuxDevices.h"
#include "Platform/Formats/LinuxMemory.h"
#include "Platform/Formats/LinuxProcessor.h"
#include "Platform/Formats/MountTable.h"
#include "Platform/Formats/PowerSupplies.h"
#include "Platform/Formats/SocketCensus.h"

#include <set>

using namespace korvell;

namespace {

void memory(std::string_view text) {
  const auto stall = parseMemoryStall(text);
  const auto info = parseMemInfo(text);
  if (!info) return;
  memoryPressure(*info, stall);
  const auto [total, use] = memoryCounters(*info, stall, parseZramUse(text), parseReclaimableARC(text));
  expect(use.has_value());
  auto left = total;
  for (const auto part : {use->app, use->wired, use->compressed, use->cached}) {
    expect(part <= left);
    left -= part;
  }
}

void mounts(std::string_view text) {
  const auto shown = volumesWorthShowing(parseMountInfo(text));
  expect(!shown.empty() && shown.front().mountPoint == "/");
  std::set<std::string> places;
  for (const auto& mount : shown) expect(places.insert(mount.mountPoint).second);
}

void battery(std::string_view text) {
  using Kind = PowerSupply::Kind;
  const auto half = text.size() / 2;
  const auto reading = combinedBattery({parsePowerSupply(Kind::battery, text),
                                        parsePowerSupply(Kind::battery, text.substr(half)),
                                        parsePowerSupply(Kind::adapter, text.substr(0, half))});
  if (!reading) return;
  expect(reading->systemWatts.value_or(0) >= 0 && reading->fullCapacity >= 0 && reading->designCapacity >= 0);
  expect(reading->minutesRemaining.value_or(0) >= 0 && reading->cycles.value_or(0) >= 0);
  expect(reading->percent.value_or(0) >= 0 && reading->percent.value_or(0) <= 100);
}

void devices(std::string_view text) {
  std::vector<BlockDeviceLine> disks;
  parseDiskStats(text, disks);
  for (const auto& disk : disks) expect(!disk.name.empty());
  std::vector<NetworkLine> links;
  parseNetDev(text, links);
  parseDefaultRoute(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (const auto cores = parseProcStat(text))
    for (const auto& core : *cores) parseDecimal(std::to_string(core.second.user));
  for (const int number : parseCPUList(text)) expect(number >= 0);
  if (const auto load = parseLoadAverage(text)) expect(*load >= 0);
  parseCPUModel(text);
  memory(text);
  mounts(text);
  battery(text);
  devices(text);
  parseDRMClient(text);
  parseNvidiaModel(text);
  parseConnectionsBorn(text);
  pciDeviceName(text, 0x1002, 0x73df);
  return 0;
}
