#pragma once
// What a launch file says: which program starts, when, and whether it is kept alive.
//
//   field        property list             autostart entry                    systemd service
//   label        Label, else file name     file name                          file name
//   program      Program, else the first   Exec without "env A=b"; TryExec    first ExecStart that is there,
//                of ProgramArguments       when that one is missing; the    unless it has a file system of
//                                          folder of a flatpak that is gone its own or (bare name)
//                                          ExecSearchPath
//   runsAtLoad   RunAtLoad                 unless Hidden or                   [Install] has WantedBy;
//                                          X-GNOME-Autostart-enabled=false    systemd knows better (scan)
//   keepAlive    KeepAlive true or a       never                              Restart other than "no"
//                dictionary of conditions

#include "Core/Startup/StartupItem.h"
#include "Platform/LaunchItems.h"

#include <optional>
#include <string>

namespace korvell {

/// Without `isLoaded` and `isLeftover`. Nothing for a file that is none of its format.
std::optional<StartupItem> readLaunchFile(const LaunchFile& file, LaunchItems& launchItems);

/// True when a program is named and certainly not there: nothing is at its path, or none of the folders of
/// programs has one of its name. A path relative to an unknown folder is never missing.
bool isProgramMissing(const std::optional<std::string>& program, LaunchItems& launchItems);

} // namespace korvell
