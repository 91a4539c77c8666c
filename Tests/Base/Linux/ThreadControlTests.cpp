// What a queue's thread tells the kernel about itself.

#include "Base/ThreadQueue.h"

#include <gtest/gtest.h>
#include <latch>
#include <pthread.h>
#include <sys/prctl.h>

using namespace korvell;

TEST(ThreadControl, theThreadBearsTheLabelAsFarAsItFits) {
  ThreadQueue queue("Korvell.sampler.long");
  const auto name = syncResult(queue, [] {
    char text[16] = {};
    pthread_getname_np(pthread_self(), text, sizeof text);
    return std::string(text);
  });
  EXPECT_EQ(name, "Korvell.sampler");
}

TEST(ThreadControl, theLeewayIsTheSleepsSlack) {
  ThreadQueue queue("Korvell.test");
  constexpr int mostFirings = 1000; // each of them after a sleep, unless this machine stood still
  int firings = 0;
  long slack = 0;
  std::latch done(1);
  std::unique_ptr<Timer> timer = queue.timer([&] {
    slack = prctl(PR_GET_TIMERSLACK, 0, 0, 0, 0);
    if (++firings < mostFirings && slack != 700'000) return;
    timer->cancel();
    done.count_down();
  });
  timer->schedule(Seconds{0.001}, Seconds{0.001}, Seconds{0.0007});
  done.wait();
  EXPECT_EQ(slack, 700'000) << "nanoseconds";
}
