#pragma once
// What makes sound, as commands and agents see it: from the running application, which knows what played a
// minute ago, or else by a connection of their own. Waits; any thread.

#include "Audio/SoundVisit.h"
#include "Tool/Command.h"

namespace korvell {

SoundState readSound(const Context& context);

struct SoundChanged {
  AudioApp app;
  bool isOnlyRemembered = false; ///< nobody is there who could set it at once
};
/// Done by the running application; without one here, as far as the system allows.
Result<SoundChanged> changeSound(const Context& context, const SoundRequest& request);

} // namespace korvell
