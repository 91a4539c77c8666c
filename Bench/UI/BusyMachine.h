#pragma once
// What a large machine publishes, made up and the same in every run: 1,500 processes in 250 applications, 30
// sensors, 25 applications that play, a month of AI usage by ten models in 40 projects, and a scan that
// found 200 items of each kind.

#include "App/Model.h"
#include "Audio/AudioApp.h"
#include "Core/AIUsage/UsageSummary.h"
#include "Core/Storage/StorageModels.h"

#include <array>
#include <random>
#include <vector>

namespace korvell {

class BusyMachine final : public Model {
public:
  /// At `now` with the last five minutes behind it.
  BusyMachine(const Queue& main, const UserDefaults& defaults, Date now);

  /// Publishes a snapshot that was made up beforehand, as the sampler's comes ready to the main thread, and
  /// sensors of other temperatures.
  void step(Date date);

private:
  void publishLists(Date now);
  void fill(SystemSnapshot& s);
  double upTo(double most) { return std::uniform_real_distribution<double>(0, most)(random_); }
  SensorsSnapshot readSensors();

  std::mt19937 random_{42};
  std::array<double, 8> levels_{0.3, 0.5, 0.2, 0.2, 0.2, 0.2, 0.1, 0.3};
  std::vector<SystemSnapshot> madeUp_;
  std::vector<SensorsSnapshot> sensed_;
  std::size_t steps_ = 0;
};

SoundState busySound();
AIUsageSummary busyAIUsage(Date now, const TimeZone& zone);
StorageScanResult fullScan(Date now);

} // namespace korvell
