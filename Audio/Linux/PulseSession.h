#pragma once
// One connection to a sound server, from its first word to its loss. The library's own thread calls back and
// tells what it hears; the methods may be called from any one other thread. Once lost it is of no more use.

#include "Audio/Linux/PulseLibrary.h"
#include "Audio/SoundSystem.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace korvell {

/// Told on the library's thread.
struct PulseEvents {
  std::function<void(SoundConnection)> connection; ///< connected, or noServer once
  std::function<void(SoundStream)> stream;
  std::function<void(StreamID)> ended;
  std::function<void(std::optional<OutputDevice>)> output;
};

class PulseSession {
public:
  /// Levels are read as often, a second, as people look at them.
  static constexpr std::uint32_t levelRate = 10;

  /// `machine`: this machine's id, to tell streams of others; empty when it is unknown.
  PulseSession(const PulseLibrary& library, PulseEvents events, std::string machine);
  /// Ends the thread; nothing is told afterwards.
  ~PulseSession();
  PulseSession(const PulseSession&) = delete;
  PulseSession& operator=(const PulseSession&) = delete;

  /// What can't even be begun is lost at once.
  void start();
  /// Until everything that was set has been answered.
  void finishChanges(Seconds patience);

  void setVolume(std::uint32_t stream, double volume);
  void setMuted(std::uint32_t stream, bool muted);
  void setOutputVolume(double volume);
  void setOutputMuted(bool muted);
  void forget(const std::set<std::string>& memories);
  void measureLevels(bool measured);
  std::vector<StreamLevel> takeLevels();

private:
  /// A stream, as it was told last.
  struct Input {
    SoundStream told;
    pa_cvolume shape{}; ///< its volume when it last was none of silence, which has no balance
    std::uint32_t sink = PA_INVALID_INDEX;
    bool isComplete = false; ///< its client has been asked, where that was needed
  };
  struct Meter {
    PulseSession* session = nullptr;
    pa_stream* stream = nullptr;
    std::uint32_t sink = PA_INVALID_INDEX;
    std::optional<float> peak;
  };
  class Lock;

  // On the library's thread, which holds the lock.
  static void stateChanged(pa_context* context, void* self);
  static void eventCame(pa_context* context, pa_subscription_event_type_t type, std::uint32_t index,
                        void* self);
  static void inputCame(pa_context* context, const pa_sink_input_info* info, int end, void* self);
  static void listedInputCame(pa_context* context, const pa_sink_input_info* info, int end, void* self);
  static void clientCame(pa_context* context, const pa_client_info* info, int end, void* self);
  static void serverCame(pa_context* context, const pa_server_info* info, void* self);
  static void outputCame(pa_context* context, const pa_sink_info* info, int end, void* self);
  static void monitorCame(pa_context* context, const pa_sink_info* info, int end, void* self);
  static void memoryCame(pa_context* context, const pa_ext_stream_restore_info* info, int end, void* self);
  static void changed(pa_context* context, int success, void* self);
  static void levelCame(pa_stream* stream, std::size_t bytes, void* meter);

  void heard(const pa_sink_input_info& info);
  void tell(const Input& input);
  void askOutput();
  void loseOutput();
  void finishList();
  pa_cvolume scaled(pa_cvolume shape, double volume) const;
  void keepShape(pa_cvolume& shape, const pa_cvolume& told) const;
  void writeFull(pa_ext_stream_restore_info entry);
  void end(std::uint32_t index);
  void lose();
  void sent(pa_operation* operation);
  void drop(pa_operation* operation) const;
  void claim(SoundStream& stream, const pa_proplist* properties) const;
  void followLevels();
  void openMeter(std::uint32_t index, Meter& meter, std::uint32_t monitor);
  void closeMeter(std::uint32_t index);

  const PulseLibrary& pulse_;
  const PulseEvents events_;
  const std::string machine_;
  pa_threaded_mainloop* loop_ = nullptr;
  pa_context* context_ = nullptr;

  // With the main loop's lock:
  /// The newer server's native clients, and its sandboxes' portal, tell things of clients and not of streams.
  /// Asking takes time that a new stream has not got, so it is left out where the server is known to be the
  /// other one.
  bool clientsSayMore_ = true;
  bool isListed_ = false, isLost_ = false, measuresLevels_ = false;
  std::map<std::uint32_t, Input> inputs_;
  std::multimap<std::uint32_t, std::uint32_t> asked_; ///< inputs that wait for a client, by client
  std::map<std::uint32_t, Meter> meters_;
  std::string outputName_;          ///< the server's, of the default sink; empty without one
  pa_cvolume outputShape_{};        ///< as an input's
  std::set<std::string> forgotten_; ///< names in the server's memory that wait to be

  std::mutex mutex_;
  std::condition_variable answered_;
  int unanswered_ = 0; ///< changes; guarded by the mutex
};

} // namespace korvell
