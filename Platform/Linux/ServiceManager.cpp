#include "Platform/Linux/ServiceManager.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Platform/Linux/BusHandles.h"

#include <algorithm>
#include <array>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/stat.h>

namespace korvell {

namespace {

constexpr const char* service = "org.freedesktop.systemd1";
constexpr const char* objectPath = "/org/freedesktop/systemd1";
constexpr const char* interface = "org.freedesktop.systemd1.Manager";
constexpr const char* pattern = "*.service";
/// Far more than any machine has; a manager that tells more is not believed to the end.
constexpr std::size_t mostEntries = 20'000;

/// Questions to one manager, one after the other, until the time is over.
class Inquiry {
public:
  Inquiry(const std::string& address, Seconds patience)
      : limit_(clock_.monotonic() + patience), microseconds_(std::uint64_t(patience.count() * 1e6)) {
    sd_bus* bus = nullptr;
    if (address.empty() || sd_bus_new(&bus) < 0) return;
    bus_.reset(bus);
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0)
      bus_.reset();
  }

  /// Why the last question got no answer that can be read; empty when it did.
  const std::string& silence() const { return silence_; }
  /// Somebody was asked who did not answer, now or before: what they have in use is not known.
  bool isLate() const { return isLate_; }
  /// Somebody answered, if only that they don't tell.
  bool isRefused() const { return isRefused_; }

  /// Null without an answer; then the silence tells why.
  template <class... Arguments>
  Message ask(const char* path, const char* ofInterface, const char* method, const char* signature,
              Arguments... arguments) {
    reply_.reset();
    silence_.clear();
    if (!bus_) return silent(localized("There is no message bus."));
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_.get(), &message, service, path, ofInterface, method);
    const Message owner(message);
    // Without a manager the bus would start the program that stands in for it.
    const bool sent = message && sd_bus_message_set_auto_start(message, 0) >= 0 &&
                      sd_bus_message_append(message, signature, arguments...) >= 0 &&
                      sd_bus_call_async(bus_.get(), nullptr, message, came, this, microseconds_) >= 0;
    if (!sent) return silent(localized("The message bus does not work."), true);
    while (!reply_) {
      const int result = sd_bus_process(bus_.get(), nullptr);
      if (result < 0) return silent(localized("The message bus does not work."), true);
      if (result > 0) continue;
      if (clock_.monotonic() >= limit_) return silent(localized("systemd did not answer in time."), true);
      wait();
    }
    return isAnswer(*reply_) ? std::move(reply_) : nullptr;
  }

private:
  Message silent(std::string why, bool isLate = false) {
    silence_ = std::move(why);
    isLate_ |= isLate;
    bus_.reset(); // nothing that comes later may be taken for another answer
    return nullptr;
  }

  static int came(sd_bus_message* reply, void* data, sd_bus_error*) {
    static_cast<Inquiry*>(data)->reply_.reset(sd_bus_message_ref(reply));
    return 0;
  }

  void wait() const {
    std::uint64_t until = UINT64_MAX;
    sd_bus_get_timeout(bus_.get(), &until);
    const int left = int((limit_ - clock_.monotonic()).count() * 1000) + 1;
    const int timeout = millisecondsUntil(until);
    pollfd file{sd_bus_get_fd(bus_.get()), short(std::max(0, sd_bus_get_events(bus_.get()))), 0};
    poll(&file, 1, timeout < 0 ? left : std::min(left, timeout));
  }

  /// True for an answer that can be read; otherwise notes what the manager or the bus said.
  bool isAnswer(sd_bus_message& reply) {
    const sd_bus_error* error = sd_bus_message_get_error(&reply);
    if (!error) return true;
    constexpr std::array<std::string_view, 3> absent{"org.freedesktop.DBus.Error.ServiceUnknown",
                                                     "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                     "org.freedesktop.DBus.Error.Disconnected"};
    isRefused_ = false;
    if (std::ranges::find(absent, error->name) != absent.end()) {
      silence_ = localized("systemd does not run here.");
      return false;
    }
    const bool isLate = sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) ||
                        sd_bus_error_has_name(error, SD_BUS_ERROR_TIMEOUT);
    isLate_ |= isLate;
    isRefused_ = !isLate;
    if (isLate)
      silence_ = localized("systemd did not answer in time.");
    else
      silence_ = localized("systemd refused to answer: {reason}",
                           {{"reason", escapedControls(error->message ? error->message : error->name)}});
    return false;
  }

  const SystemClock clock_;
  const Seconds limit_;
  const std::uint64_t microseconds_;
  Bus bus_;
  Message reply_; // ends before the bus that it came over
  std::string silence_;
  bool isLate_ = false, isRefused_ = false;
};

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

/// Reads what GetAll answers: `take(name, reply)` reads the value of a property, with its variant around it,
/// or leaves it and says so.
template <class Take>
bool eachProperty(sd_bus_message* reply, Take take) {
  if (sd_bus_message_enter_container(reply, 'a', "{sv}") < 0) return false;
  while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
    const char* name = "";
    if (sd_bus_message_read(reply, "s", &name) < 0) return false;
    if (!take(std::string_view(name)) && sd_bus_message_skip(reply, "v") < 0) return false;
    if (sd_bus_message_exit_container(reply) < 0) return false;
  }
  return true;
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

std::optional<EffectiveJob> askAboutService(Inquiry& inquiry, const std::string& path) {
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
  Inquiry inquiry(busAddress, patience);
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
  Inquiry inquiry(busAddress, patience);
  for (const auto& path : paths) {
    auto job = askAboutService(inquiry, path);
    // Whoever stopped answering half-way may have it in use.
    if (!job && inquiry.isLate()) job = EffectiveJob{.looksElsewhere = true};
    if (job) jobs.emplace(path, std::move(*job));
  }
  return jobs;
}

} // namespace korvell
