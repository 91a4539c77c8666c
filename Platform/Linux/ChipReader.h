#pragma once
// One reading of one chip: what `SensorChips` and the examination of sources share. Different chips may be
// read on different threads.

#include "Platform/Linux/FoundChips.h"
#include "Platform/Linux/NvidiaLibrary.h"

#include <mutex>
#include <set>
#include <string>

namespace korvell {

enum class ChipState {
  read,     ///< some of its sensors at least
  asleep,   ///< it, or what it sits on, is suspended: not touched
  leftOut,  ///< a disk whose sleep a reading would disturb: not touched
  silent,   ///< no sensor answered
  vanished, ///< its files are gone
};

struct ChipReading {
  ChipState state = ChipState::silent;
  SensorChip chip; ///< without values unless it was read
};

class ChipReader {
public:
  /// `nvidiaLibrary` as for the dynamic linker. The files outlive it.
  ChipReader(SensorFiles& files, std::string nvidiaLibrary)
      : files_(files), nvidia_(std::move(nvidiaLibrary)) {}

  /// The limits of fans change seldom and cost as much as their speeds: they are those of `last`, an earlier
  /// reading of the same chip; without one they are read.
  ChipReading read(const FoundChip& found, const SensorChip* last = nullptr);

private:
  bool isAsleep(const FoundChip& found);
  std::optional<double> number(const std::string& file, bool& vanished);
  std::optional<double> value(const FoundChip::Input& input, bool& vanished);
  std::optional<double> nvidiaCelsius(const std::string& address, bool isAsleep);

  SensorFiles& files_;
  std::mutex mutex_; ///< of what follows: the library stands one thread at a time
  NvidiaLibrary nvidia_;
  std::set<std::string> awake_; ///< NVIDIA's cards that were, when last looked at
};

} // namespace korvell
