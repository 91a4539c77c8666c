#include "Tool/HeadlessLoop.h"
#include "Tool/Interruptible.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>

namespace korvell {
namespace {

bool isIgnored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

TEST(HeadlessLoopTests, aSignalThatWasIgnoredStaysIgnored) {
  const auto before = std::signal(SIGHUP, SIG_IGN); // as nohup does
  {
    const HeadlessLoop loop;
    EXPECT_TRUE(isIgnored(SIGHUP));
    EXPECT_FALSE(isIgnored(SIGTERM));
  }
  EXPECT_TRUE(isIgnored(SIGHUP));
  std::signal(SIGHUP, before);
}

TEST(InterruptibleTests, everySignalThatEndsAProcessCancelsTheWorkOnce) {
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
    std::promise<void> told;
    int times = 0;
    runInterruptibly(
        [&](const Cancellation& cancellation) {
          kill(getpid(), number);
          told.get_future().wait();
          kill(getpid(), number); // a hang-up comes twice from some terminals
          while (!cancellation.isCancelled()) std::this_thread::yield();
        },
        [&] {
          ++times;
          told.set_value();
        });
    EXPECT_EQ(times, 1) << number;
  }
  bool cancelled = true;
  runInterruptibly([&](const Cancellation& cancellation) { cancelled = cancellation.isCancelled(); });
  EXPECT_FALSE(cancelled);
}

} // namespace
} // namespace korvell
