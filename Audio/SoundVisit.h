#pragma once
// Sound for those who look once and go, such as commands: a connection of their own, and calls that wait.
// Lives on one thread; the connection is on a queue of its own.

#include "Audio/SoundMixer.h"
#include "Base/Record.h"
#include "Base/Result.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// What somebody asks for an application that is listed or remembered.
struct SoundRequest {
  std::string app; ///< its key, or its name in any case
  std::optional<double> volume;
  std::optional<bool> muted;
  bool reset = false; ///< instead of both

  bool operator==(const SoundRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"app", &SoundRequest::app}, Field{"volume", &SoundRequest::volume},
                      Field{"muted", &SoundRequest::muted}, Field{"reset", &SoundRequest::reset}};
  }
};

/// Nothing of `connection` is about to change by itself at once.
constexpr bool isSettled(SoundConnection connection) {
  return connection != SoundConnection::idle && connection != SoundConnection::connecting;
}

/// The application as the state shows it after a change: listed, or only remembered.
std::optional<AudioApp> shownApp(const SoundState& state, std::string_view key);

/// An application that was remembered only, and is no more.
AudioApp forgotten(AudioApp app);
/// Why its volume stays as it is.
std::string unadjustable(const std::string& name);

class SoundVisit {
public:
  /// Connects. The role is a visitor's, or a rememberer's where volumes end with their process.
  SoundVisit(SoundMixer::Services services, Seconds patience);
  /// What was changed is carried out and stored by then.
  ~SoundVisit();
  SoundVisit(const SoundVisit&) = delete;
  SoundVisit& operator=(const SoundVisit&) = delete;

  /// Waits until everything is listed, or until nothing can be.
  SoundState state();
  /// Fails with a sentence: no such application, a volume that nobody can change, settings that refuse it.
  Result<AudioApp> change(const SoundRequest& request);

private:
  SoundState publishedNow();

  const Seconds patience_;
  std::mutex mutex_;
  std::condition_variable changed_;
  SoundState state_; ///< guarded by the mutex
  std::unique_ptr<SoundEngine> engine_;
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell
