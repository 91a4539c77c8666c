#pragma once
// What both halves of a cycle need: the machine's counters read it, and the process table, whose turn comes
// after them, takes the same. On the sampler's queue.

#include "Platform/Formats/LinuxMemory.h"
#include "Platform/Formats/ProcessFiles.h"
#include "Platform/Linux/FileReader.h"
#include "Platform/Linux/PackageEnergy.h"

#include <map>
#include <optional>
#include <string>

namespace korvell {

class SharedReadings {
public:
  /// The roots of /proc and /sys.
  SharedReadings(const std::string& proc, const std::string& sys)
      : memInfo_(proc + "/meminfo"), energy_(sys) {}

  /// The machine's half reads. The processes' half gets each reading once, and where there is none that it
  /// has not had, one of its own.
  enum class Half { machine, processes };

  struct Memory {
    std::optional<MemInfo> info;
    std::optional<AnonymousMemory> anonymous;
  };
  const Memory& memory(Half half, FileReader& reader);
  const std::map<int, EnergyCounter>& energy(Half half, FileReader& reader);

  /// Looks for processor packages anew.
  void findPackages(FileReader& reader) { energy_.find(reader); }
  const PackageEnergy& packages() const { return energy_; }

private:
  template <class Value>
  struct Reading {
    Value value{};
    bool waits = false; ///< for the processes' half
    bool isDueFor(Half half);
  };

  KeptFile memInfo_;
  PackageEnergy energy_;
  Reading<Memory> memoryReading_;
  Reading<std::map<int, EnergyCounter>> energyReading_;
};

} // namespace korvell
