#pragma once
// The jobs that the system has loaded.
//
// launchd's as `launchctl list` prints them: a header line, then process id (or "-"), last exit status and
// label, separated by tabs; only the caller's own domain is listed. systemd's as `systemctl list-units --all
// --plain --no-legend` does: unit, load state, active state, sub-state and description, separated by spaces.

#include <set>
#include <string>
#include <string_view>

namespace korvell {

/// The labels. A line without two tabs or without a label is skipped.
std::set<std::string> parseLaunchJobs(std::string_view listing);

/// The names of the units whose load state is "loaded"; others are only mentioned by some unit.
std::set<std::string> parseLoadedUnits(std::string_view listing);

} // namespace korvell
