#include "Platform/Formats/LinuxWords.h"
#include "Platform/Host.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Platform/Linux/SettingsFile.h"

namespace korvell {

Host makeHost(const Environment& environment) {
  static const SystemClock clock;
  Host host;
  host.folders = linuxUserFolders(environment);
  host.words = linuxWords();
  host.defaults = std::make_unique<SettingsFile>(host.folders.config, clock);
  host.machine = std::make_unique<LinuxMachineCounters>();
  return host;
}

} // namespace korvell
