#include "Platform/Linux/ServiceManager.h"

#include "Base/Localization.h"
#include "Platform/Linux/BusInquiry.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace korvell {

namespace {

constexpr BusService service{.name = "org.freedesktop.systemd1",
                             .notThere = "systemd does not run here.",
                             .late = "systemd did not answer in time.",
                             .refused = "systemd refused to answer: {reason}"};
constexpr const char* objectPath = "/org/freedesktop/systemd1";
constexpr const char* interface = "org.freedesktop.systemd1.Manager";
constexpr const char* pattern = "*.service";
/// Far more than any machine has; a manager that tells more is not believed to the end.
constexpr std::size_t mostEntries = 20'000;

/// Something that runs, or has run and stays. One whose program is missing is "activating" for ever when it
/// is to be started again and again.
bool isActiveState(std::string_view state, std::string_view subState) {
  if (state == "activating") return !subState.starts_with("auto-restart");
  return state == "active" || state == "reloading" || state == "refreshing";
}

void takeUnits(sd_bus_message* reply, ManagedJobs& jobs) {
  if (sd_bus_message_enter_container(reply, 'a', "(ssssssouso)") < 0) return;
  for (std::size_t i = 0; i < mostEntries && sd_bus_message_enter_container(reply, 'r', "ssssssouso") > 0;
       ++i) {
    const char *name = "", *loadState = "", *activeState = "", *subState = "";
    const bool told = sd_bus_message_read(reply, "s", &name) > 0 && sd_bus_message_skip(reply, "s") >= 0 &&
                      sd_bus_message_read(reply, "sss", &loadState, &activeState, &subState) > 0;
    // Others are only mentioned by some unit.
    if (told && std::string_view(loadState) == "loaded") jobs.loaded.emplace(name);
    if (told && isActiveState(activeState, subState)) {
      const std::string_view unit = name;
      jobs.active.emplace(unit);
      if (const auto at = unit.find('@'); at != std::string_view::npos) // and what it is an instance of
        jobs.active.emplace(std::string(unit.substr(0, at + 1)) + ".service");
    }
    if (sd_bus_message_skip(reply, "souso") < 0 || sd_bus_message_exit_container(reply) < 0) break;
  }
}

void takeUnitFiles(sd_bus_message* reply, ManagedJobs& jobs) {
  if (sd_bus_message_enter_container(reply, 'a', "(ss)") < 0) return;
  const char *path = nullptr, *state = nullptr;
  for (std::size_t i = 0; i < mostEntries && sd_bus_message_read(reply, "(ss)", &path, &state) > 0; ++i) {
    const std::string_view file(path);
    jobs.enabled.emplace(file.substr(file.rfind('/') + 1), std::string_view(state).starts_with("enabled"));
  }
}

/// A property that says nothing: an empty text or list.
bool isEmptyValue(sd_bus_message* reply) {
  const char *contents = nullptr, *text = "";
  char type = 0;
  if (sd_bus_message_peek_type(reply, &type, &contents) < 0 ||
      sd_bus_message_enter_container(reply, type, contents) < 0)
    return true;
  bool empty = true;
  if (std::string_view(contents) == "s") {
    empty = sd_bus_message_read(reply, "s", &text) < 0 || !*text;
  } else if (*contents == 'a' && sd_bus_message_enter_container(reply, 'a', contents + 1) >= 0) {
    while (sd_bus_message_at_end(reply, 0) == 0 && sd_bus_message_skip(reply, contents + 1) >= 0)
      empty = false;
    sd_bus_message_exit_container(reply);
  }
  sd_bus_message_exit_container(reply);
  return empty;
}

std::vector<std::string> programsOf(sd_bus_message* reply) {
  std::vector<std::string> programs;
  if (sd_bus_message_enter_container(reply, 'v', "a(sasbttttuii)") < 0) return programs;
  sd_bus_message_enter_container(reply, 'a', "(sasbttttuii)");
  const char* path = "";
  while (sd_bus_message_enter_container(reply, 'r', "sasbttttuii") > 0 &&
         sd_bus_message_read(reply, "s", &path) > 0) {
    programs.emplace_back(path);
    if (sd_bus_message_skip(reply, "asbttttuii") < 0 || sd_bus_message_exit_container(reply) < 0) break;
  }
  sd_bus_message_exit_container(reply);
  sd_bus_message_exit_container(reply);
  return programs;
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
}

constexpr std::array<std::string_view, 8> ownPlaces{
    "RootDirectory",        "RootImage",     "BindPaths",
    "BindReadOnlyPaths",    "MountImages",   "ExtensionImages",
    "ExtensionDirectories", "ExecSearchPath"};

std::optional<EffectiveJob> askAboutService(BusInquiry& inquiry, const std::string& path) {
  constexpr const char* properties = "org.freedesktop.DBus.Properties";
  const auto name = path.substr(path.rfind('/') + 1);
  const auto loaded = inquiry.ask(objectPath, interface, "LoadUnit", "s", name.c_str());
  const char* object = nullptr;
  if (!loaded || sd_bus_message_read(loaded.get(), "o", &object) <= 0) return std::nullopt;

  EffectiveJob job;
  std::map<std::string_view, std::string> texts{
      {"LoadState", ""}, {"ActiveState", ""}, {"SubState", ""}, {"FragmentPath", ""}};
  const auto unit = inquiry.ask(object, properties, "GetAll", "s", "org.freedesktop.systemd1.Unit");
  const bool unitTold = unit && eachProperty(unit.get(), [&](std::string_view property) {
                          const auto wanted = texts.find(property);
                          const char* text = "";
                          if (wanted == texts.end() || sd_bus_message_read(unit.get(), "v", "s", &text) <= 0)
                            return false;
                          wanted->second = text;
                          return true;
                        });
  if (!unitTold || texts["LoadState"] != "loaded") return std::nullopt;
  job.isThisFile = isSameFile(texts["FragmentPath"], path);
  job.isActive = isActiveState(texts["ActiveState"], texts["SubState"]);

  const auto started = inquiry.ask(object, properties, "GetAll", "s", "org.freedesktop.systemd1.Service");
  const bool startedTold = started && eachProperty(started.get(), [&](std::string_view property) {
                             if (property == "ExecStart") {
                               job.programs = programsOf(started.get());
                               return true;
                             }
                             if (std::ranges::find(ownPlaces, property) == ownPlaces.end()) return false;
                             job.looksElsewhere |= !isEmptyValue(started.get());
                             return true;
                           });
  return startedTold ? std::optional(std::move(job)) : std::nullopt;
}

} // namespace

ManagedJobs askServiceManager(const std::string& busAddress, Seconds patience) {
  BusInquiry inquiry(service, busAddress, patience);
  ManagedJobs jobs;
  const auto units = inquiry.ask(objectPath, interface, "ListUnitsByPatterns", "asas", 0, 1, pattern);
  if (units) takeUnits(units.get(), jobs);
  const auto files =
      units ? inquiry.ask(objectPath, interface, "ListUnitFilesByPatterns", "asas", 0, 1, pattern) : nullptr;
  if (!files) {
    jobs = {};
    jobs.silence = inquiry.silence();
    jobs.mayRun = inquiry.isLate() || inquiry.isRefused();
    return jobs;
  }
  takeUnitFiles(files.get(), jobs);
  return jobs;
}

std::map<std::string, EffectiveJob>
askAboutServices(const std::string& busAddress, const std::vector<std::string>& paths, Seconds patience) {
  std::map<std::string, EffectiveJob> jobs;
  if (paths.empty()) return jobs;
  BusInquiry inquiry(service, busAddress, patience);
  for (const auto& path : paths) {
    auto job = askAboutService(inquiry, path);
    // Whoever stopped answering half-way may have it in use.
    if (!job && inquiry.isLate()) job = EffectiveJob{.looksElsewhere = true};
    if (job) jobs.emplace(path, std::move(*job));
  }
  return jobs;
}

} // namespace korvell
