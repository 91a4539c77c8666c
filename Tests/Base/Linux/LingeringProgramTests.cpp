// A program that not even SIGKILL ends, as one in an uninterruptible call. No test can put a disk to sleep,
// so another process traces the program: then it stays for its parent until the tracer lets go of it.

#include "Base/Descriptor.h"
#include "Base/Shell.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace korvell;

namespace {

/// Reads the program's id from a fifo, traces it and says whether it could; lets go when it is told to end.
[[noreturn]] void trace(const std::string& fifo, int answer) {
  const int reading = open(fifo.c_str(), O_RDONLY);
  char text[16]{};
  const auto count = read(reading, text, sizeof text - 1);
  const bool traced = count > 0 && ptrace(PTRACE_SEIZE, pid_t(atoi(text)), nullptr, nullptr) == 0;
  [[maybe_unused]] const auto told = write(answer, traced ? "y" : "n", 1);
  if (traced) pause();
  _exit(0);
}

} // namespace

TEST(Shell, whatCannotBeKilledIsLeftAndReapedWhenItEnds) {
  const TemporaryFolder folder;
  const std::string pidFifo = folder / "pid";
  ASSERT_EQ(mkfifo(pidFifo.c_str(), 0600), 0);
  int answer[2];
  ASSERT_EQ(pipe(answer), 0);
  const Descriptor answerEnd(answer[0]);
  const pid_t tracer = fork();
  if (tracer == 0) trace(pidFifo, answer[1]);
  close(answer[1]);

  const Cancellation cancellation;
  char traced = 0;
  std::thread user([&] {
    [[maybe_unused]] const auto count = read(answerEnd.get(), &traced, 1);
    cancellation.cancel();
  });
  const auto result = Shell::run("/bin/sh", {"-c", "echo $$; echo $$ >" + pidFifo + "; exec sleep 20"},
                                 Seconds{30}, cancellation);
  user.join();
  if (traced != 'y') GTEST_SKIP() << "this machine allows no tracing";
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->lingers);
  EXPECT_TRUE(result->interrupted);
  EXPECT_EQ(result->exitStatus, -1);

  const pid_t program = atoi(result->output.c_str());
  ASSERT_GT(program, 0);
  EXPECT_EQ(kill(program, 0), 0) << "it should still be there";
  kill(tracer, SIGKILL);
  waitpid(tracer, nullptr, 0);
  for (int i = 0; i < 1000 && kill(program, 0) == 0; ++i) poll(nullptr, 0, 10);
  EXPECT_NE(kill(program, 0), 0) << "nobody reaped it";
}
