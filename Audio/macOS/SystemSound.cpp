#include "Audio/SystemSound.h"

namespace korvell {

SoundSystemFactory systemSound(const Environment&) { return nullptr; }
bool volumesOutliveProcess() { return false; }
std::unique_ptr<StreamProcesses> systemStreamProcesses() { return nullptr; }

} // namespace korvell
