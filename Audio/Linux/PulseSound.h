#pragma once
// The system's sound by PulseAudio's interface, which both sound servers of Linux desktops serve. Connecting
// to a server that is not there costs as much as to one that is, so its socket is looked for first.

#include "Audio/Linux/PulseSession.h"
#include "Base/Lifeline.h"
#include "Base/UserFolders.h"

#include <memory>
#include <string>

namespace korvell {

class PulseSound final : public SoundSystem {
public:
  PulseSound(Queue& queue, Environment environment) : queue_(queue), environment_(std::move(environment)) {}

  void connect(SoundListener& listener) override;
  void disconnect() override;
  void setVolume(const StreamSet& streams, double volume) override;
  void setMuted(const StreamSet& streams, bool muted) override;
  void setOutputVolume(double volume) override;
  void setOutputMuted(bool muted) override;
  void forget(const std::set<std::string>& memories) override;
  void measureLevels(bool measured) override;
  std::vector<StreamLevel> takeLevels() override;

private:
  bool mayAnswer() const;
  PulseEvents events();
  /// On the queue, unless the connection has ended by then.
  void later(std::function<void(SoundListener&)> tell);

  Queue& queue_;
  const Environment environment_;
  std::unique_ptr<PulseLibrary> library_; ///< null until it is needed
  SoundListener* listener_ = nullptr;     ///< while there is a connection
  std::uint64_t connection_ = 0;          ///< number of the present one
  Lifeline<PulseSound> life_{*this};
  std::unique_ptr<PulseSession> session_; ///< last: its thread tells until it ends
};

} // namespace korvell
