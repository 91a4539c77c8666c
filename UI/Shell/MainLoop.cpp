#include "UI/Shell/MainLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <cmath>

namespace korvell {

MainLoop::MainLoop(QueueCore::Run runTask)
    : runTask_(std::move(runTask)), notifier_(signalled_.descriptor(), QSocketNotifier::Read),
      signals_(signalled_), queue_("main", [this] {
        QMetaObject::invokeMethod(
            &receiver_, [this] { runDue(); }, Qt::QueuedConnection);
      }) {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer); // a coarse one may come too early, and would only be set again
  QObject::connect(&notifier_, &QSocketNotifier::activated, &receiver_, [this] {
    signalled_.drain();
    if (signals_.taken()) quit();
  });
  QObject::connect(&timer_, &QTimer::timeout, &receiver_, [this] { runDue(); });
}

void MainLoop::runDue() {
  queue_.runDue(runTask_);
  const auto deadline = queue_.nextDeadline();
  if (!deadline) return timer_.stop();
  constexpr double mostMilliseconds = 3'600'000;
  const double wait = std::ceil((deadline->due - queue_.clock().monotonic()).count() * 1000);
  timer_.start(int(std::clamp(wait, 0.0, mostMilliseconds)));
}

int MainLoop::run() {
  runDue();
  return QCoreApplication::exec();
}

void MainLoop::quit() { QCoreApplication::quit(); }

} // namespace korvell
