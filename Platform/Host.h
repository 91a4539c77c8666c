#pragma once
// The operating system's answers, one object for each seam. makeHost() is defined once per system and called
// by main functions only; everything below main receives the seams that it needs as references.

#include "Base/LocalTime.h"
#include "Base/Localization.h"
#include "Base/UserFolders.h"
#include "Platform/Absent.h"
#include "Platform/DesktopFiles.h"
#include "Platform/Diagnostics.h"
#include "Platform/FileTree.h"
#include "Platform/LaunchItems.h"
#include "Platform/LogFiles.h"
#include "Platform/LoginItem.h"
#include "Platform/MachineCounters.h"
#include "Platform/MachineState.h"
#include "Platform/Notifications.h"
#include "Platform/PeripheralSource.h"
#include "Platform/ProcessTable.h"
#include "Platform/TemperatureSources.h"
#include "Platform/Trash.h"
#include "Platform/UsageHelper.h"
#include "Platform/UserDefaults.h"
#include "Platform/WidgetCenter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace korvell {

/// Whose rules and tables apply. Every system's are compiled and tested everywhere; main picks by this.
enum class SystemKind { linuxDesktop, macOS };

struct Host {
  SystemKind system = SystemKind::linuxDesktop;
  UserFolders folders;
  std::uint32_t user = 0; ///< effective user id
  std::string program;    ///< the running program's path; empty when unknown
  std::string locale;     ///< of texts, "de_DE.UTF-8"; empty for the English ones
  SystemWords words;      ///< the system's own words for localized()
  std::unique_ptr<TimeZone> zone = std::make_unique<SystemTimeZone>(); ///< the user's
  std::unique_ptr<UserDefaults> defaults = std::make_unique<NoUserDefaults>();
  std::unique_ptr<FileTree> fileTree;
  std::unique_ptr<LogFiles> logFiles;
  std::unique_ptr<Trash> trash = std::make_unique<NoTrash>();
  std::unique_ptr<MachineCounters> machine;
  TemperatureSources temperatures; ///< empty where there are none
  std::unique_ptr<PeripheralSource> peripherals = std::make_unique<NoPeripherals>();
  std::unique_ptr<Diagnostics> diagnostics;
  std::unique_ptr<MachineState> state = std::make_unique<UnknownMachineState>();
  std::unique_ptr<Notifications> notifications = std::make_unique<SilentNotifications>();
  std::function<void()> openWatch; ///< shows "korvell watch" in a window; null where there is none to open
  /// Opens the desktop's own settings of power and battery; null where there are none. May take seconds.
  std::function<void()> openBatterySettings;
  /// Opens the settings where the permission to change volumes is given; null where none is needed. May take
  /// seconds.
  std::function<void()> openSoundPermission;
  std::unique_ptr<ProcessTable> processes = std::make_unique<NoProcesses>();
  std::unique_ptr<ProcessControl> processControl = std::make_unique<NoProcessControl>();
  std::unique_ptr<RunningApplications> applications = std::make_unique<NoRunningApplications>();
  std::unique_ptr<UsageHelperService> usageHelper;
  std::unique_ptr<LaunchItems> launchItems = std::make_unique<NoLaunchItems>();
  std::unique_ptr<LoginItem> loginItem = std::make_unique<NoLoginItem>();
  std::unique_ptr<WidgetCenter> widgetCenter = std::make_unique<NoWidgetCenter>();
  std::unique_ptr<DesktopFiles> desktopFiles = std::make_unique<NoDesktopFiles>();
  BundleInfo bundleInfo; ///< empty where applications are no bundles
};

Host makeHost(const Environment& environment);

} // namespace korvell
