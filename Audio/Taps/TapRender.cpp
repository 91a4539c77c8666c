#include "Audio/Taps/TapRender.h"

#include "Audio/Taps/Limiter.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

/// One channel of one stream, walked frame by frame.
struct Channel {
  float* sample = nullptr;
  std::uint32_t stride = 0;
};

Channel channelAt(std::span<const AudioBlock> outputs, std::uint32_t place) {
  for (const auto& block : outputs) {
    if (place < block.channels)
      return {block.samples ? block.samples + place : nullptr, block.samples ? block.channels : 0};
    place -= block.channels;
  }
  return {};
}

void silence(std::span<const AudioBlock> outputs, std::uint32_t frames) {
  for (const auto& block : outputs)
    if (block.samples) std::fill_n(block.samples, std::size_t{frames} * block.channels, 0.0F);
}

} // namespace

void TapRender::listen(AudioBlock tap, std::uint32_t frames) {
  const std::uint64_t before = frames_;
  for (auto i = std::size_t{frames} * tap.channels; i > 0; --i) {
    if (tap.samples[i - 1] == 0) continue;
    lastSound_ = before + (i - 1) / tap.channels + 1;
    break;
  }
  frames_ = before + frames;
}

void TapRender::render(AudioBlock tap, std::span<const AudioBlock> outputs, std::uint32_t frames) {
  silence(outputs, frames);
  if (!tap.samples || tap.channels == 0) return;
  listen(tap, frames);

  gain_.setTarget(isWriting_ ? target_.load() : 0);
  auto left = channelAt(outputs, place_.left), right = channelAt(outputs, place_.right);
  // A device that has fewer channels than it says still gets what it can take.
  if (!left.sample) left = right;
  if (!right.sample) right = left;
  const bool isMono = left.sample == right.sample;
  const auto* sample = tap.samples;
  const std::uint32_t second = tap.channels > 1 ? 1 : 0;
  float peak = 0;
  for (std::uint32_t i = 0; i < frames; ++i, sample += tap.channels) {
    const float gain = gain_.next();
    if (!left.sample) continue;
    const float l = limited(sample[0] * gain), r = limited(sample[second] * gain);
    peak = std::max({peak, std::abs(l), std::abs(r)});
    *left.sample = isMono ? (l + r) / 2 : l;
    left.sample += left.stride;
    if (isMono) continue;
    *right.sample = r;
    right.sample += right.stride;
  }
  isSilent_ = gain_.isSilent();
  if (peak > peak_) peak_ = peak;
}

} // namespace korvell
