#pragma once
// What a process is called on Linux.

#include <string>
#include <string_view>

namespace korvell {

/// The kernel appends what a worker is doing to its name, "kworker/0:1-events", which changes all the time.
std::string_view stableKernelThreadName(std::string_view comm);

/// The executable's file name; for a binary that stands for many commands, for one that runs from memory
/// (memfd_create) and when the executable is hidden, the name that the command line gives, as long as the
/// kernel's short name does not contradict it (programs write titles such as "postgres: writer" there); else
/// the short name.
std::string processName(std::string_view path, std::string_view commandLine, std::string_view comm);

} // namespace korvell
