#pragma once
// What answers where a system, or a test, has nothing to ask: everything is empty, nothing is done, and
// nobody needs to look for null.

#include "Base/Localization.h"
#include "Platform/DesktopFiles.h"
#include "Platform/LaunchItems.h"
#include "Platform/MachineState.h"
#include "Platform/Notifications.h"
#include "Platform/ProcessTable.h"
#include "Platform/Trash.h"
#include "Platform/UserDefaults.h"

namespace korvell {

class NoProcesses final : public ProcessTable {
public:
  const std::vector<ProcessCounters>& read() override { return none_; }
  std::optional<ProcessFacts> facts(ProcessID) override { return std::nullopt; }
  std::optional<std::uint64_t> start(ProcessID) override { return std::nullopt; }
  std::optional<Date> startDate(ProcessID) override { return std::nullopt; }
  std::optional<std::string> workingDirectory(ProcessID) override { return std::nullopt; }
  PortsByPID listeningPorts() override { return {}; }
  std::optional<bool> isListenedOn(int) override { return std::nullopt; }
  Timebase timebase() const override { return {}; }
  bool energyIsEstimate() const override { return false; }
  bool tellsEnergy() const override { return false; }

private:
  const std::vector<ProcessCounters> none_{};
};

class NoProcessControl final : public ProcessControl {
public:
  SignalOutcome send(ProcessID, std::uint64_t, ProcessSignal) override { return SignalOutcome::gone; }
};

class NoRunningApplications final : public RunningApplications {
public:
  std::vector<RunningApplication> list() override { return {}; }
  bool quit(ProcessID, bool) override { return false; }
};

class NoLaunchItems final : public LaunchItems {
public:
  std::vector<LaunchFile> files() override { return {}; }
  LoadedJobs loadedJobs() override { return {}; }
  bool isMissing(const std::string&) override { return false; }
  const ProgramPlaces& places() const override { return places_; }
  Outcome stop(const LaunchJob&) override { return Failure{localized("There are no startup items here.")}; }
  void removed(const LaunchJob&) override {}

private:
  const ProgramPlaces places_{};
};

class NoDesktopFiles final : public DesktopFiles {
public:
  std::uint64_t stamp() override { return 0; }
  std::vector<DesktopFile> read() override { return {}; }
  std::optional<std::string> realProgram(const std::string&) override { return std::nullopt; }
};

/// Always cool, just started.
class UnknownMachineState final : public MachineState {
public:
  ThermalState thermalState() const override { return ThermalState::nominal; }
  Seconds uptime() const override { return Seconds{0}; }
};

class SilentNotifications final : public Notifications {
public:
  void post(const Notification&) override {}
};

/// Every setting has its default, and none can be changed.
class NoUserDefaults final : public UserDefaults {
public:
  std::optional<Value> value(std::string_view) const override { return std::nullopt; }
  bool update(std::string_view, const std::function<std::optional<Value>(std::optional<Value>)>&) override {
    return false;
  }
  std::string place() const override { return {}; }
};

class NoTrash final : public Trash {
public:
  std::vector<Outcome> move(const std::vector<TrashRequest>& requests) override {
    return {requests.size(), Failure{localized("There is no Trash here.")}};
  }
  std::vector<TrashFolder> folders() override { return {}; }
};

} // namespace korvell
