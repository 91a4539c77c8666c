#pragma once
// What a running keeper says of the machine, asked once. Blocking; any thread.
//
// No keeper is not the same as one that runs and is silent: it is busy, it hangs, or it was stopped. Who asks
// is told so within its patience, and a silent one is sent no order that it might carry out later.

#include "Base/Date.h"
#include "Base/UserFolders.h"
#include "Base/Value.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

namespace korvell {

struct KeeperAnswer {
  std::optional<Value> value; ///< nothing without a keeper, or from a silent one
  bool isSilent = false;
  bool isStarting = false; ///< it has not measured yet: what it answers says nothing of the machine
  std::int64_t pid = 0;    ///< of a silent one; 0 when it is not known

  bool isRunning() const { return value || isSilent; }
  explicit operator bool() const { return value && !isStarting; }
  const Value& operator*() const { return *value; }
  const Value* operator->() const { return &*value; }
};

/// These parts of the keeper's state, whether it has measured or not.
KeeperAnswer keeperState(const UserFolders& folders, Seconds patience,
                         std::initializer_list<const char*> parts);
/// The same for what is measured: one that has not begun to is told apart.
KeeperAnswer measuredState(const UserFolders& folders, Seconds patience,
                           std::initializer_list<const char*> parts);
/// Without an answer: whether there is somebody who should have given one.
KeeperAnswer unanswered(const UserFolders& folders);
/// Says of a silent keeper that it is one, and of one that is starting.
std::string silence(const KeeperAnswer& answer);

} // namespace korvell
