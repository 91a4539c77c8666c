#pragma once
// The volume of one application where the system has none to set: a tap that takes its sound away and writes
// it to the output, louder or softer.
//
// What must never happen is that an application stays silent because of us. So:
// - there is no tap at 100 % unmuted, nor without an output, nor while the machine goes to sleep;
// - a tap first only listens, and takes the sound away when a sample came that is not silence: a program
//   without the permission gets zeros and no error, and would mute all the same;
// - the sound is taken away only while the tap is read, so that the system gives it back if we hang or end;
// - any call that fails, no frames for four seconds, or zeros for four seconds while the application says
//   that it plays: the sound is given back, and the tap built anew, each time after a longer wait.
// A muted application that pauses is held silent without IO: that silence is the user's.
//
// Nothing clicks: the renderer ramps, and a tap that is no longer wanted fades out before it goes. Lives on
// the sound queue; step() is to be called when dueIn() has passed and after every change.

#include "Audio/Taps/TapHardware.h"
#include "Base/Date.h"

#include <memory>
#include <optional>
#include <vector>

namespace korvell {

class TapMachine {
public:
  enum class Phase {
    off,       ///< no tap; the application is heard by itself
    listening, ///< a tap that takes nothing away
    writing,   ///< heard through us
    fading,    ///< given back; the last samples run out
    resting,   ///< its application is quiet: a tap without IO
  };
  struct Wish {
    double volume = 1; ///< 0 to 1.5
    bool isMuted = false;
    bool operator==(const Wish&) const = default;
    bool isTap() const { return isMuted || volume != 1; }
    double heard() const { return isMuted ? 0 : volume; }
  };
  /// How things are now.
  struct Facts {
    std::vector<SoundProcess> processes; ///< of the application; empty: it has gone
    bool isPlaying = false;              ///< one of them says that it plays, which may be silence
    std::optional<SoundOutput> output;   ///< absent without one, or before sleep
    bool operator==(const Facts&) const = default;
  };

  TapMachine(TapHardware& hardware, const Clock& clock) : hardware_(hardware), clock_(clock) {}
  /// Gives the sound back at once.
  ~TapMachine() { drop(); }
  TapMachine(const TapMachine&) = delete;
  TapMachine& operator=(const TapMachine&) = delete;

  void set(Wish wish);
  void step(const Facts& facts);
  /// When it wants to be stepped again at the latest; absent: not before something changes.
  std::optional<Seconds> dueIn() const;

  Phase phase() const { return phase_; }
  const Wish& wish() const { return wish_; }
  /// A sample that is not silence ever came: the permission is there.
  bool hasHeard() const { return hasHeard_; }
  /// It listened for the watchdog's time to an application that plays and never heard anything of it: most
  /// likely the permission is missing.
  bool hearsNothing() const { return hearsNothing_; }
  /// The peak since the last call, 0 to 1; absent where it isn't heard through us.
  std::optional<double> takePeak();

  /// Silence while it says that it plays, or no frames at all, for as long as this is no accident.
  static constexpr Seconds watchdog{4};
  /// After this much silence the IO stops, which otherwise keeps the machine from sleeping.
  static constexpr Seconds restAfter{30};
  static constexpr Seconds firstRetry{1}, longestRetry{30};

private:
  void build(const Facts& facts);
  void keep(const Facts& facts);
  void rest(const Facts& facts);
  void listen(const Facts& facts);
  void write(const Facts& facts);
  void release();
  void wake();
  void stopIO();
  void noteSamples();
  void rebuild(const Facts& facts);
  void giveUp();
  void drop();
  void enter(Phase phase);
  [[nodiscard]] bool setMute(TapMute mute);
  bool hasHung(Seconds span) const { return now_ - framesAt_ >= span; }
  bool playsSilence(Seconds span) const;

  TapHardware& hardware_;
  const Clock& clock_;
  Wish wish_;
  Phase phase_ = Phase::off;
  Seconds now_{}, changedAt_{}; ///< of the step; of the phase
  // What was built, and on what.
  std::unique_ptr<Tap> tap_;
  std::shared_ptr<TapRender> render_;
  std::vector<SoundProcess> processes_;
  SoundOutput output_;
  TapMute mute_ = TapMute::none;
  // What came, and when it was noticed.
  std::uint64_t frames_ = 0, lastSound_ = 0;
  Seconds framesAt_{}, soundAt_{}, playingSince_{};
  bool isPlaying_ = false;
  bool hasHeard_ = false, hearsNothing_ = false;
  Seconds retryAt_{}, retryIn_ = firstRetry;
};

} // namespace korvell
