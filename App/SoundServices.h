#pragma once
// Sound for the processes that have it: what the mixer of an application and the visit of a command are made
// of, and how a running application answers commands.
//
//   {"do":"listSound"}                                   -> {"ok":true,"sound":{…}}, a SoundState
//   {"do":"changeSound","app":"Player","volume":0.6}     -> {"ok":true,"app":{…}}, an AudioApp
//
// A headless keeper does not know these: it never talks to a sound server.

#include "App/Keeper.h"
#include "Audio/SoundMixer.h"
#include "Audio/SoundVisit.h"
#include "Platform/Host.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvell {

inline constexpr const char *listSoundAction = "listSound", *changeSoundAction = "changeSound";

/// Nothing where the system lets nobody set an application's volume. The host outlives what is made of it.
std::optional<SoundMixer::Services> soundServices(Host& host, const Environment& environment,
                                                  const QueueFactory& makeQueue,
                                                  SoundRole role = SoundRole::keeper);
/// Of somebody who looks once.
SoundRole visitingRole();

/// Answers commands over the application's mixer, which is connected for as long as an answer takes. Main
/// queue only; ends before the mixer and after the keeper.
class SoundAnswers {
public:
  /// How long a sound server may take to tell what there is.
  static constexpr Seconds patience{3};

  SoundAnswers(Queue& main, SoundMixer& mixer) : main_(main), mixer_(mixer) {}
  void teach(Keeper& keeper);

private:
  struct Call;
  void whenListed(std::function<void()> then);
  void change(const SoundRequest& request, const Keeper::Answer& answer);

  Queue& main_;
  SoundMixer& mixer_;
  std::vector<std::shared_ptr<Call>> calls_; ///< that wait for the list
};

} // namespace korvell
