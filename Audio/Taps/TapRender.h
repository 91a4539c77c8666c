#pragma once
// What happens between an application's tap and the output, sample by sample: volume, limiter, which
// channels.
//
// Two threads meet here. render() runs on the system's audio thread, many times a second with a deadline: it
// takes no lock, allocates nothing and calls nobody. Everything else belongs to the sound queue. Between them
// stand atomics only.

#include "Audio/Taps/Gain.h"

#include <atomic>
#include <cstdint>
#include <span>

namespace korvell {

/// Interleaved samples of one stream of a device; null samples are a stream that is switched off.
struct AudioBlock {
  float* samples = nullptr;
  std::uint32_t channels = 0;
};

/// Where left and right are among the channels of all output streams, counted from 0 in their order. The same
/// place twice, as with a single channel, gets their mean.
struct ChannelPlace {
  std::uint32_t left = 0, right = 1;
  bool operator==(const ChannelPlace&) const = default;
};

class TapRender {
public:
  TapRender(double sampleRate, ChannelPlace place) : gain_(sampleRate), place_(place) {}

  /// 0 to 1.5; heard while it writes.
  void setVolume(double volume) { target_ = gainOf(volume); }
  /// Whether the application is heard through it. It begins and ends with a ramp.
  void setWriting(bool isWriting) { isWriting_ = isWriting; }

  /// Frames that came from the tap.
  std::uint64_t frames() const { return frames_; }
  /// frames() as it was when the last one came that was not silence; 0 when none ever did.
  std::uint64_t lastSound() const { return lastSound_; }
  /// The largest sample that was written since the last call, 0 to 1.
  float takePeak() { return peak_.exchange(0); }
  /// True once a volume of 0, or the end of writing, has been reached.
  bool isSilent() const { return isSilent_; }

  /// Writes `frames` frames to every stream of `outputs`; a tap's block has two channels (or one). Without
  /// samples from the tap it writes silence.
  void render(AudioBlock tap, std::span<const AudioBlock> outputs, std::uint32_t frames);

private:
  void listen(AudioBlock tap, std::uint32_t frames);

  // The sound queue's.
  std::atomic<float> target_ = 1;
  std::atomic<bool> isWriting_ = false;
  // The audio thread's.
  RampedGain gain_;
  const ChannelPlace place_;
  std::atomic<std::uint64_t> frames_ = 0;
  std::atomic<std::uint64_t> lastSound_ = 0;
  std::atomic<float> peak_ = 0;
  std::atomic<bool> isSilent_ = true;

  static_assert(std::atomic<float>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace korvell
