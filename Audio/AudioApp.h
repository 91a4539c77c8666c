#pragma once
// The applications that make sound, as views, commands and agents see them. Plain values.
//
// Volumes are on the scale of sliders: 1 is 100 %, full and unchanged; what is heard is the volume's third
// power (amplitude = volume³), the curve of the sound servers.

#include "Base/Enum.h"
#include "Base/Record.h"
#include "Platform/ProcessTable.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// How far an application's volume can be raised; the output's ends at 1.
inline constexpr double loudestApp = 1.5;

struct AudioApp {
  std::string key;                       ///< as of the applications that are measured
  std::string name;                      ///< display name
  std::optional<std::string> bundlePath; ///< the bundle, or the desktop entry on Linux
  std::vector<ProcessID> pids;           ///< that it plays from, ascending; empty where nobody tells
  double volume = 1;                     ///< 0 to loudestApp
  bool muted = false;
  bool playing = false;        ///< now; false while all it plays is paused, and for minutes after it ended
  bool isAdjustable = true;    ///< false: the system lets nobody change it
  bool isRemembered = false;   ///< its volume was chosen here and is given to everything that it will play
  std::optional<double> level; ///< peak since the level before, 0 to 1; absent while nobody looks

  bool operator==(const AudioApp&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"key", &AudioApp::key},
                      Field{"name", &AudioApp::name},
                      Field{"bundlePath", &AudioApp::bundlePath},
                      Field{"pids", &AudioApp::pids},
                      Field{"volume", &AudioApp::volume},
                      Field{"muted", &AudioApp::muted},
                      Field{"playing", &AudioApp::playing},
                      Field{"isAdjustable", &AudioApp::isAdjustable},
                      Field{"isRemembered", &AudioApp::isRemembered},
                      Field{"level", &AudioApp::level}};
  }
};

/// What the user chose for an application.
struct RememberedApp {
  std::string key, name;
  std::optional<std::string> bundlePath;
  double volume = 1; ///< 0 to loudestApp
  bool muted = false;
  /// Names under which the sound server itself remembers what it plays, the newest last; absent where it
  /// doesn't. A reset changes that too.
  std::optional<std::vector<std::string>> memories = {};
  static constexpr std::size_t mostMemories = 8;

  bool operator==(const RememberedApp&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"key", &RememberedApp::key},
                      Field{"name", &RememberedApp::name},
                      Field{"bundlePath", &RememberedApp::bundlePath},
                      Field{"volume", &RememberedApp::volume},
                      Field{"muted", &RememberedApp::muted},
                      Field{"memories", &RememberedApp::memories}};
  }
};

/// Where everything is heard that goes nowhere else.
struct OutputDevice {
  std::string name;  ///< "Built-in Audio Analog Stereo"
  double volume = 1; ///< 0 to 1; more where something else raised it further
  bool muted = false;
  bool isAdjustable = true;

  bool operator==(const OutputDevice&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &OutputDevice::name}, Field{"volume", &OutputDevice::volume},
                      Field{"muted", &OutputDevice::muted},
                      Field{"isAdjustable", &OutputDevice::isAdjustable}};
  }
};

enum class SoundConnection {
  idle,       ///< nobody needs it
  connecting, ///< not everything is listed yet
  connected,
  unsupported, ///< the system lets nobody set an application's volume
  noServer,    ///< none runs or answers; it is looked for again
  noLibrary,   ///< what it takes to talk to one is not installed
};

/// The titles are what is told instead of a list.
template <>
struct EnumTable<SoundConnection> {
  using enum SoundConnection;
  static constexpr EnumCase<SoundConnection> cases[] = {
      {idle, "idle", "Nobody listens to the sound server."},
      {connecting, "connecting", "Looking for the sound server…"},
      {connected, "connected", "Nothing makes a sound."},
      {unsupported, "unsupported", "This system lets nobody set the volumes of applications."},
      {noServer, "noServer", "No sound server runs here, so there are no volumes to show."},
      {noLibrary, "noLibrary", "PulseAudio's client library is not installed, so no volume can be shown."}};
};

/// Whether volumes may be changed. Systems that ask nobody always grant it.
enum class SoundAccess { granted, unasked, denied };

template <>
struct EnumTable<SoundAccess> {
  using enum SoundAccess;
  static constexpr EnumCase<SoundAccess> cases[] = {
      {granted, "granted", "Volumes can be changed."},
      {unasked, "unasked", "The system asks for permission when a volume is changed for the first time."},
      {denied, "denied", "The system does not allow Korvell to change volumes."}};
};

struct SoundState {
  SoundConnection connection = SoundConnection::idle;
  SoundAccess access = SoundAccess::granted;
  std::optional<OutputDevice> output;    ///< absent while there is none
  std::vector<AudioApp> apps;            ///< those that play first, then by name
  std::vector<RememberedApp> remembered; ///< by name, the listed ones too
  bool isStored = true;                  ///< false: the settings refused what was chosen last

  bool operator==(const SoundState&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"connection", &SoundState::connection}, Field{"access", &SoundState::access},
                      Field{"output", &SoundState::output},         Field{"apps", &SoundState::apps},
                      Field{"remembered", &SoundState::remembered}, Field{"isStored", &SoundState::isStored}};
  }
};

} // namespace korvell
