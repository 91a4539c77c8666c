#pragma once
// The jobs that launchd has loaded, as `launchctl list` prints them: a header line, then process id (or "-"),
// last exit status and label, separated by tabs; only the caller's own domain is listed.

#include <set>
#include <string>
#include <string_view>

namespace korvell {

/// The labels. A line without two tabs or without a label is skipped.
std::set<std::string> parseLaunchJobs(std::string_view listing);

} // namespace korvell
