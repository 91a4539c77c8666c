#include "Platform/Formats/ProcessName.h"

#include <algorithm>

namespace korvell {

namespace {

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

constexpr std::string_view binariesOfManyCommands[] = {"busybox", "toybox", "coreutils"};
constexpr std::size_t shortNameLength = 15;
constexpr std::string_view memoryFile = "/memfd:";

/// Executing a descriptor leaves its number as the short name, or on newer kernels the name of its file.
bool saysNothing(std::string_view comm) {
  return comm.starts_with(memoryFile.substr(1)) || comm.find_first_not_of("0123456789") == comm.npos;
}

} // namespace

std::string_view stableKernelThreadName(std::string_view comm) {
  return comm.starts_with("kworker/") ? comm.substr(0, comm.find_first_of("-+")) : comm;
}

std::string processName(std::string_view path, std::string_view commandLine, std::string_view comm) {
  const bool fromMemory = path.starts_with(memoryFile);
  const auto program = path.substr(fromMemory ? memoryFile.size() : path.rfind('/') + 1);
  const bool ofManyCommands =
      std::ranges::find(binariesOfManyCommands, program) != std::end(binariesOfManyCommands);
  if (!program.empty() && !fromMemory && !ofManyCommands) return std::string(program);
  auto argument = commandLine.substr(0, commandLine.find('\0'));
  argument = argument.substr(0, argument.find(' '));
  if (argument.starts_with('-')) argument.remove_prefix(1); // a login shell
  auto named = fileName(argument);
  if (named.ends_with(':')) named.remove_suffix(1);
  if (fromMemory && saysNothing(comm)) return std::string(named.empty() ? program : named);
  if (!comm.empty() && named.substr(0, shortNameLength) == comm) return std::string(named);
  return std::string(comm.empty() ? program : comm);
}

} // namespace korvell
