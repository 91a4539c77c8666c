#pragma once
// The values that options take at this moment, for Option::suggest. A keeper's where there is one; otherwise
// what one look at the machine tells, without rates.

#include "Tool/Command.h"

#include <vector>

namespace korvell {

/// Names of the applications that can be quit.
std::vector<Suggestion> suggestedApplications(Context& context);
/// Process ids of the development servers.
std::vector<Suggestion> suggestedServers(Context& context);
/// Labels of the startup items that can be removed.
std::vector<Suggestion> suggestedLeftovers(Context& context);
/// The TCP ports on which this user's processes listen.
std::vector<Suggestion> suggestedPorts(Context& context);
/// Ids of all processes.
std::vector<Suggestion> suggestedProcesses(Context& context);

} // namespace korvell
