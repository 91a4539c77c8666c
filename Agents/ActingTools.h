#pragma once
// The tools that end something. Each takes a handle that a reading tool gave out, asks the person with the
// words of every other way to do it, does it only when the person said yes, and tells what became of it.
// Nothing that a call holds counts as the person's word.

#include "Agents/Handles.h"
#include "Agents/MCPTool.h"
#include "App/Actions.h"

#include <vector>

namespace korvell {

/// Both outlive the tools.
std::vector<Tool> actingTools(Handles& handles, Actions& actions);

} // namespace korvell
