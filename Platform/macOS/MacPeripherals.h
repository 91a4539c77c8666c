#pragma once
// Batteries of peripherals on macOS: what devices publish in the I/O registry, and what the system's profile
// of Bluetooth says of headphones. The profile takes about a second, so it is asked on a queue of its own and
// told with the next reading; a reading asks for it once and never waits.

#include "Base/Queue.h"
#include "Base/Shell.h"
#include "Platform/PeripheralSource.h"

#include <memory>
#include <mutex>
#include <vector>

namespace korvell {

/// Devices that tell how full they are.
std::vector<PeripheralReading> registryPeripherals();
/// Starts a program; at most a few seconds.
std::vector<PeripheralReading> profiledPeripherals(const CommandRunner& run);

class MacPeripherals final : public PeripheralSource {
public:
  MacPeripherals(CommandRunner run, QueueFactory makeQueue)
      : run_(std::move(run)), makeQueue_(std::move(makeQueue)) {}
  ~MacPeripherals() override { queue_.reset(); }

  std::vector<PeripheralReading> read() override;

private:
  const CommandRunner run_;
  const QueueFactory makeQueue_;
  std::mutex mutex_; ///< of what the queue leaves here
  std::vector<PeripheralReading> profiled_;
  bool isUnderWay_ = false;
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell
