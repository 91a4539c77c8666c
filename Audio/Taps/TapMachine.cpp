#include "Audio/Taps/TapMachine.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace korvell {

namespace {

constexpr Seconds soon{0.05}; ///< short enough for an ear, and nothing beside the IO that runs meanwhile
constexpr Seconds beat{1};    ///< how often the watchdog looks

} // namespace

void TapMachine::set(Wish wish) {
  wish_ = wish;
  if (render_) render_->setVolume(wish_.heard());
}

std::optional<Seconds> TapMachine::dueIn() const {
  switch (phase_) {
  case Phase::off:
    return wish_.isTap() && retryAt_ > clock_.monotonic() ? std::optional(retryAt_ - clock_.monotonic())
                                                          : std::nullopt;
  case Phase::listening:
    return isPlaying_ ? soon : beat;
  case Phase::writing:
    return wish_.heard() == 0 ? soon : beat;
  case Phase::fading:
    return soon;
  case Phase::resting:
    break;
  }
  return std::nullopt;
}

std::optional<double> TapMachine::takePeak() {
  return phase_ == Phase::writing ? std::optional<double>(render_->takePeak()) : std::nullopt;
}

void TapMachine::step(const Facts& facts) {
  now_ = clock_.monotonic();
  if (std::exchange(isPlaying_, facts.isPlaying) != facts.isPlaying) playingSince_ = now_;
  if (!facts.output || facts.processes.empty()) return drop();
  if (!wish_.isTap()) return release();
  if (tap_ && output_ != *facts.output) {
    drop();
    retryAt_ = now_; // what failed on the old output says nothing of this one
  }
  if (!tap_) return build(facts);
  keep(facts);
}

void TapMachine::build(const Facts& facts) {
  if (now_ < retryAt_) return;
  output_ = *facts.output;
  processes_ = facts.processes;
  render_ = std::make_shared<TapRender>(output_.sampleRate, output_.place);
  render_->setVolume(wish_.heard());
  frames_ = lastSound_ = 0;
  tap_ = hardware_.makeTap(output_, processes_, render_);
  if (!tap_) return giveUp();
  enter(Phase::resting);
  if (facts.isPlaying) wake();
}

void TapMachine::keep(const Facts& facts) {
  if (processes_ != facts.processes) {
    if (!tap_->setProcesses(facts.processes)) return giveUp();
    processes_ = facts.processes;
  }
  switch (phase_) {
  case Phase::resting:
    return rest(facts);
  case Phase::fading: // wanted again before it was gone: its sound was given back, so it listens anew
    enter(Phase::listening);
    [[fallthrough]];
  case Phase::listening:
    return listen(facts);
  case Phase::writing:
    return write(facts);
  case Phase::off:
    break;
  }
}

void TapMachine::rest(const Facts& facts) {
  const bool isHeld = mute_ == TapMute::always;
  if (isHeld && wish_.heard() == 0) return;
  if (isHeld && !setMute(TapMute::whileRead)) return giveUp();
  if (facts.isPlaying) wake();
}

void TapMachine::listen(const Facts& facts) {
  noteSamples();
  if (soundAt_ > changedAt_) {
    if (!setMute(TapMute::whileRead)) return giveUp();
    render_->setWriting(true);
    return enter(Phase::writing);
  }
  if (playsSilence(watchdog) && now_ - changedAt_ >= watchdog) hearsNothing_ = !hasHeard_;
  if (facts.isPlaying && now_ - changedAt_ >= std::max(watchdog, retryIn_)) return rebuild(facts);
  if (!facts.isPlaying && now_ - changedAt_ >= restAfter) stopIO();
}

void TapMachine::write(const Facts& facts) {
  noteSamples();
  if (now_ - changedAt_ >= longestRetry) retryIn_ = firstRetry;
  if (hasHung(watchdog) || playsSilence(watchdog)) return rebuild(facts);
  if (wish_.heard() == 0 && render_->isSilent()) {
    if (!setMute(TapMute::always)) return giveUp();
    return stopIO();
  }
  if (!facts.isPlaying && now_ - soundAt_ >= restAfter) stopIO();
}

/// At 100 % it goes, after its last samples have run out.
void TapMachine::release() {
  if (phase_ == Phase::fading && now_ - changedAt_ < soon) return;
  if (phase_ != Phase::writing) return drop();
  render_->setWriting(false);
  if (!setMute(TapMute::none)) return drop();
  enter(Phase::fading);
}

/// What was heard before the rest is trusted after it, for as long as the watchdog waits.
void TapMachine::wake() {
  if (!tap_->start()) return giveUp();
  framesAt_ = soundAt_ = now_;
  enter(mute_ == TapMute::none ? Phase::listening : Phase::writing);
}

void TapMachine::stopIO() {
  tap_->stop();
  enter(Phase::resting);
}

void TapMachine::noteSamples() {
  if (std::exchange(frames_, render_->frames()) != render_->frames()) framesAt_ = now_;
  const auto lastSound = render_->lastSound();
  if (std::exchange(lastSound_, lastSound) == lastSound) return;
  soundAt_ = now_;
  hasHeard_ = true;
  hearsNothing_ = false;
}

bool TapMachine::playsSilence(Seconds span) const {
  return isPlaying_ && now_ - playingSince_ >= span && now_ - soundAt_ >= span;
}

/// Listens again at once, so that sound that comes back is not heard too loud for long.
void TapMachine::rebuild(const Facts& facts) {
  drop();
  build(facts);
  retryIn_ = std::min(retryIn_ * 2, longestRetry);
}

void TapMachine::giveUp() {
  drop();
  retryAt_ = now_ + retryIn_;
  retryIn_ = std::min(retryIn_ * 2, longestRetry);
}

void TapMachine::drop() {
  if (tap_) {
    render_->setWriting(false);
    std::ignore = setMute(TapMute::none); // if it fails, the end of the tap gives the sound back
    tap_.reset();
    mute_ = TapMute::none;
  }
  render_.reset();
  enter(Phase::off);
}

void TapMachine::enter(Phase phase) {
  phase_ = phase;
  changedAt_ = now_;
}

bool TapMachine::setMute(TapMute mute) {
  if (mute_ == mute) return true;
  if (!tap_->setMute(mute)) return false;
  mute_ = mute;
  return true;
}

} // namespace korvell
