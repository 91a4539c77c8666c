#include "Tool/HeadlessLoop.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

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

TEST(HeadlessLoopTests, whileAPersonIsAskedASignalEndsTheProcessAsBefore) {
  HeadlessLoop loop;
  const auto handler = [](int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
  };
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    EXPECT_NE(handler(signal), SIG_DFL);
    loop.withoutSignals([&] { EXPECT_EQ(handler(signal), SIG_DFL); });
    EXPECT_NE(handler(signal), SIG_DFL);
  }
}

TEST(HeadlessLoopTests, itEndsWhenNobodyReadsAnyMore) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  HeadlessLoop loop;
  ReaderWatch watch(loop, pipe[1]);
  bool wasRun = false;
  loop.main().async([&] {
    wasRun = true;
    close(pipe[0]);
  });
  loop.run();
  EXPECT_TRUE(wasRun) << "while somebody reads, the loop goes on";
  close(pipe[1]);
}

} // namespace
} // namespace korvell
