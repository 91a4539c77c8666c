#pragma once
// A session bus with nothing on it but a notification service. What it can do and how it answers is set
// before the first notification.

#include "FakeBus.h"

#include <condition_variable>
#include <optional>
#include <vector>

namespace korvell {

class FakeNotificationServer {
public:
  struct Received {
    std::string application, icon, summary, body;
    std::uint32_t replaces = 0;
    std::vector<std::string> actions;
    int urgency = -1;
    std::string desktopEntry;
  };

  explicit FakeNotificationServer(const std::string& path, std::vector<std::string> capabilities = {},
                                  bool answers = true)
      : capabilities_(std::move(capabilities)), answers_(answers),
        bus_(path, [this](sd_bus_message* message) { return called(message); }) {}

  std::string address() const { return bus_.address(); }

  /// The next notification; nothing when none comes within a generous time.
  std::optional<Received> next() {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(10), [&] { return !received_.empty(); })) return {};
    auto first = std::move(received_.front());
    received_.pop_front();
    return first;
  }
  /// Waits until somebody has asked something.
  bool wasAsked() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [&] { return asked_; });
  }
  void invoke(std::uint32_t id, const char* action) {
    bus_.tell([=, this] { emit("ActionInvoked", "us", id, action); });
  }
  void close(std::uint32_t id) {
    bus_.tell([=, this] { emit("NotificationClosed", "uu", id, 2u); });
  }
  void hangUp() { bus_.hangUp(); }
  /// The bus tells that another program is the service now.
  void giveWay() {
    bus_.tell([this] {
      sd_bus_message* signal = nullptr;
      sd_bus_message_new_signal(bus_.connection(), &signal, "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                "NameOwnerChanged");
      sd_bus_message_append(signal, "sss", "org.freedesktop.Notifications", ":1.3", ":1.4");
      sd_bus_message_set_sender(signal, "org.freedesktop.DBus");
      sd_bus_send(bus_.connection(), signal, nullptr);
      sd_bus_message_unref(signal);
    });
  }

private:
  template <class... Arguments>
  void emit(const char* member, const char* types, Arguments... arguments) {
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(bus_.connection(), &signal, "/org/freedesktop/Notifications",
                              "org.freedesktop.Notifications", member);
    sd_bus_message_append(signal, types, arguments...);
    sd_bus_message_set_sender(signal, ":1.3"); // as the bus does
    sd_bus_send(bus_.connection(), signal, nullptr);
    sd_bus_message_unref(signal);
  }

  int called(sd_bus_message* message) {
    {
      const std::lock_guard lock(mutex_);
      asked_ = true;
    }
    changed_.notify_all();
    if (!answers_) return 1;
    return std::string_view(sd_bus_message_get_member(message)) == "Notify" ? notified(message)
                                                                            : asked(message);
  }

  int asked(sd_bus_message* message) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(message, &reply);
    sd_bus_message_open_container(reply, 'a', "s");
    for (const auto& capability : capabilities_) sd_bus_message_append(reply, "s", capability.c_str());
    sd_bus_message_close_container(reply);
    const int result = sd_bus_send(bus_.connection(), reply, nullptr);
    sd_bus_message_unref(reply);
    return result < 0 ? result : 1;
  }

  int notified(sd_bus_message* message) {
    Received received;
    const char *application = "", *icon = "", *summary = "", *body = "", *text = "";
    sd_bus_message_read(message, "susss", &application, &received.replaces, &icon, &summary, &body);
    received.application = application;
    received.icon = icon;
    received.summary = summary;
    received.body = body;
    sd_bus_message_enter_container(message, 'a', "s");
    while (sd_bus_message_read(message, "s", &text) > 0) received.actions.emplace_back(text);
    sd_bus_message_exit_container(message);
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
      sd_bus_message_read(message, "s", &text);
      std::uint8_t byte = 0;
      const char* value = "";
      if (std::string_view(text) == "urgency" && sd_bus_message_read(message, "v", "y", &byte) > 0)
        received.urgency = byte;
      else if (std::string_view(text) == "desktop-entry" &&
               sd_bus_message_read(message, "v", "s", &value) > 0)
        received.desktopEntry = value;
      sd_bus_message_exit_container(message);
    }
    const int result =
        sd_bus_reply_method_return(message, "u", received.replaces ? received.replaces : ++id_);
    {
      const std::lock_guard lock(mutex_);
      received_.push_back(std::move(received));
    }
    changed_.notify_all();
    return result;
  }

  const std::vector<std::string> capabilities_;
  const bool answers_;
  std::uint32_t id_ = 40;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Received> received_;
  bool asked_ = false;
  FakeBus bus_; ///< last: its thread uses all the others
};

} // namespace korvell
