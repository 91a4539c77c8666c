#pragma once
// A session bus with nothing on it but a notification service: both answered on one connection at a time, on
// a thread of its own. What it can do and how it answers is set before the first notification.

#include "Base/Descriptor.h"
#include "Base/Queue.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <thread>
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
      : path_(path), capabilities_(std::move(capabilities)), answers_(answers),
        listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), wake_(eventfd(0, EFD_CLOEXEC)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    unlink(path.c_str());
    bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address));
    listen(listener_.get(), 4);
    thread_ = std::thread([this] { run(); });
  }
  ~FakeNotificationServer() {
    tell([this] { stopping_ = true; });
    thread_.join();
  }

  std::string address() const { return "unix:path=" + path_; }

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
    tell([=, this] { emit("ActionInvoked", "us", id, action); });
  }
  void close(std::uint32_t id) {
    tell([=, this] { emit("NotificationClosed", "uu", id, 2u); });
  }
  /// Ends the connection, as a bus that goes away.
  void hangUp() {
    tell([this] { bus_ = sd_bus_close_unref(bus_); });
  }

private:
  void tell(Task task) {
    {
      const std::lock_guard lock(mutex_);
      tasks_.push_back(std::move(task));
    }
    eventfd_write(wake_.get(), 1);
  }

  template <class... Arguments>
  void emit(const char* member, const char* types, Arguments... arguments) {
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(bus_, &signal, "/org/freedesktop/Notifications",
                              "org.freedesktop.Notifications", member);
    sd_bus_message_append(signal, types, arguments...);
    sd_bus_message_set_sender(signal, ":1.3"); // as the bus does
    sd_bus_send(bus_, signal, nullptr);
    sd_bus_message_unref(signal);
  }

  void run() {
    while (!stopping_) {
      pollfd files[] = {{listener_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}, {-1, 0, 0}};
      if (bus_) files[2] = {sd_bus_get_fd(bus_), short(sd_bus_get_events(bus_)), 0};
      poll(files, 3, -1);
      if (files[0].revents) accept();
      if (files[1].revents) runTasks();
      int result = 1;
      while (bus_ && result > 0) result = sd_bus_process(bus_, nullptr);
      if (result < 0) bus_ = sd_bus_close_unref(bus_);
    }
    bus_ = sd_bus_close_unref(bus_);
  }

  void runTasks() {
    eventfd_t ignored = 0;
    eventfd_read(wake_.get(), &ignored);
    std::deque<Task> tasks;
    {
      const std::lock_guard lock(mutex_);
      tasks.swap(tasks_);
    }
    for (auto& task : tasks) task();
  }

  void accept() {
    const int file = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    bus_ = sd_bus_close_unref(bus_);
    sd_id128_t id{};
    sd_id128_randomize(&id);
    sd_bus_new(&bus_);
    sd_bus_set_fd(bus_, file, file);
    sd_bus_set_server(bus_, 1, id);
    sd_bus_set_anonymous(bus_, 1);
    sd_bus_add_filter(bus_, nullptr, called, this);
    sd_bus_start(bus_);
  }

  static int called(sd_bus_message* message, void* data, sd_bus_error*) {
    auto& server = *static_cast<FakeNotificationServer*>(data);
    const char* member = sd_bus_message_get_member(message);
    if (!member) return 0;
    if (std::string_view(member) == "Hello") return sd_bus_reply_method_return(message, "s", ":1.7");
    if (std::string_view(member) == "AddMatch") return sd_bus_reply_method_return(message, "");
    {
      const std::lock_guard lock(server.mutex_);
      server.asked_ = true;
    }
    server.changed_.notify_all();
    if (!server.answers_) return 1;
    return std::string_view(member) == "Notify" ? server.notified(message) : server.asked(message);
  }

  int asked(sd_bus_message* message) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(message, &reply);
    sd_bus_message_open_container(reply, 'a', "s");
    for (const auto& capability : capabilities_) sd_bus_message_append(reply, "s", capability.c_str());
    sd_bus_message_close_container(reply);
    const int result = sd_bus_send(bus_, reply, nullptr);
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

  const std::string path_;
  const std::vector<std::string> capabilities_;
  const bool answers_;
  Descriptor listener_;
  Descriptor wake_;
  sd_bus* bus_ = nullptr;
  std::uint32_t id_ = 40;
  bool stopping_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  std::deque<Received> received_;
  bool asked_ = false;
  std::thread thread_;
};

} // namespace korvell
