#pragma once
// A volume for every application that makes sound: lists them, changes them, and gives everything that a
// remembered application plays the volume that was chosen for it, as soon as the system tells of it.
//
// Main queue only; what it asks the system runs on its own queue, "Korvell.sound". It is connected while
// somebody watches or an application is remembered, and costs nothing otherwise. A lost or missing server is
// looked for again after 1, 2, 5, 10 and then every 30 seconds. What was changed elsewhere is shown, and of
// remembered applications taken over. Destroyed before the main queue and the settings; what was changed by
// then is stored and carried out. A sound system that does not answer is left behind after a while: an
// application that can't be ended is worse.

#include "Audio/AudioApp.h"
#include "Audio/SoundSystem.h"
#include "Audio/StreamOwners.h"
#include "Base/Lifeline.h"
#include "Base/Published.h"
#include "Base/Queue.h"
#include "Base/Result.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace korvell {

class SoundEngine;

/// Who keeps gives remembered applications their volume by itself; who visits shows, and changes what it is
/// told to; who only remembers leaves the changing to a keeper.
enum class SoundRole { keeper, visitor, rememberer };

class SoundMixer {
public:
  static constexpr const char* queueLabel = "Korvell.sound";

  struct Services {
    SoundSystemFactory makeSystem;
    std::function<std::unique_ptr<StreamOwners>()> makeOwners; ///< called on the mixer's queue
    UserDefaults& defaults;
    QueueFactory makeQueue;
    SoundRole role = SoundRole::keeper;
    Seconds farewell{3}; ///< longest wait for the sound system at the end
  };

  SoundMixer(Queue& main, Services services);
  ~SoundMixer();
  SoundMixer(const SoundMixer&) = delete;
  SoundMixer& operator=(const SoundMixer&) = delete;

  Published<SoundState> state;

  enum class Interest { list, levels };
  /// It is connected, and measures levels ten times a second if those are of interest, until the last
  /// subscription has ended.
  [[nodiscard]] Subscription watch(Interest interest);

  // Shown at once; of a row of quick changes at most 30 a second reach the system, and always the last one.
  // An application that is neither listed nor remembered is left alone.

  /// Clamped to 0…loudestApp; remembered.
  void setVolume(const std::string& app, double volume);
  void setMuted(const std::string& app, bool muted);
  /// Forgets the application; what it plays goes back to 100 %, unmuted.
  void reset(const std::string& app);
  void resetAll();
  void setOutputVolume(double volume); ///< clamped to 0…1
  void setOutputMuted(bool muted);
  /// Called on the main queue once `state` shows what was asked before, unless the mixer has ended.
  void settle(Task done);

private:
  void countWatchers();
  void tell(std::function<void(SoundEngine&)> what);

  Queue& main_;
  int watchers_ = 0, levelWatchers_ = 0;
  Lifeline<SoundMixer> life_{*this};
  const Seconds farewell_;
  struct Room;
  std::shared_ptr<Room> room_;
};

/// The one application that a person names: by its key or its name in any case, of those that are listed or
/// remembered. Fails with a sentence when there is none or several.
Result<RememberedApp> chooseSoundApp(const SoundState& state, std::string_view what);

} // namespace korvell
