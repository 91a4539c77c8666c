#pragma once
// The main queue in the toolkit's event loop. Made on the main thread after the application object, and
// destroyed before it.

#include "App/EndSignals.h"
#include "Base/HostedQueue.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

namespace korvell {

class MainLoop {
public:
  /// `runTask` may run the queue's tasks in its own way.
  explicit MainLoop(QueueCore::Run runTask = {});
  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  HostedQueue& main() { return queue_; }
  /// Runs until quit() or until a signal asks to end; the exit status.
  int run();
  void quit();

private:
  void runDue();

  const QueueCore::Run runTask_;
  QObject receiver_;
  QTimer timer_;
  WakePipe signalled_;
  QSocketNotifier notifier_;
  EndSignals signals_;
  HostedQueue queue_; ///< last: what still wakes it while it ends finds the others
};

} // namespace korvell
