#include "Platform/Formats/ProcessName.h"

#include <algorithm>

namespace korvell {

namespace {

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

constexpr std::string_view binariesOfManyCommands[] = {"busybox", "toybox", "coreutils"};
constexpr std::size_t shortNameLength = 15;

} // namespace

std::string_view stableKernelThreadName(std::string_view comm) {
  return comm.starts_with("kworker/") ? comm.substr(0, comm.find_first_of("-+")) : comm;
}

std::string processName(std::string_view path, std::string_view commandLine, std::string_view comm) {
  // A program that runs from sealed memory has a number for a file name.
  const auto program = path.starts_with("/memfd:") ? std::string_view() : fileName(path);
  if (!program.empty() && std::find(std::begin(binariesOfManyCommands), std::end(binariesOfManyCommands),
                                    program) == std::end(binariesOfManyCommands))
    return std::string(program);
  auto argument = commandLine.substr(0, commandLine.find('\0'));
  argument = argument.substr(0, argument.find(' '));
  if (argument.starts_with('-')) argument.remove_prefix(1); // a login shell
  auto named = fileName(argument);
  if (named.ends_with(':')) named.remove_suffix(1);
  if (!comm.empty() && named.substr(0, shortNameLength) == comm) return std::string(named);
  return std::string(comm.empty() ? program : comm);
}

} // namespace korvell
