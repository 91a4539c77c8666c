#pragma once
// The files of a process under /proc on Linux (proc(5)). Each takes a whole file and answers nothing when the
// text is not what the kernel writes: cut short, empty, of another format.

#include "Base/Text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// /proc/PID/stat. The command name may hold anything, parentheses and line feeds included: it ends at the
/// last closing parenthesis of the file.
struct ProcessStat {
  std::string_view comm; ///< into the text
  char state = 0;        ///< 'Z' for a zombie
  std::int32_t parent = 0;
  bool kernelThread = false;
  std::uint64_t childMinorFaults = 0; ///< of reaped children; grows exactly when one is reaped
  std::uint64_t cpuTicks = 0;         ///< user and system, in clock ticks
  std::int64_t threads = 0;
  std::uint64_t start = 0; ///< ticks after boot
};
std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// Pages from /proc/PID/statm.
struct ProcessStatm {
  std::uint64_t resident = 0;
  std::uint64_t shared = 0; ///< file-backed and shared-memory pages
};
std::optional<ProcessStatm> parseProcessStatm(std::string_view text);

/// Bytes from /proc/PID/status; RssAnon and VmSwap are 0 for kernel threads and zombies.
struct ProcessStatus {
  std::uint32_t effectiveUser = 0;
  std::uint64_t rssAnon = 0;
  std::uint64_t vmSwap = 0;
};
std::optional<ProcessStatus> parseProcessStatus(std::string_view text);

/// From /proc/PID/status: its id in the innermost process-id namespace that it is in; nothing where that is
/// the reader's own.
std::optional<std::int32_t> innermostProcessID(std::string_view text);

/// Storage bytes from /proc/PID/io.
struct ProcessIO {
  std::uint64_t read = 0;
  std::uint64_t written = 0;
  bool operator==(const ProcessIO&) const = default;
};
std::optional<ProcessIO> parseProcessIO(std::string_view text);

/// The process's control group, of the text of /proc/PID/cgroup: its place in the unified hierarchy ("0::").
/// Where the controllers still have hierarchies of their own, the named one of systemd goes before it: a
/// container's engine may know only those, and leave the process in the engine's own group of the unified
/// one. A group other than the root goes before the root. Empty when there is none.
std::string_view controlGroup(std::string_view text);

/// The value of a variable in /proc/PID/environ; nothing when it is unset.
std::optional<std::string_view> environmentValue(std::string_view environ, std::string_view name);

/// Bytes of memory whose change says that some process's own memory changed: anonymous pages and used swap.
struct AnonymousMemory {
  std::uint64_t resident = 0;
  std::uint64_t swapped = 0;
};
std::optional<AnonymousMemory> parseAnonymousMemory(std::string_view meminfo);

} // namespace korvell
