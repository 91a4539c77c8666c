#include "Base/Shell.h"
#include "Base/SystemQueue.h"
#include "Base/macOS/CoreFoundation.h"
#include "Platform/Host.h"
#include "Platform/Posix/PosixLogFiles.h"
#include "Platform/macOS/MacApplications.h"
#include "Platform/macOS/MacDiagnostics.h"
#include "Platform/macOS/MacFileTree.h"
#include "Platform/macOS/MacLaunchItems.h"
#include "Platform/macOS/MacLoginItem.h"
#include "Platform/macOS/MacMachineCounters.h"
#include "Platform/macOS/MacMachineState.h"
#include "Platform/macOS/MacNotifications.h"
#include "Platform/macOS/MacPeripherals.h"
#include "Platform/macOS/MacProcessTable.h"
#include "Platform/macOS/MacTemperatures.h"
#include "Platform/macOS/MacTrash.h"
#include "Platform/macOS/MacUsageHelper.h"
#include "Platform/macOS/MacWidgetCenter.h"
#include "Platform/macOS/SystemUserDefaults.h"

#include <climits>
#include <cstdint>
#include <mach-o/dyld.h>
#include <string>
#include <unistd.h>

namespace korvell {

namespace {

std::string runningProgram() {
  std::uint32_t size = PATH_MAX;
  std::string path(size, '\0');
  if (_NSGetExecutablePath(path.data(), &size) != 0) return {};
  return path.substr(0, path.find('\0'));
}

void openSettings(const std::string& page) {
  constexpr Seconds patience{5};
  Shell::run("/usr/bin/open", {"x-apple.systempreferences:" + page}, patience);
}

/// A terminal's environment says it; an application has none and asks for the user's first language.
std::string localeOf(const Environment& environment) {
  for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (const auto locale = environment(variable); locale && !locale->empty()) return *locale;
  const CFOwned<CFArrayRef> preferred(CFLocaleCopyPreferredLanguages());
  if (!preferred || CFArrayGetCount(preferred.get()) == 0) return {};
  return cfText(cfCast<CFStringRef>(CFArrayGetValueAtIndex(preferred.get(), 0), CFStringGetTypeID()));
}

} // namespace

Host makeHost(const Environment& environment) {
  static const SystemClock clock;
  Host host;
  host.system = SystemKind::macOS;
  host.folders = macOSUserFolders(environment);
  host.user = geteuid();
  host.program = runningProgram();
  host.locale = localeOf(environment);
  host.words = {}; // the keys are this system's words
  host.defaults = std::make_unique<SystemUserDefaults>(host.folders.data);
  host.fileTree = std::make_unique<MacFileTree>();
  host.logFiles = std::make_unique<PosixLogFiles>();
  host.trash = std::make_unique<MacTrash>(host.folders.home);
  host.machine = std::make_unique<MacMachineCounters>();
  host.state = std::make_unique<MacMachineState>();
  host.temperatures.openController = openMacController;
  host.temperatures.openEvents = openMacTemperatureEvents;
  host.peripherals = std::make_unique<MacPeripherals>(Shell::run, utilityQueueFactory());
  host.processes = std::make_unique<MacProcessTable>(Shell::run);
  host.processControl = std::make_unique<MacProcessControl>();
  host.applications = std::make_unique<MacRunningApplications>();
  host.usageHelper = std::make_unique<MacUsageHelper>();
  host.launchItems = std::make_unique<MacLaunchItems>(host.folders, Shell::run, getuid());
  host.loginItem = std::make_unique<MacLoginItem>();
  host.diagnostics = std::make_unique<MacDiagnostics>(
      MacSources{*host.machine, *host.state, *host.applications, *host.launchItems, Shell::run}, clock);
#ifdef KORVELL_WIDGET // else nobody has a widget
  host.widgetCenter = std::make_unique<MacWidgetCenter>();
#endif
  host.bundleInfo = macBundleInfo;
  host.notifications = std::make_unique<MacNotifications>();
  host.openBatterySettings = [] { openSettings("com.apple.Battery-Settings.extension"); };
  host.openSoundPermission = [] { openSettings("com.apple.preference.security?Privacy_AudioCapture"); };
  return host;
}

} // namespace korvell
