#pragma once
// Questions to one service on a message bus, one after the other, until the time is over. Blocks its thread.
// Nobody is started: a service that does not run is not there.

#include "Base/Date.h"
#include "Platform/Linux/BusHandles.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// A service and the sentences about its silence, keys of their localisation.
struct BusService {
  const char* name;
  std::string_view notThere;
  std::string_view late;
  std::string_view refused; ///< with {reason}
};

class BusInquiry {
public:
  /// `address` as in DBUS_SESSION_BUS_ADDRESS; empty where there is no bus. `patience` is for all questions.
  BusInquiry(const BusService& service, const std::string& address, Seconds patience);

  /// Why the last question got no answer that can be read, a sentence, localised; empty when it did.
  const std::string& silence() const { return silence_; }
  /// Somebody was asked who did not answer, now or before: what they have in use is not known.
  bool isLate() const { return isLate_; }
  /// Somebody answered, if only that they don't tell.
  bool isRefused() const { return isRefused_; }

  /// Null without an answer; then the silence tells why.
  template <class... Arguments>
  Message ask(const char* path, const char* ofInterface, const char* method, const char* signature,
              Arguments... arguments) {
    Message call = newCall(path, ofInterface, method);
    if (call && sd_bus_message_append(call.get(), signature, arguments...) < 0) call.reset();
    return send(std::move(call));
  }

private:
  Message newCall(const char* path, const char* ofInterface, const char* method);
  Message send(Message call);
  Message silent(std::string why, bool isLate = false);
  static int came(sd_bus_message* reply, void* data, sd_bus_error*);
  void wait() const;
  /// True for an answer that can be read; otherwise notes what the service or the bus said.
  bool isAnswer(sd_bus_message& reply);

  const BusService& service_;
  const SystemClock clock_;
  const Seconds limit_;
  const std::uint64_t microseconds_;
  Bus bus_;
  Message reply_; // ends before the bus that it came over
  std::string silence_;
  bool isLate_ = false, isRefused_ = false;
};

/// Reads a dictionary of properties, as GetAll answers it: `take(name, reply)` reads the value of a property,
/// with its variant around it, or leaves it and says so.
template <class Take>
bool eachProperty(sd_bus_message* reply, Take take) {
  if (sd_bus_message_enter_container(reply, 'a', "{sv}") < 0) return false;
  while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
    const char* name = "";
    if (sd_bus_message_read(reply, "s", &name) < 0) return false;
    if (!take(std::string_view(name)) && sd_bus_message_skip(reply, "v") < 0) return false;
    if (sd_bus_message_exit_container(reply) < 0) return false;
  }
  return sd_bus_message_exit_container(reply) >= 0;
}

} // namespace korvell
