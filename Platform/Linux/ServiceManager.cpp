#include "Platform/Linux/ServiceManager.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Platform/Linux/BusHandles.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <string_view>

namespace korvell {

namespace {

constexpr const char* service = "org.freedesktop.systemd1";
constexpr const char* objectPath = "/org/freedesktop/systemd1";
constexpr const char* interface = "org.freedesktop.systemd1.Manager";
constexpr const char* pattern = "*.service";
/// Far more than any machine has; a manager that tells more is not believed to the end.
constexpr std::size_t mostEntries = 20'000;

/// One question to the manager, which runs until its last answer is in or the time is over.
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

  ManagedJobs run() {
    if (!bus_) return silent(localized("There is no message bus."));
    if (!call("ListUnitsByPatterns", unitsCame) || !call("ListUnitFilesByPatterns", unitFilesCame))
      return silent(localized("The message bus does not work."));
    while (pending_ > 0 && jobs_.silence.empty()) {
      const int result = sd_bus_process(bus_.get(), nullptr);
      if (result < 0) return silent(localized("The message bus does not work."));
      if (result > 0) continue;
      if (clock_.monotonic() >= limit_) return silent(localized("systemd did not answer in time."));
      wait();
    }
    return jobs_.silence.empty() ? std::move(jobs_) : silent(jobs_.silence);
  }

private:
  static ManagedJobs silent(std::string why) {
    return {.loaded = {}, .enabled = {}, .silence = std::move(why)};
  }

  bool call(const char* method, sd_bus_message_handler_t came) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(bus_.get(), &message, service, objectPath, interface, method);
    const Message owner(message);
    // Without a manager the bus would start the program that stands in for it.
    const bool sent = message && sd_bus_message_set_auto_start(message, 0) >= 0 &&
                      sd_bus_message_append(message, "asas", 0, 1, pattern) >= 0 &&
                      sd_bus_call_async(bus_.get(), nullptr, message, came, this, microseconds_) >= 0;
    pending_ += sent;
    return sent;
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
  bool takes(sd_bus_message* reply) {
    --pending_;
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    if (!error) return true;
    constexpr std::array<std::string_view, 3> absent{"org.freedesktop.DBus.Error.ServiceUnknown",
                                                     "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                     "org.freedesktop.DBus.Error.Disconnected"};
    if (std::ranges::find(absent, error->name) != absent.end())
      jobs_.silence = localized("systemd does not run here.");
    else if (sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) ||
             sd_bus_error_has_name(error, SD_BUS_ERROR_TIMEOUT))
      jobs_.silence = localized("systemd did not answer in time.");
    else
      jobs_.silence = localized("systemd refused to answer: {reason}",
                                {{"reason", escapedControls(error->message ? error->message : error->name)}});
    return false;
  }

  static int unitsCame(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& self = *static_cast<Inquiry*>(data);
    if (!self.takes(reply) || sd_bus_message_enter_container(reply, 'a', "(ssssssouso)") < 0) return 0;
    const char *name = nullptr, *loadState = nullptr;
    for (std::size_t i = 0; i < mostEntries && sd_bus_message_enter_container(reply, 'r', "ssssssouso") > 0;
         ++i) {
      // Others are only mentioned by some unit.
      if (sd_bus_message_read(reply, "s", &name) > 0 && sd_bus_message_skip(reply, "s") >= 0 &&
          sd_bus_message_read(reply, "s", &loadState) > 0 && std::string_view(loadState) == "loaded")
        self.jobs_.loaded.emplace(name);
      if (sd_bus_message_skip(reply, "sssouso") < 0 || sd_bus_message_exit_container(reply) < 0) break;
    }
    return 0;
  }

  static int unitFilesCame(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& self = *static_cast<Inquiry*>(data);
    if (!self.takes(reply) || sd_bus_message_enter_container(reply, 'a', "(ss)") < 0) return 0;
    const char *path = nullptr, *state = nullptr;
    for (std::size_t i = 0; i < mostEntries && sd_bus_message_read(reply, "(ss)", &path, &state) > 0; ++i) {
      const std::string_view file(path);
      self.jobs_.enabled.emplace(file.substr(file.rfind('/') + 1),
                                 std::string_view(state).starts_with("enabled"));
    }
    return 0;
  }

  const SystemClock clock_;
  const Seconds limit_;
  const std::uint64_t microseconds_;
  Bus bus_;
  int pending_ = 0;
  ManagedJobs jobs_;
};

} // namespace

ManagedJobs askServiceManager(const std::string& busAddress, Seconds patience) {
  return Inquiry(busAddress, patience).run();
}

} // namespace korvell
