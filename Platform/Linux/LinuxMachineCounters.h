#pragma once
// The machine's counters on Linux, from /proc and /sys.
//
// Files that every cycle reads stay open or are opened, read and closed once. What hardware there is (disks,
// links, cards, batteries) is remembered: disks and links are looked up again when the kernel's own list
// changes, cards and batteries together with the volumes, which are asked for twice a minute.

#include "Platform/Linux/BlockDevices.h"
#include "Platform/Linux/GraphicsCards.h"
#include "Platform/Linux/NetworkLinks.h"
#include "Platform/Linux/PowerSources.h"
#include "Platform/MachineCounters.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct VolumeSpace {
  std::int64_t total = 0;
  std::int64_t available = 0; ///< to users other than root
};

/// Of the folder at a mount point; nothing when it is no folder or does not tell.
std::optional<VolumeSpace> volumeSpace(const std::string& mountPoint);

/// Where the counters are. Tests put the trees of other machines here.
struct LinuxMachineRoots {
  std::string proc = "/proc";
  std::string sys = "/sys";
  std::vector<std::string> pciIDs = {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"};
  std::string nvidiaLibrary = "libnvidia-ml.so.1";
  std::function<std::optional<VolumeSpace>(const std::string& mountPoint)> spaceOf = volumeSpace;
};

class LinuxMachineCounters final : public MachineCounters {
public:
  /// `shared` with the process table; without it the readings are its own.
  explicit LinuxMachineCounters(LinuxMachineRoots roots = {},
                                std::shared_ptr<SharedReadings> shared = nullptr);

  MachineFacts facts() override;
  CPUCounters cpu() override;
  MemoryCounters memory() override;
  std::map<std::uint64_t, ByteCounters> disks() override;
  std::vector<Volume> volumes() override;
  std::vector<InterfaceCounters> interfaces() override;
  std::vector<GPUCounters> gpus() override;
  PowerReading power() override;

  GraphicsCards& graphics() { return graphics_; }
  const PowerSources& powerSources() const { return power_; }

private:
  std::string chipName();
  void countCores(MachineFacts& facts);
  std::vector<int> cpuList(const std::string& path);

  LinuxMachineRoots roots_;
  FileReader reader_;
  std::shared_ptr<SharedReadings> shared_;
  KeptFile stat_, load_, stall_, arc_;
  std::size_t statBytes_ = 4096; ///< how much of /proc/stat holds the lines of all cores
  BlockDevices disks_;
  NetworkLinks links_;
  GraphicsCards graphics_;
  PowerSources power_;
};

} // namespace korvell
