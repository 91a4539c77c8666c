#pragma once
// Commands ask the running keeper first, so that a terminal shows what the menu bar shows, at once.

#include "Tool/Command.h"

#include <initializer_list>

namespace korvell {

/// These parts of the keeper's state; nothing without a keeper. One in the middle of a cycle answers a little
/// later; one that hangs is not waited for.
std::optional<Value> keeperState(Context& context, std::initializer_list<const char*> parts,
                                 Seconds patience = Seconds(2));
/// The same for what is measured: nothing, too, from a keeper that has not measured yet.
std::optional<Value> askKeeper(Context& context, std::initializer_list<const char*> parts,
                               Seconds patience = Seconds(2));
/// Has the keeper do something; its answer, or nothing when it did not answer.
std::optional<Value> tellKeeper(Context& context, const Value& request, Seconds patience);

} // namespace korvell
