#include "UI/Shell/Application.h"

#include <QAbstractEventDispatcher>
#include <QEvent>
#include <QMetaEnum>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace korvell {

namespace {

std::string eventName(int type) {
  const auto* name = QMetaEnum::fromType<QEvent::Type>().valueToKey(type);
  return name ? name : std::to_string(type);
}

void tell(const StallWatch::Stall& stall) {
  fmt::print(stderr, "korvell: the main thread was held for {:.0f} ms, {:.0f} of them waiting, by {}\n",
             (stall.computing + stall.waiting).count() * 1000, stall.waiting.count() * 1000,
             fmt::join(stall.path, " > "));
}

} // namespace

WatchedApplication::WatchedApplication(int& argc, char** argv)
    : QApplication(argc, argv), watch_(limit, {.times = [this] { return meter_.read(); },
                                               .isMachineBusy = ThreadMeter::isMachineBusy,
                                               .tell = tell}) {
  const auto* dispatcher = QAbstractEventDispatcher::instance();
  connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] { watch_.willSleep(); });
  connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { watch_.awoke(); });
}

bool WatchedApplication::notify(QObject* receiver, QEvent* event) {
  if (thread() != QThread::currentThread()) return QApplication::notify(receiver, event);
  const StallWatch::Scope scope(watch_, typeid(*receiver), eventName, event->type());
  return QApplication::notify(receiver, event);
}

QueueCore::Run WatchedApplication::taskRunner() {
  return [this](const Task& task) {
    const StallWatch::Scope scope(watch_, task.target_type());
    task();
  };
}

int WatchedApplication::exitStatus(int status) const {
  const char* isStrict = std::getenv("KORVELL_STRICT_MAIN");
  return isStrict && isStrict == std::string_view("1") && watch_.stalls() > 0 ? EXIT_FAILURE : status;
}

} // namespace korvell
