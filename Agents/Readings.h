#pragma once
// Where the tools' figures come from: the running keeper's last measurement, or, without one, a measurement
// of our own. Nothing is kept between calls but a measurement for two seconds, so that a server that waits
// costs nothing. On the tools' own queue, which may wait.

#include "Agents/Handles.h"
#include "App/Measurement.h"
#include "Audio/AudioApp.h"
#include "Base/Queue.h"
#include "Core/History/HistoryStore.h"
#include "Platform/Host.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// Who measured, and which figures that leaves out.
struct FigureSource {
  bool keeper = false;                ///< the running Korvell, of which one can ask what it saw before
  std::vector<std::string> leavesOut; ///< sentences, localised

  bool operator==(const FigureSource&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"keeper", &FigureSource::keeper}, Field{"leavesOut", &FigureSource::leavesOut}};
  }
};

struct ReadingServices {
  Host& host;
  const Clock& clock;
  Handles& handles;
  QueueFactory makeQueue;                  ///< for databases
  std::function<Tick()> measure;           ///< two cycles; blocks
  Seconds patience;                        ///< how long a keeper may think
  std::function<SoundState()> readSound{}; ///< blocks; null where there is no sound
};

class Readings {
public:
  explicit Readings(ReadingServices services) : services_(std::move(services)) {}

  const ReadingServices& services() const { return services_; }
  Date now() const { return services_.clock.now(); }
  KeeperAnswer ask(std::initializer_list<const char*> parts) const;
  /// A measurement of our own, at most two seconds old.
  const Tick& ownTick();
  /// Gives up what is kept.
  void forget() { tick_.reset(); }
  /// To be read; it ends with the call.
  std::unique_ptr<HistoryStore> history() const;

  /// For quitting an application as it was at that moment; nothing for what is not to be quit.
  std::optional<std::string> handleOf(const AppUsage& app, Date seen);
  std::optional<std::string> handleOf(const ProcessUsage& process, Date seen);
  std::string handleOf(const DevServer& server);

private:
  /// Of a process that was there at that moment; nothing of a later one that has its id.
  std::optional<std::uint64_t> startOf(ProcessID pid, Date seen);

  ReadingServices services_;
  std::optional<Tick> tick_;
  Seconds measuredAt_{0};
};

/// What a call finds out, asked of the keeper in one go.
class Reading {
public:
  /// The parts of the keeper's state that the call may need.
  Reading(Readings& readings, std::initializer_list<const char*> parts);

  bool isKeepers() const { return bool(state_); }
  Measurement measurement();
  std::vector<DevProject> projects();
  std::vector<StartupItem> startupItems();
  /// Of the keeper's: only a running Korvell raises any.
  std::vector<HealthAlert> alerts();
  std::optional<SensorsSnapshot> sensors();
  std::vector<PeripheralBattery> peripherals();
  /// A part of the keeper's state as it is; null without a keeper.
  const Value* part(const char* name) const { return state_ ? state_->find(name) : nullptr; }
  /// `needsKeeper`: what a call leaves out without one, beside who it is that measured.
  FigureSource source(std::initializer_list<const char*> needsKeeper = {}) const;

private:
  template <class T>
  std::optional<T> told(const char* name) const;

  Readings& readings_;
  KeeperAnswer state_;
};

} // namespace korvell
