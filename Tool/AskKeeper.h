#pragma once
// Commands ask the running keeper first, so that a terminal shows what the menu bar shows, at once.

#include "App/KeeperAnswer.h"
#include "Tool/Command.h"

#include <initializer_list>

namespace korvell {

/// These parts of the keeper's state.
KeeperAnswer keeperState(Context& context, std::initializer_list<const char*> parts);
/// The same for what is measured. That the keeper is silent or starting is said on standard error.
KeeperAnswer askKeeper(Context& context, std::initializer_list<const char*> parts);
/// True when there is a keeper that does what it is asked. That it is silent, or of another version, is said
/// on standard error.
bool keeperActs(Context& context);

} // namespace korvell
