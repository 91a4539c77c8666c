#pragma once
// A home in which every section has much to show, made up and the same in every run but for its dates: a
// month of history with 15 applications a minute, session logs of AI tools, old projects to clean.

#include <cstdint>
#include <string>

namespace korvell {

/// Fills a home that was just created; dates end at `now`, in seconds since 1970. Takes some ten seconds.
void fillHome(const std::string& home, std::int64_t now);

} // namespace korvell
