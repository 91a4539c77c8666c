#pragma once
// What this system has for the mixer; defined once per system.

#include "Audio/StreamOwners.h"
#include "Base/UserFolders.h"

#include <memory>

namespace korvell {

/// Null where no volume of an application can be set.
SoundSystemFactory systemSound(const Environment& environment);
/// Null with it.
std::unique_ptr<StreamProcesses> systemStreamProcesses();

} // namespace korvell
