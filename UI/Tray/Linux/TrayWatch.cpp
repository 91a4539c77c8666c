#include "UI/Tray/TrayWatch.h"

#include "UI/Tray/Linux/Selection.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QTimer>

namespace korvell {

namespace {

constexpr const char* service = "org.kde.StatusNotifierWatcher";
constexpr int answerTimeout = 2000; // milliseconds
/// An older tray has no bus to tell of it; at login it comes within seconds. Later ones may take a while to
/// be found: a desktop without a tray is woken for it.
constexpr int quickPause = 1000, latePause = 30'000, quickLooks = 60; // milliseconds, milliseconds, times

/// Whether a tray of the older kind is there, on the default screen.
bool hasEmbeddingTray() { return isSelectionOwned("_NET_SYSTEM_TRAY_S0"); }

} // namespace

struct TrayWatch::Search {
  explicit Search(std::function<void(State)> changed) : changed_(std::move(changed)) {
    QObject::connect(&watcher_, &QDBusServiceWatcher::serviceRegistered, &watcher_, [this] {
      looks_ = 0; // its host follows in a moment
      askHost();
    });
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
    askHost();
  }

private:
  /// A watcher without a host shows nothing: some desktops start it for its own sake.
  void askHost() {
    auto ask = QDBusMessage::createMethodCall(service, "/StatusNotifierWatcher",
                                              "org.freedesktop.DBus.Properties", "Get");
    ask.setArguments({QString(service), QString("IsStatusNotifierHostRegistered")});
    ask.setAutoStartService(false);
    auto* call = new QDBusPendingCallWatcher(bus_.asyncCall(ask, answerTimeout), &watcher_);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [this, call] {
      const QDBusPendingReply<QDBusVariant> reply = *call;
      call->deleteLater();
      if (reply.isValid() && reply.value().variant().toBool()) return tell(State::present);
      look();
    });
  }

  void look() {
    if (told_ == State::present) return;
    if (hasEmbeddingTray()) return tell(State::present);
    tell(State::absent);
    timer_.start(looks_++ < quickLooks ? quickPause : latePause);
    if (looks_ % 4 == 0) askHost();
  }

  void tell(State state) {
    if (told_ == State::present || told_ == state) return;
    told_ = state;
    if (state == State::present) timer_.stop();
    changed_(state);
  }

  const std::function<void(State)> changed_;
  QDBusConnection bus_ = QDBusConnection::sessionBus();
  QDBusServiceWatcher watcher_{service, bus_, QDBusServiceWatcher::WatchForRegistration};
  QTimer timer_;
  int looks_ = 0;
  State told_ = State::unknown;
};

TrayWatch::TrayWatch(std::function<void(State)> changed)
    : search_(std::make_unique<Search>(std::move(changed))) {}
TrayWatch::~TrayWatch() = default;

bool TrayWatch::isMenuBar() { return false; }

} // namespace korvell
