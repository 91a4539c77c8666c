#pragma once
// Who makes a sound and how loud, as their page and the panel show it.

#include "Audio/AudioApp.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct SoundPage {
  /// An application, or the output.
  struct Row {
    std::string key, name;
    std::string picture; ///< the bundle or desktop entry; empty without one
    std::string detail;  ///< why it isn't heard, or can't be changed; empty otherwise
    int percent = 100;   ///< of full volume; the output's ends at 100
    bool isMuted = false;
    bool isPlaying = false;
    bool isAdjustable = true;
    bool isRemembered = false;   ///< and so can be reset
    std::optional<double> level; ///< on the slider's scale, 1 is 100 %
    std::string spoken;
    bool operator==(const Row&) const = default;
  };
  /// What stands in the middle of a page without rows.
  struct Empty {
    std::string title, sentence;
    bool operator==(const Empty&) const = default;
  };
  struct Trouble {
    std::string sentence, detail;
    bool isPermission = false; ///< the system's settings give it
    bool operator==(const Trouble&) const = default;
  };

  bool isMeasured = false; ///< false until the sound server answered
  std::string summary;     ///< "2 playing"; empty while it is quiet
  std::optional<Trouble> trouble;
  std::optional<Row> output;
  std::vector<Row> apps;       ///< those that play, then those that did in the last minutes
  std::string quiet;           ///< above all rows: why none of them plays; empty otherwise
  std::vector<Row> remembered; ///< those that make no sound now
  std::optional<Empty> empty;
  std::string note; ///< below everything; empty without one
  bool operator==(const SoundPage&) const = default;
};

/// The percentage beyond which nothing can be raised.
inline constexpr int loudestPercent = int(loudestApp * 100);

/// Absent where no application's volume can be set on this system.
SoundPage soundPage(const std::optional<SoundState>& state);

/// Those that were there in their order, then those that have come.
void keepOrder(std::vector<SoundPage::Row>& rows, const std::vector<std::string>& before);

/// For somebody who uses the page: no row moves, neither within its list nor to the other one, and who has
/// come stands at the end.
SoundPage settled(SoundPage page, const SoundPage& before);

} // namespace korvell
