#pragma once
// The system's sound as a seam: which streams play, what they say of themselves, how loud they are. Which
// application a stream belongs to, what is remembered and when a lost server is looked for again are rules
// (SoundMixer).
//
// Lives on one queue, the mixer's, which it is made with: every method is called there, and there it tells
// its listener, also when the system calls back on threads of its own. No method waits but disconnect().

#include "Audio/AudioApp.h"
#include "Base/Queue.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvell {

/// Not given to another stream while the connection lasts.
using StreamID = std::uint64_t;

/// A stream as the system tells it. What it says of itself is a claim: any program can say anything.
struct SoundStream {
  StreamID id = 0;
  std::string sandboxID;     ///< claimed: application that a sandbox's portal named; empty without one
  ProcessID pid = 0;         ///< claimed; 0 when nothing is said
  bool isPIDCertain = false; ///< the system itself says so
  std::string program;       ///< claimed: file name of the executable
  std::string applicationID, applicationName; ///< claimed
  bool isLocal = true; ///< false: from another machine, where its process id means nothing
  double volume = 1;   ///< the loudest channel's, on the sliders' scale; may be above loudestApp
  bool muted = false;
  bool isPlaying = false;
  bool isOpen = true; ///< false: nothing but a process that could play, and does not
  bool isAdjustable = true;
  /// False while so new that the system has not given it its volume: its volume and mute mean nothing yet,
  /// but can be set.
  bool isSettled = true;
  std::string memory =
      {}; ///< name under which the system itself remembers its volume; empty where it doesn't

  bool operator==(const SoundStream&) const = default;
};

/// Streams of one application.
struct StreamSet {
  std::string app; ///< the application's key: its streams can share what changing them takes
  std::vector<StreamID> ids;
};

struct StreamLevel {
  StreamID id = 0;
  double peak = 0; ///< amplitude, 0 to 1, as it is heard: behind volume and mute
};

class SoundListener {
public:
  virtual ~SoundListener() = default;
  /// `connected` once everything that there was had been told; noServer and noLibrary: the connection failed
  /// or was lost, and nothing more is told of it.
  virtual void connectionChanged(SoundConnection connection) = 0;
  virtual void accessChanged(SoundAccess access) = 0;
  /// A new stream, or one that is known and has changed.
  virtual void streamChanged(const SoundStream& stream) = 0;
  virtual void streamEnded(StreamID id) = 0;
  virtual void outputChanged(const std::optional<OutputDevice>& output) = 0;
};

class SoundSystem {
public:
  virtual ~SoundSystem() = default;
  /// Begins to tell; the listener outlives the connection. Again after it failed, was lost or was ended.
  virtual void connect(SoundListener& listener) = 0;
  /// What was set by then is still carried out, for which it waits a second at most. Then nothing more is
  /// told.
  virtual void disconnect() = 0;
  // Streams that have ended, and whatever comes without a connection, are ignored.
  virtual void setVolume(const StreamSet& streams, double volume) = 0;
  virtual void setMuted(const StreamSet& streams, bool muted) = 0;
  virtual void setOutputVolume(double volume) = 0;
  virtual void setOutputMuted(bool muted) = 0;
  /// What the system itself remembers under these names for streams to come becomes full volume, unmuted.
  virtual void forget(const std::set<std::string>& memories) = 0;
  /// Whether levels are measured, which costs time as long as they are.
  virtual void measureLevels(bool measured) = 0;
  /// Of the streams that play, since the last call.
  virtual std::vector<StreamLevel> takeLevels() = 0;
};

/// Makes this system's on the queue that it shall live on; cheap until it is to connect.
using SoundSystemFactory = std::function<std::unique_ptr<SoundSystem>(Queue& queue)>;

} // namespace korvell
