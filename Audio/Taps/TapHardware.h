#pragma once
// What taps need of the sound system: listen to some processes, keep them from the output, write to it.
//
// Everything is called on the sound queue, may take tens of milliseconds, and fails quietly: false or null. A
// call that "succeeded" proves nothing, since a program without the permission gets silence and no error;
// TapMachine believes in samples only.

#include "Audio/Taps/TapRender.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace korvell {

/// A process as the sound system numbers it; another number each time it connects.
using SoundProcess = std::uint32_t;

/// Whether the processes of a tap are still heard by themselves.
enum class TapMute {
  none,
  whileRead, ///< not while the tap's IO runs: when that stops, for whatever reason, they are heard again
  always,    ///< until the tap is gone
};

/// Where sound comes out, and how. Any difference makes what was built on it worthless.
struct SoundOutput {
  std::string uid;
  double sampleRate = 48'000;
  ChannelPlace place;
  std::uint64_t generation =
      0; ///< another number after the sound system began anew, or the output was rearranged
  bool operator==(const SoundOutput&) const = default;
};

/// A tap with the private device that joins it to the output. Made with TapMute::none and its IO at rest;
/// destroyed, it has given everything back. The renderer is called on the audio thread while the IO runs.
class Tap {
public:
  virtual ~Tap() = default;
  [[nodiscard]] virtual bool setMute(TapMute mute) = 0;
  /// Replaces whom it listens to without a gap.
  [[nodiscard]] virtual bool setProcesses(std::span<const SoundProcess> processes) = 0;
  [[nodiscard]] virtual bool start() = 0;
  virtual void stop() = 0;
};

class TapHardware {
public:
  virtual ~TapHardware() = default;
  /// The renderer outlives the tap: the audio thread may be in it while the tap goes.
  virtual std::unique_ptr<Tap> makeTap(const SoundOutput& output, std::span<const SoundProcess> processes,
                                       std::shared_ptr<TapRender> render) = 0;
};

} // namespace korvell
