#include "Audio/SystemSound.h"

#include "Audio/Linux/LinuxStreamProcesses.h"
#include "Audio/Linux/PulseSound.h"

namespace korvell {

SoundSystemFactory systemSound(const Environment& environment) {
  return [environment](Queue& queue) { return std::make_unique<PulseSound>(queue, environment); };
}

bool volumesOutliveProcess() { return true; }

std::unique_ptr<StreamProcesses> systemStreamProcesses() {
  return std::make_unique<LinuxStreamProcesses>(LinuxProcessTable::systemSources());
}

} // namespace korvell
