// Shell against children that misbehave. All of them end by themselves within seconds, also when a test
// fails.

#include "Base/Descriptor.h"
#include "Base/Shell.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace korvell;
using namespace std::string_literals;

namespace {

constexpr Seconds ample{60};

std::optional<ShellResult> script(const std::string& text, Seconds timeout = ample,
                                  const Cancellation& cancellation = {}) {
  return Shell::run("/bin/sh", {"-c", text}, timeout, cancellation);
}

} // namespace

TEST(Shell, endsAndOutputs) {
  const struct {
    const char* what;
    const char* text;
    std::string output;
    int status;
  } rows[] = {
      {"an exit code", "echo a; exit 3", "a\n", 3},
      {"a signal", "echo a; kill -9 $$", "a\n", 137},
      {"no output", ":", "", 0},
      {"invalid UTF-8", R"(printf 'a\377\303(\303\244')", "a\uFFFD\uFFFD(ä", 0},
      {"standard error is dropped", "echo a >&2; echo b", "b\n", 0},
      {"standard input is empty", "cat; echo a", "a\n", 0},
      {"the output is closed long before the end", "echo a; exec >&-; sleep 0.1; exit 4", "a\n", 4},
      {"written in pieces", "printf a; sleep 0.05; printf b; sleep 0.05; printf c", "abc", 0},
  };
  for (const auto& row : rows) {
    const auto result = script(row.text);
    ASSERT_TRUE(result) << row.what;
    EXPECT_EQ(result->output, row.output) << row.what;
    EXPECT_EQ(result->exitStatus, row.status) << row.what;
    EXPECT_FALSE(result->timedOut) << row.what;
  }
}

TEST(Shell, argumentsArriveAsTheyAre) {
  const auto result = Shell::run(
      "/bin/sh", {"-c", R"(for a; do printf '<%s>' "$a"; done)", "x", "a b", "$HOME", "", "*", "'"}, ample);
  EXPECT_EQ(result.value_or(ShellResult{}).output, "<a b><$HOME><><*><'>");
}

TEST(Shell, whatCannotBeStartedHasNoResult) {
  const TemporaryFolder folder;
  folder.write("plain", "echo a");
  folder.write("text", "echo a"); // no program and no #! line: only a shell would run it
  ASSERT_EQ(chmod((folder / "text").c_str(), 0755), 0);
  for (const auto& path : {"/nonexistent/program"s, "sh"s, "bin/sh"s, ""s, folder.path().string(),
                           folder / "plain", folder / "text", "/bin/sh\0x"s})
    EXPECT_FALSE(Shell::run(path, {}, ample)) << path;
  EXPECT_FALSE(Shell::run("/bin/sh", {"-c", "echo a\0b"s}, ample)) << "NUL in an argument";
}

TEST(Shell, onlyTheStandardDescriptorsAreInherited) {
  const Descriptor low(open("/dev/null", O_RDONLY)), high(fcntl(low.get(), F_DUPFD, 57)); // inheritable
  ASSERT_GE(high.get(), 57);
  // 3 is the descriptor with which ls reads the folder.
  EXPECT_EQ(Shell::run("/bin/ls", {"/dev/fd/"}, ample).value().output, "0\n1\n2\n3\n");
}

TEST(Shell, signalsAreTheDefaultOnesWhateverTheCallerBlocksOrIgnores) {
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(script("kill -TERM $$; echo alive")->exitStatus, 128 + SIGTERM);
  EXPECT_EQ(script("kill -PIPE $$; echo alive")->exitStatus, 128 + SIGPIPE);
  std::signal(SIGPIPE, handler);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Shell, outputBeyondTheMostIsReadAndDropped) {
  const auto result = Shell::run("/usr/bin/head", {"-c", std::to_string(20 << 20), "/dev/zero"}, ample);
  EXPECT_EQ(result->exitStatus, 0) << "it was not stopped by a full or closed pipe";
  EXPECT_EQ(result->output.size(), size_t{16} << 20);
}

TEST(Shell, aChildOfTheProgramThatKeepsThePipeOpenIsNotWaitedFor) {
  // Were the end of the pipe waited for, the time-out would come first.
  for (const char* child :
       {"sleep 4", "(for i in 1 2 3 4 5 6; do head -c 200000 /dev/zero; sleep 0.5; done)"}) {
    const auto result = script(child + " & echo started"s, Seconds{2});
    ASSERT_TRUE(result) << child;
    EXPECT_FALSE(result->timedOut) << child;
    EXPECT_THAT(result->output, testing::HasSubstr("started\n")) << child;
  }
}

TEST(Shell, timeOuts) {
  const struct {
    const char* what;
    const char* text;
    Seconds timeout;
    std::string output;
    int status;
  } rows[] = {
      {"obedient", "echo a; exec sleep 5", Seconds{0.05}, "a\n", 128 + SIGTERM},
      {"tidies up", "trap 'echo bye; exit 5' TERM; echo hi; for i in 1 2 3 4 5 6 7 8 9; do sleep 0.5; done",
       Seconds{0.8}, "hi\nbye\n", 5},
      {"stubborn", "trap '' TERM; for i in 1 2 3 4 5; do sleep 1; done", Seconds{0.8}, "", 128 + SIGKILL},
  };
  for (const auto& row : rows) {
    const auto result = script(row.text, row.timeout);
    ASSERT_TRUE(result && result->timedOut) << row.what;
    EXPECT_EQ(result->output, row.output) << row.what;
    EXPECT_EQ(result->exitStatus, row.status) << row.what;
  }
  const auto endless = Shell::run("/usr/bin/yes", {}, Seconds{0.05});
  ASSERT_TRUE(endless && endless->timedOut);
  EXPECT_EQ(endless->output.substr(0, 4), "y\ny\n");
}

TEST(Shell, aCancelledProgramIsAskedToEnd) {
  const TemporaryFolder folder;
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const struct {
    const char* what;
    std::string trap, rest;
    std::string output;
    int status;
  } rows[] = {
      {"obedient", "", "exec sleep 5", "", 128 + SIGTERM},
      {"tidies up", "trap 'echo bye; exit 5' TERM; ", "sleep 5 & wait", "bye\n", 5},
      {"stubborn", "trap '' TERM; ", "for i in 1 2 3 4 5; do sleep 1; done", "", 128 + SIGKILL},
  };
  for (const auto& row : rows) {
    const Cancellation cancellation;
    std::thread user([&] { // cancels once the program has set its trap
      const Descriptor started(open(fifo.c_str(), O_RDONLY));
      cancellation.cancel();
    });
    const auto result = script(row.trap + ": >" + fifo + "; " + row.rest, ample, cancellation);
    user.join();
    ASSERT_TRUE(result && result->interrupted) << row.what;
    EXPECT_FALSE(result->timedOut || result->succeeded()) << row.what;
    EXPECT_EQ(result->output, row.output) << row.what;
    EXPECT_EQ(result->exitStatus, row.status) << row.what;

    const auto notStarted = script("echo a", ample, cancellation);
    ASSERT_TRUE(notStarted && notStarted->interrupted) << row.what;
    EXPECT_EQ(notStarted->output, "") << row.what;
  }
}

TEST(Shell, noChildInTheGroupSurvivesATimeOut) {
  const TemporaryFolder folder;
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const Descriptor reading(open(fifo.c_str(), O_RDONLY | O_NONBLOCK));
  const auto result =
      script("(trap '' TERM; exec 3>" + fifo + "; sleep 3; echo survived >&3) & sleep 5", Seconds{0.3});
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->timedOut);
  // The end of the file comes when all who could write are gone.
  fcntl(reading.get(), F_SETFL, 0);
  char byte = 0;
  EXPECT_EQ(read(reading.get(), &byte, 1), 0) << "something was written";
}
