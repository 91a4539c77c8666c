#include "Platform/Formats/ProcessFiles.h"
#include "Platform/Formats/ProcessName.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(ProcessFilesTests, theCommandNameEndsAtTheLastParenthesis) {
  const std::string rest =
      " S 17 1 1 0 -1 4194560 100 2000 0 0 7 5 0 0 20 0 31 0 123456 1 1 18446744073709551615 0";
  for (const std::string comm : {"bash", "a b", "x) S 99 (y", ")", "(", "", "line\nfeed", "\x01\x7f"}) {
    const auto text = "40 (" + comm + ")" + rest;
    const auto stat = parseProcessStat(text);
    ASSERT_TRUE(stat) << comm;
    EXPECT_EQ(stat->comm, comm);
    EXPECT_EQ(stat->parent, 17) << comm;
    EXPECT_EQ(stat->start, 123456u) << comm;
    EXPECT_EQ(stat->cpuTicks, 12u) << comm;
    EXPECT_EQ(stat->childMinorFaults, 2000u) << comm;
    EXPECT_EQ(stat->threads, 31) << comm;
    EXPECT_FALSE(stat->kernelThread) << comm;
  }
}

TEST(ProcessFilesTests, timesAddUpBeyondWhatIsSigned) {
  const auto stat = parseProcessStat("40 (a) S 17 1 1 0 -1 0 0 0 0 0 9223372036854775807 2 0 0 20 0 1 0 5 1");
  EXPECT_EQ(stat.value().cpuTicks, (std::uint64_t{1} << 63) + 1);
}

TEST(ProcessFilesTests, whatTheKernelDoesNotWriteIsRefused) {
  for (const char* text : {"", "40", "40 (a", "40 a)", "40 )a(", "40 (a)", "40 (a) S", "40 (a) S 1 2 3",
                           "40 (a) Sleeping 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 5 1",
                           "40 (a) S 1 1 1 0 -1 0 0 0 0 0 0 x 0 0 20 0 1 0 5 1"})
    EXPECT_FALSE(parseProcessStat(text)) << text;
  for (const char* text : {"", "1", "1 2", "1 x 3"}) EXPECT_FALSE(parseProcessStatm(text)) << text;
  for (const char* text :
       {"", "read_bytes: 5\n", "read_bytes: 5\nwrite_bytes:", "read_bytes: x\nwrite_bytes: 1"})
    EXPECT_FALSE(parseProcessIO(text)) << text;
  EXPECT_FALSE(parseProcessStatus("Name:\tx\n"));
  EXPECT_EQ(innermostProcessID("Name:\tNSpid:\nNSpid:\t4711\t31\t2\nNSpgid:\t9\t8\n"), 2);
  for (const char* own : {"NSpid:\t4711\n", "NSpid:\n", "NSpid:\t4711\tx\n", "Pid:\t1 2\n", ""})
    EXPECT_FALSE(innermostProcessID(own)) << own;
  EXPECT_FALSE(parseAnonymousMemory("MemTotal: 5 kB\n"));
}

TEST(ProcessFilesTests, theControlGroupIsTheOneOfTheHierarchyThatSaysMost) {
  const std::pair<const char*, const char*> rows[] = {
      {"0::/user.slice/a.scope\n", "/user.slice/a.scope"},
      {"12:memory:/docker/1\n1:name=systemd:/system.slice/x.service\n0::/system.slice/y.service\n",
       "/system.slice/x.service"},
      {"9:memory:/kubepods/pod1/ab\n1:name=systemd:/kubepods/pod1/ab\n0::/system.slice/containerd.service\n",
       "/kubepods/pod1/ab"},
      {"4:memory:/m\n1:name=systemd:/system.slice/x.service\n0::/\n", "/system.slice/x.service"},
      {"0::/", "/"},
      {"5:cpuset:/\n4:memory:/docker/ab\n1:name=openrc:/docker\n", "/docker/ab"},
      {"1:name=systemd:/\n", "/"},
      {"", ""},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(controlGroup(text), expected) << text;
}

TEST(ProcessFilesTests, environmentVariablesAreWholeNames) {
  using namespace std::string_view_literals;
  const auto environment = "XNAME=no\0NAME=\0NAME2=2\0LAST=a=b"sv;
  EXPECT_EQ(environmentValue(environment, "NAME"), "");
  EXPECT_EQ(environmentValue(environment, "LAST"), "a=b");
  EXPECT_EQ(environmentValue(environment, "NAM"), std::nullopt);
  EXPECT_EQ(environmentValue("", "NAME"), std::nullopt);
}

TEST(ProcessNameTests, namesComeFromTheProgramThatRuns) {
  using namespace std::string_literals;
  struct Row {
    std::string path, commandLine, comm, expected;
  };
  const Row rows[] = {
      {"/usr/bin/python3.11", "python3\0a.py\0"s, "python3", "python3.11"},
      {"/usr/bin/busybox", "httpd\0-f\0"s, "httpd", "httpd"},
      {"/usr/bin/busybox", "", "", "busybox"},
      {"", "/usr/lib/systemd/systemd-journald\0"s, "systemd-journal", "systemd-journald"},
      {"", "nginx: worker process", "nginx", "nginx"},
      {"", "-bash\0"s, "bash", "bash"},
      {"", "postgres: writer", "postgres", "postgres"},
      {"", "something else", "comm", "comm"},
      {"", "", "comm", "comm"},
      {"/memfd:sealed-9117", "runc\0init\0"s, "runc", "runc"},
      {"/memfd:sealed-91173221a7ea", "tools/worker\0-v\0"s, "memfd:sealed-91", "worker"},
      {"/memfd:sealed-9117", "worker"s, "4", "worker"},
      {"/memfd:sealed-9117", "", "4", "sealed-9117"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(processName(row.path, row.commandLine, row.comm), row.expected) << row.commandLine;
}

} // namespace
} // namespace korvell
