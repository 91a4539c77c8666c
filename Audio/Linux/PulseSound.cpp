#include "Audio/Linux/PulseSound.h"

#include "Base/Files.h"
#include "Base/Text.h"

#include <filesystem>

namespace korvell {

namespace {

constexpr Seconds patience{1};

std::string machineID() {
  constexpr std::size_t most = 64;
  const auto text = readFile("/etc/machine-id", most);
  return text ? std::string(trimmed(*text)) : std::string();
}

} // namespace

bool PulseSound::mayAnswer() const {
  if (environment_("PULSE_SERVER")) return true;
  const auto isThere = [this](const char* variable, const char* socket) {
    const auto folder = environment_(variable);
    std::error_code error;
    return folder && std::filesystem::exists(*folder + socket, error);
  };
  return isThere("XDG_RUNTIME_DIR", "/pulse/native") || isThere("PULSE_RUNTIME_PATH", "/native");
}

void PulseSound::connect(SoundListener& listener) {
  disconnect();
  listener_ = &listener;
  ++connection_;
  if (!mayAnswer())
    return later([](SoundListener& told) { told.connectionChanged(SoundConnection::noServer); });
  if (!library_) library_ = PulseLibrary::open();
  if (!library_)
    return later([](SoundListener& told) { told.connectionChanged(SoundConnection::noLibrary); });
  session_ = std::make_unique<PulseSession>(*library_, events(), machineID());
  session_->start();
}

void PulseSound::disconnect() {
  if (session_) session_->finishChanges(patience);
  session_.reset();
  listener_ = nullptr;
}

void PulseSound::later(std::function<void(SoundListener&)> tell) {
  queue_.async([watch = life_.watch(), tell = std::move(tell), number = connection_] {
    auto* sound = watch.get();
    if (sound && sound->listener_ && sound->connection_ == number) tell(*sound->listener_);
  });
}

PulseEvents PulseSound::events() {
  // On the library's thread, which ends before this object does.
  return {[this](SoundConnection connection) {
            later([connection](SoundListener& told) { told.connectionChanged(connection); });
          },
          [this](SoundStream stream) {
            later([stream = std::move(stream)](SoundListener& told) { told.streamChanged(stream); });
          },
          [this](StreamID id) { later([id](SoundListener& told) { told.streamEnded(id); }); },
          [this](std::optional<OutputDevice> output) {
            later([output = std::move(output)](SoundListener& told) { told.outputChanged(output); });
          }};
}

void PulseSound::setVolume(const StreamSet& streams, double volume) {
  for (const auto id : streams.ids)
    if (session_) session_->setVolume(static_cast<std::uint32_t>(id), volume);
}

void PulseSound::setMuted(const StreamSet& streams, bool muted) {
  for (const auto id : streams.ids)
    if (session_) session_->setMuted(static_cast<std::uint32_t>(id), muted);
}

void PulseSound::setOutputVolume(double volume) {
  if (session_) session_->setOutputVolume(volume);
}

void PulseSound::setOutputMuted(bool muted) {
  if (session_) session_->setOutputMuted(muted);
}

void PulseSound::forget(const std::set<std::string>& memories) {
  if (session_) session_->forget(memories);
}

void PulseSound::measureLevels(bool measured) {
  if (session_) session_->measureLevels(measured);
}

std::vector<StreamLevel> PulseSound::takeLevels() {
  return session_ ? session_->takeLevels() : std::vector<StreamLevel>();
}

} // namespace korvell
