#pragma once
// What "Free Up Space" shows, as plain values made of what the scanner publishes, and what its boxes do to
// the scanner's selection. Nothing is ticked but by the user. Main queue only.

#include "App/ActionRequest.h"
#include "Base/LocalTime.h"
#include "Core/Machine/Models.h"
#include "Core/Storage/StorageLog.h"
#include "Core/Storage/StorageScanner.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Token.h"
#include "UI/Kit/Tone.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvell {

enum class Ticks { none, some, all };

struct StorageItemRow {
  std::string id, title;
  std::string detail; ///< a path, or how it is removed
  std::string date;   ///< "last change in July"; empty where none qualified it
  std::string size;
  std::string path; ///< to be shown in the file manager; empty for what is no file
  bool isTicked = false;
  std::string spoken;

  bool operator==(const StorageItemRow&) const = default;
};

struct StorageRow {
  StorageKind kind = StorageKind::derivedData;
  Icon icon = Icon::box;
  Token hue = Token::gray;
  std::string title, safety;
  Tone tone = Tone::good;  ///< of the safety
  std::string explanation; ///< empty where the row above has just said it
  std::string size;        ///< "–" where nothing could be measured
  double level = 0;        ///< of the largest category, from 0 to 1
  Ticks ticks = Ticks::none;
  bool canTick = false;
  bool isBusy = false; ///< it is being cleaned
  bool unfolds = false, isUnfolded = false;
  std::vector<StorageItemRow> items; ///< only while unfolded
  std::string note;                  ///< under the items, or in their place
  std::string spoken;

  bool operator==(const StorageRow&) const = default;
};

struct StorageRows {
  std::string title, size;
  std::vector<StorageRow> rows;

  bool operator==(const StorageRows&) const = default;
};

/// The volume that the home folder lies on; the three amounts make up the whole.
struct StorageDisk {
  struct Part {
    std::string name, size;
    double bytes = 0;
    bool operator==(const Part&) const = default;
  };
  Part stays, freed, free;
  std::string outlook; ///< "75.7 GB free if all of it goes"

  bool operator==(const StorageDisk&) const = default;
};

struct StorageFooter {
  std::string headline;     ///< what the last clean-up did, until something is ticked; else what is ticked
  std::optional<Tone> tone; ///< of what it did
  std::string detail;
  std::string action; ///< "Move to Trash…"; empty where there is nothing to tick
  bool canAct = false, canUntick = false;

  bool isEmpty() const { return headline.empty() && detail.empty() && action.empty(); }
  bool operator==(const StorageFooter&) const = default;
};

struct StoragePage {
  enum class State { unscanned, scanning, empty, found };
  struct Freed {
    std::string when, size;
    bool operator==(const Freed&) const = default;
  };
  static constexpr std::size_t mostFreed = 10;

  State state = State::unscanned;
  bool canScan = false; ///< neither a scan nor a clean-up is under way
  // While scanning
  double progress = 0; ///< from 0 to 1
  std::string step, notice;
  // What was found
  Figure total;
  std::optional<StorageDisk> disk; ///< absent where the volume is not known
  std::vector<StorageRows> groups;
  std::vector<Freed> log; ///< the newest clean-ups first
  std::string freed;      ///< "Freed with Korvell: 128 GB"; empty before anything was
  StorageFooter footer;

  bool operator==(const StoragePage&) const = default;
};

/// What the scanner does not know.
struct StorageContext {
  const TimeZone& zone;
  Date now;
  std::optional<VolumeInfo> volume{}; ///< that the home folder lies on
  std::vector<FreedEntry> log{};      ///< in time order
  std::set<StorageKind> unfolded{};
};

StoragePage storagePage(const StorageScanner& scanner, const StorageContext& context);

/// The one that a path lies on; nothing where none is known.
std::optional<VolumeInfo> volumeOf(const std::vector<VolumeInfo>& volumes, const std::string& path);

// What is being cleaned keeps its ticks. Each of these takes the last clean-up's words off the page.

/// All of the category; none where all are ticked already.
void toggle(StorageScanner& scanner, StorageKind kind);
void toggle(StorageScanner& scanner, const std::string& id);
void untickAll(StorageScanner& scanner);
/// What the footer's button asks for: the ticked items of the scan that is shown. Nothing without any.
std::optional<CleanStorageRequest> cleanRequest(const StorageScanner& scanner);

} // namespace korvell
