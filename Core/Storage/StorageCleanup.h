#pragma once
// A confirmed clean-up: what it shall do, carrying it out, and what it freed.

#include "Base/Cancellation.h"
#include "Core/Storage/StorageModels.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace korvell {

class StorageScan;

/// The slow half of the storage clean-up, as the scanner asks for it on its work queue.
struct StorageWork {
  std::function<std::optional<StorageCategory>(StorageKind, const Cancellation&)> measure;
  std::function<ActionReport(const StorageAction&, const std::vector<StorageItem>&, const Cancellation&)>
      perform;
  /// The system asks the user before some folders are read.
  bool asksForAccess = false;
  /// Korvell's own data: a file there keeps two clean-ups by command from running at the same time. Empty:
  /// nothing does.
  std::string dataFolder = {};
  Seconds patience{10}; ///< how long a clean-up waits for another one to end
  /// What `perform` would do, one line for each thing that it touches; it looks at the disk.
  std::function<std::vector<std::string>(const StorageAction&, const std::vector<StorageItem>&)> preview = {};
  /// The home folder without links, for paths with "~"; it may look at the disk.
  std::function<std::string()> home = {};
};

/// The work that a scan does; it is asked for by whoever first needs it, on any queue but the main one.
StorageWork storageWork(std::function<const StorageScan&()> scan, bool asksForAccess, std::string dataFolder);

struct CleanupPlan {
  struct Step {
    StorageAction action;
    std::vector<StorageItem> items;
  };
  /// One for each action. The Trash is emptied before anything is moved into it: what a clean-up moves there
  /// can always be put back.
  std::vector<Step> steps;
  std::map<StorageKind, StorageCategory> before; ///< of each kind to be cleaned

  /// Takes those items that the result holds exactly as they are; whatever else was passed (of an earlier
  /// scan, changed, invented) is left out.
  static CleanupPlan of(const StorageScanResult& result, const std::vector<StorageItem>& items);
  bool empty() const { return steps.empty(); }
};

struct CleanupOutcome {
  std::vector<StorageCategory> rescanned; ///< of the cleaned kinds, those that still hold something
  std::map<StorageKind, std::int64_t> after;
  std::map<StorageKind, ActionReport::Done> done; ///< of a command: `bytes` when it began
  std::vector<std::string> problems;
  bool interrupted = false;   ///< what was not begun when it was cancelled was left alone
  bool commandFailed = false; ///< or was refused; it may have freed something all the same
  bool isBusy = false;        ///< another clean-up was running, and nothing was begun
};

/// Performs the steps and measures the cleaned kinds again. Cancelled, the running step is cut short and no
/// other one begins; what was done by then is measured all the same, so that it can be told and logged.
///
/// What a command freed is known only from measuring before and after it, so that of clean-ups with commands,
/// in whatever process, one runs at a time. Where the lock for that can't be made, as on a full disk, it is
/// done without.
CleanupOutcome carryOut(const CleanupPlan& plan, const StorageWork& work,
                        const Cancellation& cancellation = {});

/// Bytes, by the way in which they were freed, and how much was done that may have freed none.
struct FreedBytes {
  std::int64_t moved = 0; ///< to the Trash
  std::int64_t emptied = 0;
  std::int64_t commands = 0;
  std::size_t itemsMoved = 0;
  std::size_t entriesRemoved = 0; ///< from the Trash
  std::size_t commandsRun = 0;    ///< that succeeded

  /// What the log keeps. What was emptied was logged when it was moved to the Trash.
  std::int64_t logged() const { return checkedSum(moved, commands); }
  /// What happened, in a sentence or two.
  std::string feedback() const;
  bool operator==(const FreedBytes&) const = default;
};

/// What a kind lost, but no more than this clean-up itself moved or removed: another one may have been at
/// work at the same time. A kind that grew meanwhile freed nothing.
FreedBytes freedBytes(const CleanupPlan& plan, const CleanupOutcome& outcome);

/// What a clean-up did, or why it did nothing.
std::string feedback(const CleanupOutcome& outcome, const FreedBytes& freed);

/// Everything that there is to tell about a clean-up.
struct CleanupReport {
  FreedBytes freed;
  std::string feedback;              ///< in words
  std::vector<std::string> problems; ///< sentences about what could not be done
  bool interrupted = false;
  bool commandFailed = false;

  bool worked() const { return !interrupted && !commandFailed && freed != FreedBytes{}; }
};

/// The result with the cleaned kinds' categories replaced, in the order of the kinds.
StorageScanResult merged(StorageScanResult result, const CleanupPlan& plan, const CleanupOutcome& outcome);

} // namespace korvell
