#pragma once
// A sound system with taps, an application that plays through it, and an ear at the output. Time passes in
// blocks: play() lets one go by. Whatever can go wrong goes wrong when the test says so.

#include "Audio/Taps/TapHardware.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace korvell {

class FakeTaps final : public TapHardware {
public:
  // The application: the same sample all the time, so that whatever moves was moved by a gain.
  float sample = 0.1F;
  std::set<SoundProcess> playing{7};
  // What goes wrong.
  bool hasPermission = true;
  bool hasFrames = true;
  bool failsToMake = false, failsToMute = false, failsToStart = false, failsToChange = false;
  // What the ear and the bookkeeper say.
  float heard = 0;   ///< at the end of the last block: the application by itself and what was written
  float written = 0; ///< the part of it that was written
  float jump = 0;    ///< the largest change between written frames, so far; none of the application's own
  int made = 0, running = 0;
  std::size_t count() const { return taps_.size(); }

  static constexpr double rate = 8'000; ///< low, so that hours pass quickly

  std::unique_ptr<Tap> makeTap(const SoundOutput&, std::span<const SoundProcess> processes,
                               std::shared_ptr<TapRender> render) override {
    if (failsToMake) return nullptr;
    ++made;
    return std::make_unique<OneTap>(*this, processes, std::move(render));
  }

  void play(std::uint32_t frames = 80) {
    float out = 0;
    bool isTaken = false;
    for (auto* tap : taps_) {
      if (tap->hears(playing) && tap->mutes()) isTaken = true;
      if (!tap->isRunning || !hasFrames) continue;
      const float in = hasPermission && tap->hears(playing) ? sample : 0;
      block_.assign(std::size_t{frames} * 2, in);
      result_.assign(std::size_t{frames} * 2, 0);
      const AudioBlock outputs[] = {{result_.data(), 2}};
      tap->render->render({block_.data(), 2}, outputs, frames);
      float before = std::exchange(tap->lastIn, in) == in ? tap->last : result_.front();
      for (std::size_t i = 0; i < result_.size(); i += 2) {
        jump = std::max(jump, std::abs(result_[i] - before));
        before = result_[i];
      }
      out += tap->last = result_[result_.size() - 2];
    }
    written = out;
    heard = out + (isTaken || playing.empty() ? 0 : sample);
  }

private:
  struct OneTap final : Tap {
    OneTap(FakeTaps& system, std::span<const SoundProcess> whom, std::shared_ptr<TapRender> renderer)
        : taps(system), processes(whom.begin(), whom.end()), render(std::move(renderer)) {
      taps.taps_.push_back(this);
    }
    ~OneTap() override {
      stop();
      std::erase(taps.taps_, this);
    }
    bool setMute(TapMute to) override {
      if (taps.failsToMute) return false;
      mute = to;
      return true;
    }
    bool setProcesses(std::span<const SoundProcess> whom) override {
      if (taps.failsToChange) return false;
      processes = {whom.begin(), whom.end()};
      return true;
    }
    bool start() override {
      if (taps.failsToStart) return false;
      if (!std::exchange(isRunning, true)) ++taps.running;
      return true;
    }
    void stop() override {
      if (std::exchange(isRunning, false)) --taps.running;
    }
    bool hears(const std::set<SoundProcess>& whom) const {
      return std::ranges::any_of(processes, [&](SoundProcess each) { return whom.contains(each); });
    }
    bool mutes() const { return mute == TapMute::always || (mute == TapMute::whileRead && isRunning); }

    FakeTaps& taps;
    std::vector<SoundProcess> processes;
    std::shared_ptr<TapRender> render;
    TapMute mute = TapMute::none;
    bool isRunning = false;
    float last = 0, lastIn = 0;
  };

  std::vector<OneTap*> taps_;
  std::vector<float> block_, result_;
};

} // namespace korvell
