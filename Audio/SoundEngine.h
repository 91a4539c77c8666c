#pragma once
// What SoundMixer does on its own queue: connects and looks for a lost server again, makes applications of
// streams, gives new streams of remembered applications their volume, takes over what was changed elsewhere,
// stores what was chosen. Lives on that queue, and ends on it.
//
// A stream of a remembered application gets the volume in the moment in which it is first told. For a second
// after that, up to three times, another volume that the server or the player gives it as it starts is
// replaced; what comes later is somebody's wish and taken over. The first report of a stream that is not
// settled is never taken for anything.

#include "Audio/PacedChanges.h"
#include "Audio/SharedValue.h"
#include "Audio/SoundMemory.h"
#include "Audio/SoundMixer.h"
#include "Audio/SoundSystem.h"
#include "Audio/StreamOwners.h"
#include "Base/Lifeline.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace korvell {

class SoundEngine final : private SoundListener {
public:
  /// How long an application stays listed after it played last.
  static constexpr Seconds recent{300};
  static constexpr Seconds settling{1};
  static constexpr Seconds levelPause{0.1};
  static constexpr Seconds storePause{0.5}; ///< of a drag not every position is written

  struct Services {
    SoundSystemFactory makeSystem;
    std::function<std::unique_ptr<StreamOwners>()> makeOwners;
    UserDefaults& defaults;
    SoundRole role = SoundRole::keeper;
    std::function<void(SoundState)> publish;
  };

  SoundEngine(Queue& queue, Services services);
  ~SoundEngine() override;
  SoundEngine(const SoundEngine&) = delete;
  SoundEngine& operator=(const SoundEngine&) = delete;

  void setWatched(bool list, bool levels);
  /// For somebody who asks now: a server that was lost is not waited for any longer.
  void retry();
  void change(const std::string& app, const SoundChange& change);
  void changeOutput(const SoundChange& change);
  void reset(const std::string& app);
  void resetAll();
  /// What was chosen and is not stored yet.
  void store();

private:
  static inline const std::string outputTarget; ///< no application has an empty key

  struct Stream {
    SoundStream told;
    StreamOwner owner;
    SharedValue<double> volume;
    SharedValue<bool> muted;
    Seconds since{0};
    int replaced = 0; ///< how often another volume was
  };
  struct App {
    Owner owner;
    double volume = 1; ///< when it was last listed
    bool muted = false;
    std::optional<Seconds> heard; ///< when it last played
    std::optional<double> level = {};
    std::vector<std::string> memories = {}; ///< as a remembered application's
  };

  void connectionChanged(SoundConnection connection) override;
  void accessChanged(SoundAccess access) override;
  void streamChanged(const SoundStream& stream) override;
  void streamEnded(StreamID id) override;
  void outputChanged(const std::optional<OutputDevice>& output) override;

  bool isKeeper() const { return services_.role == SoundRole::keeper; }
  void followNeed();
  void connect();
  void disconnect();
  void clear();
  StreamOwners& owners();
  void begin(const SoundStream& stream);
  void hear(Stream& stream, const SoundStream& now);
  void heedOthers(Stream& stream, bool volume, bool muted);
  void give(const std::string& app, StreamID stream);
  void adopt(const std::string& app);
  void showReal(AudioApp& shown, const std::vector<const Stream*>& streams) const;
  void send(const std::string& app, const std::vector<StreamID>& streams, const SoundChange& change);
  void sendTo(const std::string& target, const SoundChange& change);
  void remember(RememberedApp app);
  void noteMemory(const std::string& app, const std::string& memory);
  void forgetMemories(const std::string& app);
  void payOwed();
  void loadMemory();
  void forgetSilent();
  void measureLevels();
  void readLevels();
  void publishSoon();
  SoundState state() const;
  AudioApp listed(const std::string& key, const App& app) const;
  bool hasOpenStream(const std::string& app) const;
  static Seconds heardUntil(const App& app); ///< how long it is listed for what it played
  std::vector<const Stream*> streamsOf(const std::string& app) const;
  RememberedApp entryOf(const std::string& key) const;

  Queue& queue_;
  Services services_;
  SoundMemory memory_;
  std::map<std::string, RememberedApp> remembered_;
  std::set<std::string> unstored_;
  std::set<std::string> owed_; ///< memories of applications that were reset while there was no server
  bool isWatched_ = false, wantsLevels_ = false, measuresLevels_ = false;
  bool isOpen_ = false;      ///< connected, or about to be
  bool isWaiting_ = false;   ///< to look for the server again
  std::size_t failures_ = 0; ///< in a row
  SoundConnection connection_ = SoundConnection::idle;
  SoundAccess access_ = SoundAccess::granted;
  std::optional<OutputDevice> output_;
  SharedValue<double> outputVolume_;
  SharedValue<bool> outputMuted_;
  std::map<StreamID, Stream> streams_;
  std::map<std::string, App> apps_;
  bool isStored_ = true;
  bool isPublishing_ = false;
  std::unique_ptr<StreamOwners> owners_; ///< null until there are streams to come
  std::unique_ptr<SoundSystem> system_;  ///< null until the first connection
  PacedChanges changes_;
  std::unique_ptr<Timer> retrying_, levels_, storing_, forgetting_;
  Lifeline<SoundEngine> life_{*this};
};

} // namespace korvell
