#pragma once
// What this system has for the mixer; defined once per system.

#include "Audio/StreamOwners.h"
#include "Base/UserFolders.h"

#include <memory>

namespace korvell {

/// Null where no volume of an application can be set.
SoundSystemFactory systemSound(const Environment& environment);
/// Whether a volume stays when the process that set it ends. Where it does not, only a process that stays can
/// set one.
bool volumesOutliveProcess();
/// Null with it.
std::unique_ptr<StreamProcesses> systemStreamProcesses();

} // namespace korvell
