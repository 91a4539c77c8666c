#pragma once
// The sound of a system that has no volume for an application: one tap for each application whose volume
// isn't 100 %, each started, watched and ended by a TapMachine.
//
// Its streams are the processes that play. What the system tells late or never (that a process began to play
// isn't told at all) is looked at once a second, but only while there is a tap or somebody looks at levels;
// in between nothing runs. Who plays and records at once, as in a call, is left alone: a tap would spoil its
// echo cancelling.
//
// The system asks for permission when the first tap is read, and never says what was answered. A sample that
// is not silence proves that it was granted; an application that plays for seconds and is never heard tells
// that it was not.

#include "Audio/SoundSystem.h"
#include "Audio/Taps/TapMachine.h"
#include "Base/Lifeline.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

/// What such a system tells and does. On the sound queue, as the taps.
class TapSystem : public TapHardware {
public:
  struct Process {
    SoundProcess id = 0;
    ProcessID pid = 0;
    std::string bundleID; ///< empty without one
    bool isPlaying = false, isRecording = false;
    std::vector<std::string> outputs; ///< uids of the devices that it plays to
    bool operator==(const Process&) const = default;
  };

  virtual std::vector<Process> processes() = 0;
  /// Where sound goes by default; absent while there is no such device.
  virtual std::optional<std::pair<SoundOutput, OutputDevice>> output() = 0;
  /// Any device; absent when it is gone.
  virtual std::optional<SoundOutput> outputNamed(const std::string& uid) = 0;
  virtual void setOutputVolume(double volume) = 0;
  virtual void setOutputMuted(bool muted) = 0;

  struct Observer {
    std::function<void()> changed; ///< any of the above may have changed
    /// Before the machine sleeps, which waits until `hold` is let go, and when it wakes.
    std::function<void(bool isAsleep, std::shared_ptr<void> hold)> asleep;
  };
  /// Until it is replaced; empty functions end it. They are called on any thread.
  virtual void observe(Observer observer) = 0;
};

class TapSound final : public SoundSystem {
public:
  TapSound(Queue& queue, std::unique_ptr<TapSystem> system);
  ~TapSound() override;

  void connect(SoundListener& listener) override;
  void disconnect() override;
  void setVolume(const StreamSet& streams, double volume) override;
  void setMuted(const StreamSet& streams, bool muted) override;
  void setOutputVolume(double volume) override;
  void setOutputMuted(bool muted) override;
  void forget(const std::set<std::string>&) override {} // it remembers nothing
  void measureLevels(bool measured) override;
  std::vector<StreamLevel> takeLevels() override;

private:
  struct App {
    explicit App(TapSound& sound) : machine(*sound.system_, sound.queue_.clock()) {}
    std::set<StreamID> streams;
    TapMachine machine;
  };

  App* appOf(const StreamSet& streams);
  void set(const StreamSet& streams, const std::function<void(TapMachine::Wish&)>& change);
  void refresh();
  void tellStreams();
  void tellOutput();
  void tellAccess();
  void turn();
  void step();
  void schedule();
  void fallAsleep(bool isAsleep);
  TapMachine::Facts factsOf(const App& app);
  SoundStream streamOf(const TapSystem::Process& process) const;
  const App* appWith(StreamID stream) const;

  Queue& queue_;
  std::unique_ptr<TapSystem> system_;
  std::unique_ptr<Timer> timer_;
  SoundListener* listener_ = nullptr;
  std::map<std::string, App> apps_;
  std::map<StreamID, TapSystem::Process> processes_;
  std::map<StreamID, SoundStream> told_;
  std::optional<SoundOutput> output_;
  std::optional<OutputDevice> toldOutput_;
  SoundAccess access_ = SoundAccess::unasked;
  Seconds lookedAt_{};
  bool isMeasured_ = false, isAsleep_ = false;
  struct Door;
  std::shared_ptr<Door> door_; ///< through which the system's threads come in while it is connected
  Lifeline<TapSound> life_{*this};
};

} // namespace korvell
