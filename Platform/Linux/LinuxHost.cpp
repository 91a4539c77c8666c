#include "Base/Shell.h"
#include "Base/SystemQueue.h"
#include "Platform/Formats/LinuxWords.h"
#include "Platform/Host.h"
#include "Platform/Linux/AutostartFile.h"
#include "Platform/Linux/DesktopFolders.h"
#include "Platform/Linux/DesktopNotifications.h"
#include "Platform/Linux/DesktopPrograms.h"
#include "Platform/Linux/LinuxDiagnostics.h"
#include "Platform/Linux/LinuxFileTree.h"
#include "Platform/Linux/LinuxLaunchItems.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Platform/Linux/LinuxMachineState.h"
#include "Platform/Linux/LinuxPeripherals.h"
#include "Platform/Linux/LinuxProcessControl.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/LinuxSensorChips.h"
#include "Platform/Linux/LinuxTrash.h"
#include "Platform/Linux/LinuxUsageHelper.h"
#include "Platform/Linux/LinuxWidgetCenter.h"
#include "Platform/Linux/SettingsFile.h"
#include "Platform/Posix/PlacedWidget.h"
#include "Platform/Posix/PosixLogFiles.h"
#include "Words/German/Tables.h"

#include <filesystem>
#include <unistd.h>

namespace korvell {

namespace {

/// Where the session bus listens; empty when nothing says so.
std::string sessionBus(const Environment& environment) {
  if (auto address = environment("DBUS_SESSION_BUS_ADDRESS")) return *address;
  const auto runtime = environment("XDG_RUNTIME_DIR");
  return runtime && runtime->starts_with('/') ? "unix:path=" + *runtime + "/bus" : std::string();
}

} // namespace

Host makeHost(const Environment& environment) {
  static const SystemClock clock;
  const BusAddresses buses{.session = sessionBus(environment)};
  Host host;
  host.folders = linuxUserFolders(environment);
  host.user = geteuid();
  for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (host.locale.empty()) host.locale = environment(variable).value_or("");
  host.words = {linuxWords(), german::onLinux()};
  host.defaults = std::make_unique<SettingsFile>(host.folders.config);
  host.fileTree = std::make_unique<LinuxFileTree>();
  host.logFiles = std::make_unique<PosixLogFiles>();
  host.trash =
      std::make_unique<LinuxTrash>(host.folders.home, host.folders.dataHome, getuid(), clock, *host.zone);
  const LinuxMachineRoots roots;
  const auto shared = std::make_shared<SharedReadings>(roots.proc, roots.sys);
  host.machine = std::make_unique<LinuxMachineCounters>(roots, shared);
  host.processes = std::make_unique<LinuxProcessTable>(LinuxProcessTable::systemSources(shared));
  host.processControl = std::make_unique<LinuxProcessControl>();
  host.desktopFiles = std::make_unique<DesktopFolders>(DesktopFolders::of(host.folders, environment));
  host.launchItems =
      std::make_unique<LinuxLaunchItems>(host.folders, Shell::run, buses, environment("PATH").value_or(""));
  host.usageHelper = std::make_unique<LinuxUsageHelper>(LinuxUsageHelper::systemSources(environment));
  host.diagnostics = std::make_unique<LinuxDiagnostics>(clock, buses, host.usageHelper.get());
  host.state = std::make_unique<LinuxMachineState>(clock);
  host.temperatures.chips = std::make_unique<LinuxSensorChips>(clock, systemQueueFactory());
  host.peripherals = std::make_unique<LinuxPeripherals>(buses.system);
  host.notifications = std::make_unique<DesktopNotifications>(buses.session);
  std::error_code error;
  host.program = std::filesystem::read_symlink("/proc/self/exe", error).string();
  host.loginItem = std::make_unique<AutostartFile>(host.folders, host.program);
  host.widgetCenter = std::make_unique<LinuxWidgetCenter>(placedWidgetsFolder(host.folders));
  if (const auto window = terminalWindow({host.program, "watch"}, environment))
    host.openWatch = [window = *window] { window.open(); };
  if (const auto settings = powerSettings(environment))
    host.openBatterySettings = [settings = *settings] { settings.open(); };
  return host;
}

} // namespace korvell
