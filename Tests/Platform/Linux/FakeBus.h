#pragma once
// A message bus with one service on it: both answered on one connection at a time, on a thread of its own.

#include "Base/Descriptor.h"
#include "Base/Queue.h"
#include "Base/WakePipe.h"

#include <deque>
#include <functional>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <thread>

namespace korvell {

class FakeBus {
public:
  /// Answers a call of the service's; what it returns is what a filter of sd-bus does (1: taken). On the
  /// bus's thread.
  using Service = std::function<int(sd_bus_message* call)>;

  FakeBus(const std::string& path, Service service)
      : path_(path), service_(std::move(service)), listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    unlink(path.c_str());
    bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address));
    listen(listener_.get(), 4);
    thread_ = std::thread([this] { run(); });
  }
  ~FakeBus() {
    tell([this] { stopping_ = true; });
    thread_.join();
  }

  std::string address() const { return "unix:path=" + path_; }
  /// Has a task run on the bus's thread.
  void tell(Task task) {
    {
      const std::lock_guard lock(mutex_);
      tasks_.push_back(std::move(task));
    }
    wake_.wake();
  }
  /// Ends the connection, as a bus that goes away.
  void hangUp() {
    tell([this] { bus_ = sd_bus_close_unref(bus_); });
  }
  sd_bus* connection() { return bus_; } ///< on the bus's thread

private:
  void run() {
    while (!stopping_) {
      pollfd files[] = {{listener_.get(), POLLIN, 0}, {wake_.descriptor(), POLLIN, 0}, {-1, 0, 0}};
      if (bus_) files[2] = {sd_bus_get_fd(bus_), short(sd_bus_get_events(bus_)), 0};
      poll(files, 3, -1);
      if (files[0].revents) accept();
      wake_.drain();
      int result = 1;
      do {
        runTasks();
        result = bus_ ? sd_bus_process(bus_, nullptr) : 0;
      } while (result > 0);
      if (result < 0) bus_ = sd_bus_close_unref(bus_);
    }
    bus_ = sd_bus_close_unref(bus_);
  }

  void runTasks() {
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
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0; // "Disconnected"
    // A task that was told before the call was sent has its turn before the call, however busy the bus is.
    auto& bus = *static_cast<FakeBus*>(data);
    bus.runTasks();
    if (!bus.bus_) return 1;
    const std::string_view member = sd_bus_message_get_member(message);
    if (member == "Hello") return sd_bus_reply_method_return(message, "s", ":1.7");
    if (member == "AddMatch") return sd_bus_reply_method_return(message, "");
    return bus.service_(message);
  }

  const std::string path_;
  const Service service_;
  Descriptor listener_;
  const WakePipe wake_;
  sd_bus* bus_ = nullptr;
  bool stopping_ = false;
  std::mutex mutex_;
  std::deque<Task> tasks_;
  std::thread thread_;
};

} // namespace korvell
