#pragma once
// Commands ask the running keeper first, so that a terminal shows what the menu bar shows, at once.
//
// No keeper is not the same as one that runs and is silent: it is busy, it hangs, or it was stopped. Who asks
// is told so within the context's patience, and a silent one is sent no order that it might carry out later.

#include "Tool/Command.h"

#include <initializer_list>

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

/// Says of a silent keeper that it is one, and of one that is starting.
std::string silence(const KeeperAnswer& answer);

/// These parts of the keeper's state.
KeeperAnswer keeperState(Context& context, std::initializer_list<const char*> parts);
/// The same for what is measured. That the keeper is silent or starting is said on standard error.
KeeperAnswer askKeeper(Context& context, std::initializer_list<const char*> parts);
/// True when there is a keeper that does what it is asked. That it is silent, or of another version, is said
/// on standard error.
bool keeperActs(Context& context);

} // namespace korvell
