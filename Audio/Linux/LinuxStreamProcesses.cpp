#include "Audio/Linux/LinuxStreamProcesses.h"

#include "Platform/Formats/ProcessFiles.h"

namespace korvell {

ProcessID LinuxStreamProcesses::parent(ProcessID pid) {
  const auto stat = parseProcessStat(proc_.read(pid, "stat").text);
  return stat ? stat->parent : 0;
}

std::vector<ProcessID> LinuxStreamProcesses::insiders(ProcessID inner) {
  std::vector<ProcessID> found;
  const auto entries = proc_.list(); // reading overwrites what it points to
  for (const auto& entry : entries)
    if (innermostProcessID(proc_.read(entry.pid, "status").text) == inner) found.push_back(entry.pid);
  return found;
}

} // namespace korvell
