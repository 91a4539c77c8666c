#include "Platform/Linux/DesktopNotifications.h"

#include "Base/Localization.h"
#include "Base/Markup.h"
#include "Base/Text.h"
#include "Base/ThreadControl.h"
#include "Base/WakePipe.h"
#include "Platform/Linux/BusHandles.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <list>
#include <poll.h>
#include <thread>
#include <vector>

namespace korvell {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* ownerMatch = "type='signal',sender='org.freedesktop.DBus',"
                                   "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
                                   "arg0='org.freedesktop.Notifications'";
constexpr const char* applicationName = "Korvell";
constexpr const char* desktopEntry = "korvell";
constexpr const char* icon = "utilities-system-monitor";   // in every icon theme
constexpr const char* openAction = "default";              // what a click on the notification invokes
constexpr const char *yesAction = "yes", *noAction = "no"; // of a question
constexpr std::uint64_t answerTimeout = 10'000'000;        // microseconds
constexpr std::size_t mostPending = 32;
constexpr std::size_t mostShown = 64;

Message methodCall(sd_bus* bus, const char* member) {
  sd_bus_message* message = nullptr;
  sd_bus_message_new_method_call(bus, &message, service, objectPath, service, member);
  return Message(message);
}

struct Capabilities {
  bool actions = false;
  bool bodyMarkup = false;
};

Capabilities readCapabilities(sd_bus_message* reply) {
  Capabilities result;
  if (sd_bus_message_enter_container(reply, 'a', "s") < 0) return result;
  const char* name = nullptr;
  while (sd_bus_message_read(reply, "s", &name) > 0) {
    result.actions = result.actions || std::string_view(name) == "actions";
    result.bodyMarkup = result.bodyMarkup || std::string_view(name) == "body-markup";
  }
  return result;
}

/// The buttons of a question, and who waits for the answer: told once, at the latest when this ends.
class Asked {
public:
  Asked(std::string yes, std::string no, Notifications::AnswerHandler answered)
      : yes(std::move(yes)), no(std::move(no)), answered_(std::move(answered)) {}
  ~Asked() { tell(NotificationAnswer::impossible); }
  Asked(const Asked&) = delete;
  Asked& operator=(const Asked&) = delete;

  void tell(NotificationAnswer answer) {
    if (const auto answered = std::exchange(answered_, {})) answered(answer);
  }
  void forget() { answered_ = {}; }

  const std::string yes, no;

private:
  Notifications::AnswerHandler answered_;
};

} // namespace

/// The thread and, on it alone, the connection.
class DesktopNotifications::Worker {
public:
  using Question = std::shared_ptr<Asked>; ///< null: nothing is asked
  Worker(std::string address, OpenHandler onOpen)
      : address_(std::move(address)), onOpen_(std::move(onOpen)), thread_([this] { run(); }) {}

  ~Worker() {
    stopping_ = true;
    wake_.wake();
    thread_.join();
    const auto forget = [](const auto& list) {
      for (const auto& each : list)
        if (each.question) each.question->forget();
    };
    forget(pending_);
    forget(requests_);
    forget(shown_);
  }

  void add(const Notification& notification, Question question = {}) {
    Pending oldest; // ends without the lock: who waits for an answer is told
    {
      const std::lock_guard lock(mutex_);
      if (pending_.size() == mostPending) {
        oldest = std::move(pending_.front());
        pending_.pop_front();
      }
      pending_.push_back({notification, std::move(question)});
    }
    wake_.wake();
  }

  void withdraw(const std::string& identifier) {
    {
      const std::lock_guard lock(mutex_);
      for (auto& pending : pending_)
        if (pending.notification.identifier == identifier && pending.question) pending.question->forget();
      withdrawn_.push_back(identifier);
    }
    wake_.wake();
  }

private:
  /// A notification on its way, until the service has answered.
  struct Request {
    Worker* worker;
    Notification notification;
    Question question;
    bool isSecondTry = false;
  };
  struct Pending {
    Notification notification;
    Question question;
    bool isSecondTry = false;
  };
  struct Shown {
    std::string identifier;
    std::uint32_t id;
    Question question;
  };

  void run() {
    nameCurrentThread("Korvell.notifications");
    while (!stopping_) {
      sendPending();
      withdrawAll();
      process();
      wait();
    }
    bus_.reset();
  }

  void sendPending() {
    std::deque<Pending> pending;
    {
      const std::lock_guard lock(mutex_);
      pending.swap(pending_);
    }
    if (pending.empty() || (!bus_ && !connect())) return;
    for (auto& [notification, question, isSecondTry] : pending) {
      auto& request =
          requests_.emplace_back(Request{this, std::move(notification), std::move(question), isSecondTry});
      if (sd_bus_call_async(bus_.get(), nullptr, methodCall(bus_.get(), "GetCapabilities").get(),
                            capabilitiesCame, &request, answerTimeout) < 0)
        fail(request);
    }
  }

  /// What is still on its way when it is withdrawn is answered by nobody either, but may be seen.
  void withdrawAll() {
    std::vector<std::string> withdrawn;
    {
      const std::lock_guard lock(mutex_);
      withdrawn.swap(withdrawn_);
    }
    for (const auto& identifier : withdrawn) {
      for (auto& request : requests_)
        if (request.notification.identifier == identifier && request.question) request.question->forget();
      const auto found = std::ranges::find(shown_, identifier, &Shown::identifier);
      if (found == shown_.end()) continue;
      if (found->question) found->question->forget();
      const auto call = bus_ ? methodCall(bus_.get(), "CloseNotification") : Message();
      if (call && sd_bus_message_append(call.get(), "u", found->id) >= 0)
        sd_bus_send(bus_.get(), call.get(), nullptr);
      shown_.erase(found);
    }
  }

  bool connect() {
    sd_bus* bus = nullptr;
    if (address_.empty() || sd_bus_new(&bus) < 0) return false;
    bus_.reset(bus);
    const bool started = sd_bus_set_address(bus, address_.c_str()) >= 0 &&
                         sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
    if (started) {
      sd_bus_match_signal_async(bus, nullptr, service, objectPath, service, "ActionInvoked", actionInvoked,
                                nullptr, this);
      sd_bus_match_signal_async(bus, nullptr, service, objectPath, service, "NotificationClosed", closed,
                                nullptr, this);
      sd_bus_add_match_async(bus, nullptr, ownerMatch, ownerChanged, nullptr, this);
    } else {
      disconnect();
    }
    return started;
  }

  void disconnect() {
    bus_.reset();
    requests_.clear();
    shown_.clear();
  }

  void process() {
    int result = 1;
    while (bus_ && result > 0) result = sd_bus_process(bus_.get(), nullptr);
    if (!bus_ || (result >= 0 && sd_bus_is_open(bus_.get()) > 0)) return;
    for (auto& request : requests_) tryAgain(request);
    disconnect();
  }

  void wait() {
    pollfd files[] = {{wake_.descriptor(), POLLIN, 0}, {-1, 0, 0}};
    int milliseconds = -1;
    if (bus_) {
      files[1] = {sd_bus_get_fd(bus_.get()), short(std::max(0, sd_bus_get_events(bus_.get()))), 0};
      std::uint64_t until = UINT64_MAX;
      if (sd_bus_get_timeout(bus_.get(), &until) >= 0) milliseconds = millisecondsUntil(until);
    }
    poll(files, 2, milliseconds);
    wake_.drain();
  }

  /// The bus went away, perhaps long ago and unnoticed: what it has not answered is worth another bus.
  void tryAgain(Request& request) {
    if (request.isSecondTry) return;
    {
      const std::lock_guard lock(mutex_);
      pending_.push_back({request.notification, std::move(request.question), true});
    }
    wake_.wake();
  }

  void fail(Request& request) {
    if (sd_bus_is_open(bus_.get()) <= 0) tryAgain(request);
    finish(request);
  }

  void finish(Request& request) {
    requests_.remove_if([&](const Request& other) { return &other == &request; });
  }

  static int capabilitiesCame(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
    Worker& worker = *request.worker;
    if (sd_bus_message_is_method_error(reply, nullptr) || !worker.notify(request, readCapabilities(reply)))
      worker.fail(request);
    return 0;
  }

  bool notify(Request& request, Capabilities capabilities) {
    const Notification& notification = request.notification;
    if (request.question && !capabilities.actions) return false;
    const auto call = methodCall(bus_.get(), "Notify");
    if (!call) return false;
    const auto summary = text(notification.title);
    const auto body =
        capabilities.bodyMarkup ? escapedMarkup(text(notification.body)) : text(notification.body);
    sd_bus_message* message = call.get();
    int result = sd_bus_message_append(message, "susss", applicationName, replacedID(notification.identifier),
                                       icon, summary.c_str(), body.c_str());
    if (result >= 0)
      result = request.question
                   ? sd_bus_message_append(message, "as", 4, yesAction, request.question->yes.c_str(),
                                           noAction, request.question->no.c_str())
               : capabilities.actions && onOpen_
                   ? sd_bus_message_append(message, "as", 2, openAction, localized("Open").c_str())
                   : sd_bus_message_append(message, "as", 0);
    if (result >= 0)
      result = sd_bus_message_append(message, "a{sv}i", 2, "urgency", "y", int(notification.urgency),
                                     "desktop-entry", "s", desktopEntry, -1);
    return result >= 0 &&
           sd_bus_call_async(bus_.get(), nullptr, message, notifyCame, &request, answerTimeout) >= 0;
  }

  /// What the bus can carry: UTF-8 without zero bytes.
  static std::string text(std::string_view bytes) {
    auto result = repairedUTF8(bytes);
    std::erase(result, '\0');
    return result;
  }

  static int notifyCame(sd_bus_message* reply, void* data, sd_bus_error*) {
    auto& request = *static_cast<Request*>(data);
    Worker& worker = *request.worker;
    std::uint32_t id = 0;
    if (sd_bus_message_is_method_error(reply, nullptr) || sd_bus_message_read(reply, "u", &id) <= 0) {
      worker.fail(request);
    } else {
      worker.remember({request.notification.identifier, id, std::move(request.question)});
      worker.finish(request);
    }
    return 0;
  }

  std::uint32_t replacedID(const std::string& identifier) const {
    const auto found = std::ranges::find(shown_, identifier, &Shown::identifier);
    return found == shown_.end() ? 0 : found->id;
  }

  void remember(Shown shown) {
    std::erase_if(shown_, [&](const Shown& other) { return other.identifier == shown.identifier; });
    if (shown_.size() == mostShown) shown_.pop_front();
    shown_.push_back(std::move(shown));
  }

  static int actionInvoked(sd_bus_message* signal, void* data, sd_bus_error*) {
    auto& worker = *static_cast<Worker*>(data);
    std::uint32_t id = 0;
    const char* action = nullptr;
    if (sd_bus_message_read(signal, "us", &id, &action) <= 0) return 0;
    const auto found = std::ranges::find(worker.shown_, id, &Shown::id);
    if (found == worker.shown_.end()) return 0;
    const std::string_view pressed = action;
    if (const auto question = found->question) {
      if (pressed == yesAction) question->tell(NotificationAnswer::yes);
      if (pressed == noAction) question->tell(NotificationAnswer::no);
    } else if (pressed == openAction && worker.onOpen_) {
      worker.onOpen_(std::string(found->identifier));
    }
    return 0;
  }

  static int closed(sd_bus_message* signal, void* data, sd_bus_error*) {
    auto& worker = *static_cast<Worker*>(data);
    std::uint32_t id = 0;
    if (sd_bus_message_read(signal, "u", &id) <= 0) return 0;
    const auto found = std::ranges::find(worker.shown_, id, &Shown::id);
    if (found == worker.shown_.end()) return 0;
    const auto question = std::move(found->question);
    worker.shown_.erase(found);
    if (question) question->tell(NotificationAnswer::no);
    return 0;
  }

  /// The service ended, or another took its place: what it showed went with it, and its numbers will be those
  /// of other programs' notifications.
  static int ownerChanged(sd_bus_message*, void* data, sd_bus_error*) {
    auto& worker = *static_cast<Worker*>(data);
    for (const auto& gone : std::exchange(worker.shown_, {}))
      if (gone.question) gone.question->tell(NotificationAnswer::no);
    return 0;
  }

  const std::string address_;
  const OpenHandler onOpen_;
  Bus bus_;
  std::list<Request> requests_;
  std::deque<Shown> shown_; ///< the notifications on the screen, the newest last

  std::mutex mutex_;
  std::deque<Pending> pending_; ///< guarded by mutex_, as the next one
  std::vector<std::string> withdrawn_;
  std::atomic<bool> stopping_ = false;
  const WakePipe wake_;
  std::thread thread_; ///< last: it uses all the others
};

DesktopNotifications::DesktopNotifications(std::string busAddress) : busAddress_(std::move(busAddress)) {}
DesktopNotifications::~DesktopNotifications() = default;

void DesktopNotifications::post(const Notification& notification) {
  if (!busAddress_.empty()) worker().add(notification);
}

void DesktopNotifications::ask(const Notification& notification, const std::string& yes,
                               const std::string& no, AnswerHandler answered) {
  if (busAddress_.empty()) return answered(NotificationAnswer::impossible);
  worker().add(notification, std::make_shared<Asked>(yes, no, std::move(answered)));
}

void DesktopNotifications::withdraw(const std::string& identifier) {
  const std::lock_guard lock(mutex_);
  if (worker_) worker_->withdraw(identifier);
}

DesktopNotifications::Worker& DesktopNotifications::worker() {
  const std::lock_guard lock(mutex_);
  if (!worker_) worker_ = std::make_unique<Worker>(busAddress_, openHandler_);
  return *worker_;
}

} // namespace korvell
