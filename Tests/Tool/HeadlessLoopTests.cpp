#include "Tool/HeadlessLoop.h"

#include <csignal>
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

} // namespace
} // namespace korvell
