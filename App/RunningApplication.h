#pragma once
// One application a user: a second start, a link and the desktop's "open" reach the first through the
// keeper's socket, and it shows itself.
//
//   {"do":"open","urls":["korvell://page/memory"],"activation":"…"}      -> {"ok":true}
//
// Without addresses the application is opened again. "activation" is the token by which the desktop lets the
// window come to the front. A keeper without an interface refuses.

#include "App/AppDelegate.h"
#include "App/Keeper.h"
#include "App/KeeperLock.h"

#include <functional>
#include <string>
#include <vector>

namespace korvell {

struct OpenRequest {
  std::vector<std::string> urls;
  std::string activation; ///< empty without one
};

/// What a start of the application finds.
struct Launch {
  /// Held by who is to be the application; absent where another one is and has shown itself, or where
  /// neither can be had.
  std::optional<KeeperLock> lock;
  std::string trouble;   ///< why there is neither, a sentence; empty otherwise
  bool tookOver = false; ///< from a headless keeper, which comes back when this one ends
};

/// Reaches the application that runs, or makes room for this process: a headless keeper steps back. Blocks
/// for as long as a keeper takes to write its minute; `patience` bounds the wait for one that starts at this
/// very moment.
Launch launch(const UserFolders& folders, const OpenRequest& request, Seconds patience);

/// Teaches the application's keeper to be opened, and to refuse to step back. `activate` hears the token
/// first.
void answerOpening(Keeper& keeper, const AppDelegate& delegate,
                   std::function<void(const std::string& activation)> activate);

} // namespace korvell
