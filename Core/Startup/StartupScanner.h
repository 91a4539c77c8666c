#pragma once
// Lists the programs that the system starts by itself, finds the leftovers among them (their program no
// longer exists, usually because its application was deleted) and removes those. Stateless; from any thread
// but the main one, because it waits for the disk and for programs.

#include "Core/Startup/StartupItem.h"
#include "Platform/LaunchItems.h"
#include "Platform/Trash.h"

#include <string>
#include <vector>

namespace korvell {

struct StartupScanner {
  /// Leftovers first, then by label. A file that can't be read or understood is skipped.
  static std::vector<StartupItem> scan(LaunchItems& launchItems);

  /// Looks again which of the items are leftovers, without reading their files: programs come and go between
  /// scans. Whoever runs the jobs is asked only about programs that have gone since. True when one has
  /// changed.
  static bool refreshLeftovers(std::vector<StartupItem>& items, LaunchItems& launchItems);

  /// What to confirm before remove().
  static std::string confirmation(const StartupItem& item);

  /// Stops the job and moves its file to the Trash: the very file that still says what the item says. Only
  /// for leftovers: when the program exists or the job is in use by now, the file says something else, or
  /// this user may not remove it, nothing is changed. A file that the Trash refuses stays, its job stopped;
  /// the failure says so.
  static Outcome remove(const StartupItem& item, LaunchItems& launchItems, Trash& trash);
};

/// True when the program is part of an application's bundle.
bool runsInsideApplication(const StartupItem& item);

} // namespace korvell
