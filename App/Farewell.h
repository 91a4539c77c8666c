#pragma once
// What Korvell has put into the user's folders and into the system, so that it can be taken away again, and
// what of it belongs to somebody else.

#include "Base/Result.h"
#include "Base/Shell.h"
#include "Platform/Host.h"

#include <functional>
#include <string>
#include <vector>

namespace korvell {

struct FarewellStep {
  std::string description; ///< a sentence: what is done
  std::function<Outcome()> perform;
};

struct Farewell {
  std::vector<FarewellStep> steps; ///< in order; only of what is there
  bool stopsKeeper = false;        ///< the first step ends what the user's services run
  std::string running; ///< stillRunning() of a Korvell that no step ends, or that a widget keeps its data
  std::vector<std::string> remarks; ///< what is left to others, and how they take it away
};

/// Looks, and changes nothing; what it refers to outlives the result. `isAdministrator`: the helper can be
/// taken away too. `withData`: databases and settings go to the Trash, otherwise a remark says where they
/// are. Blocks while the package manager is asked whose the program is.
Farewell farewell(Host& host, const Environment& environment, const CommandRunner& run, bool isAdministrator,
                  bool withData);

/// That somebody holds the keeper's lock and would go on writing, and is to be quit; empty when nobody does.
std::string stillRunning(const UserFolders& folders);

} // namespace korvell
