#pragma once
// Session logs of both tools like those of a busy month, the same for the same seed.
//
// Seven tenths of the bytes are Claude Code's. Lines take from 200 bytes to 200 kB and about 4 kB on
// average, two thirds of them say nothing of tokens, messages are written in several lines, and every tenth
// file repeats the beginning of the one before it, as resumed sessions do.

#include <cstdint>
#include <string>

namespace korvell {

struct GeneratedLogs {
  std::int64_t files = 0, bytes = 0, lines = 0;
};

/// Writes at least `bytes` in `files` files below `home`. Lines are dated in the 25 days before `now`
/// (seconds since 1970).
GeneratedLogs generateLogs(const std::string& home, std::int64_t bytes, int files, std::uint64_t seed,
                           std::int64_t now);

} // namespace korvell
