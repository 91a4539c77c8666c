#include "Platform/Linux/BusInquiry.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>
#include <array>
#include <poll.h>

namespace korvell {

BusInquiry::BusInquiry(const BusService& service, const std::string& address, Seconds patience)
    : service_(service), limit_(clock_.monotonic() + patience),
      microseconds_(std::uint64_t(patience.count() * 1e6)) {
  sd_bus* bus = nullptr;
  if (address.empty() || sd_bus_new(&bus) < 0) return;
  bus_.reset(bus);
  if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
      sd_bus_start(bus) < 0)
    bus_.reset();
}

Message BusInquiry::newCall(const char* path, const char* ofInterface, const char* method) {
  if (!bus_) return nullptr;
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(bus_.get(), &message, service_.name, path, ofInterface, method);
  Message call(message);
  // Without the service the bus would start the program that stands in for it.
  if (call && sd_bus_message_set_auto_start(message, 0) < 0) call.reset();
  return call;
}

Message BusInquiry::send(Message call) {
  reply_.reset();
  silence_.clear();
  if (!bus_) return silent(localized("There is no message bus."));
  const bool sent =
      call && sd_bus_call_async(bus_.get(), nullptr, call.get(), came, this, microseconds_) >= 0;
  if (!sent) return silent(localized("The message bus does not work."), true);
  while (!reply_) {
    const int result = sd_bus_process(bus_.get(), nullptr);
    if (result < 0) return silent(localized("The message bus does not work."), true);
    if (result > 0) continue;
    if (clock_.monotonic() >= limit_) return silent(localized(service_.late), true);
    wait();
  }
  return isAnswer(*reply_) ? std::move(reply_) : nullptr;
}

Message BusInquiry::silent(std::string why, bool isLate) {
  silence_ = std::move(why);
  isLate_ |= isLate;
  bus_.reset(); // nothing that comes later may be taken for another answer
  return nullptr;
}

int BusInquiry::came(sd_bus_message* reply, void* data, sd_bus_error*) {
  static_cast<BusInquiry*>(data)->reply_.reset(sd_bus_message_ref(reply));
  return 0;
}

void BusInquiry::wait() const {
  std::uint64_t until = UINT64_MAX;
  sd_bus_get_timeout(bus_.get(), &until);
  const int left = int((limit_ - clock_.monotonic()).count() * 1000) + 1;
  const int timeout = millisecondsUntil(until);
  pollfd file{sd_bus_get_fd(bus_.get()), short(std::max(0, sd_bus_get_events(bus_.get()))), 0};
  poll(&file, 1, timeout < 0 ? left : std::min(left, timeout));
}

bool BusInquiry::isAnswer(sd_bus_message& reply) {
  const sd_bus_error* error = sd_bus_message_get_error(&reply);
  if (!error) return true;
  constexpr std::array<std::string_view, 3> absent{"org.freedesktop.DBus.Error.ServiceUnknown",
                                                   "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                   "org.freedesktop.DBus.Error.Disconnected"};
  isRefused_ = false;
  if (std::ranges::find(absent, error->name) != absent.end()) {
    silence_ = localized(service_.notThere);
    return false;
  }
  const bool isLate = sd_bus_error_has_name(error, SD_BUS_ERROR_NO_REPLY) ||
                      sd_bus_error_has_name(error, SD_BUS_ERROR_TIMEOUT);
  isLate_ |= isLate;
  isRefused_ = !isLate;
  if (isLate)
    silence_ = localized(service_.late);
  else
    silence_ = localized(service_.refused,
                         {{"reason", escapedControls(error->message ? error->message : error->name)}});
  return false;
}

} // namespace korvell
