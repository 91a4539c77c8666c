#pragma once
// Temperatures and fans of Linux drivers. Chips are looked for at the first reading, when one of them
// vanished and every five minutes; in between no folder is listed.
//
// A chip of which nothing is known yet, or that took more than five milliseconds, is read on a queue of its
// own, which exists only while there are such chips.

#include "Base/Queue.h"
#include "Platform/Linux/ChipReader.h"
#include "Platform/TemperatureSources.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct LinuxSensorRoots {
  std::string proc = "/proc";
  std::string sys = "/sys";
  std::string nvidiaLibrary = "libnvidia-ml.so.1";
};

class LinuxSensorChips final : public SensorChips {
public:
  static constexpr Seconds searchInterval{300};
  static constexpr Seconds slowFrom{0.005};

  LinuxSensorChips(const Clock& clock, QueueFactory makeQueue, LinuxSensorRoots roots = {},
                   std::unique_ptr<SensorFiles> files = std::make_unique<SensorFiles>());
  ~LinuxSensorChips() override;

  std::vector<SensorChip> read(Seconds patience) override;

private:
  enum class Speed { unknown, quick, slow };
  /// Shared with the queue while it is read there.
  struct Chip {
    FoundChip found;
    SensorChip last; ///< the values of its last reading
    Speed speed = Speed::unknown;
    int quickTimes = 0;   ///< readings of a slow chip in a row that were not slow
    bool wasRead = false; ///< its limits are known
    bool isUnderWay = false;
  };

  void find();
  void readOn(Queue& queue, const std::shared_ptr<Chip>& chip);
  void readNow(Chip& chip);
  void awaitUnknown(Seconds patience);

  const Clock& clock_;
  const QueueFactory makeQueue_;
  const LinuxSensorRoots roots_;
  const std::unique_ptr<SensorFiles> files_;
  ChipReader reader_;
  std::optional<Seconds> found_;
  std::atomic<bool> findSoon_ = false;

  std::mutex mutex_; ///< of the chips' values and states
  std::condition_variable finished_;
  std::vector<std::shared_ptr<Chip>> chips_;
  std::unique_ptr<Queue> queue_; ///< ends before what its tasks use
};

} // namespace korvell
