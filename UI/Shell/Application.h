#pragma once
// The toolkit's application object. In builds with KORVELL_STALL_WATCH (those with debug information, unless
// told otherwise) it says on standard error when something held the main thread for longer than a frame, and
// what; with KORVELL_STRICT_MAIN=1 in the environment that makes the program fail when it ends. Main thread
// only.

#include "Base/QueueCore.h"
#include "Base/StallWatch.h"

#include <QApplication>

namespace korvell {

class WatchedApplication final : public QApplication {
public:
  /// One frame at 60 a second.
  static constexpr Seconds limit{0.016};

  WatchedApplication(int& argc, char** argv);

  bool notify(QObject* receiver, QEvent* event) override;
  /// Runs the main queue's tasks so that each is known by its name.
  QueueCore::Run taskRunner();
  /// `status`, or a failure where the watch makes it one.
  int exitStatus(int status) const;

private:
  ThreadMeter meter_;
  StallWatch watch_;
};

class UnwatchedApplication final : public QApplication {
public:
  using QApplication::QApplication;
  QueueCore::Run taskRunner() const { return {}; }
  int exitStatus(int status) const { return status; }
};

#ifdef KORVELL_STALL_WATCH
using Application = WatchedApplication;
#else
using Application = UnwatchedApplication;
#endif

} // namespace korvell
