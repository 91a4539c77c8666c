#include "Platform/Formats/LaunchJobs.h"
#include "Platform/Formats/ListeningPorts.h"
#include "Platform/Formats/ProcessTraffic.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(ProcessTrafficTests, theProcessIDFollowsTheLastPoint) {
  EXPECT_EQ(parseProcessTraffic(",bytes_in,bytes_out,\n"
                                "launchd.1,0,0,\n"
                                "Google Chrome H.99991,100000,10000,\n"
                                "com.apple.WebKi.512,18446744073709551615,3\n"),
            (ProcessTraffic{{1, {0, 0}}, {99991, {100000, 10000}}, {512, {UINT64_MAX, 3}}}));
}

TEST(ProcessTrafficTests, rowsThatDoNotParseAreSkipped) {
  for (const char* row :
       {"", "ssh", "ssh.12", "ssh.12,5", "ssh,5,6,", "ssh.x,5,6,", "ssh.,5,6,", "ssh.12,five,6,",
        "ssh.12,5,-6,", "ssh.12,5,,", "Acme, Inc. Sync.77,5,6,", "ssh.99999999999,1,2,"})
    EXPECT_EQ(parseProcessTraffic(std::string(",bytes_in,bytes_out,\n") + row + "\nok.2,3,4,\n"),
              (ProcessTraffic{{2, {3, 4}}}))
        << row;
  EXPECT_EQ(parseProcessTraffic("ok.2,3,4,\n"), ProcessTraffic{}) << "a lone line is a header";
}

/// Answers one command line and fails the test at any other.
struct Program {
  std::string commandLine;
  Seconds timeout;
  std::optional<ShellResult> answer;

  CommandRunner runner() {
    return [this](const std::string& path, const std::vector<std::string>& arguments, Seconds limit,
                  const Cancellation&) {
      std::string line = path;
      for (const auto& argument : arguments) line += " " + argument;
      EXPECT_EQ(line, commandLine);
      EXPECT_EQ(limit, timeout);
      return answer;
    };
  }
};

TEST(ProgramsTests, aSlowOrMissingProgramTellsNothing) {
  Program nettop{"/usr/bin/nettop -P -L 1 -x -n -J bytes_in,bytes_out", Seconds{3},
                 ShellResult{.output = "\nok.2,3,4,\n"}};
  EXPECT_EQ(readProcessTraffic(nettop.runner()), (ProcessTraffic{{2, {3, 4}}}));
  Program lsof{"/usr/sbin/lsof -nP -iTCP -sTCP:LISTEN -F pn", Seconds{4},
               ShellResult{.output = "p2\nn*:80\n", .exitStatus = 1}};
  EXPECT_EQ(readListeningPorts(lsof.runner()), (PortsByPID{{2, {80}}}));
  auto late = *lsof.answer;
  late.timedOut = true;
  for (const auto& none : {std::optional(late), std::optional<ShellResult>()}) {
    nettop.answer = lsof.answer = none;
    EXPECT_EQ(readProcessTraffic(nettop.runner()), ProcessTraffic{});
    EXPECT_EQ(readListeningPorts(lsof.runner()), PortsByPID{});
  }
}

TEST(LaunchJobsTests, theLabelIsWhatFollowsTheSecondTab) {
  EXPECT_EQ(parseLaunchJobs("PID\tStatus\tLabel\n"
                            "-\t0\tcom.example.agent\n"
                            "412\t-9\tapplication.com.example.Editor.1.2\n"
                            "-\t78\tname with\ttab and spaces\n"
                            "77\t0\t\n"
                            "no tabs\n"
                            "one\ttab\n"
                            "\n"
                            "-\t0\tcom.example.agent"),
            (std::set<std::string>{"com.example.agent", "application.com.example.Editor.1.2",
                                   "name with\ttab and spaces"}));
  EXPECT_EQ(parseLaunchJobs(""), std::set<std::string>{});
}

using Ports = PortsByPID;

TEST(ListeningPortsTests, portsBelongToTheProcessAboveThem) {
  EXPECT_EQ(parseListeningPorts("p412\nf23\nn127.0.0.1:5432\nf24\nn[::1]:5432\n"
                                "p99\nn*:8080\nn[fe80::1%en0]:80\nn*:3000\n"),
            (Ports{{412, {5432}}, {99, {80, 3000, 8080}}}));
  EXPECT_EQ(parseListeningPorts("n*:80\n"), Ports{}) << "no process yet";
  EXPECT_EQ(parseListeningPorts("p5\np\nn*:80\n"), Ports{}) << "the process did not parse";
  for (const char* address : {"n*:http", "n*", "n", "n*:", "n*:70000", "n*:-1", "x*:80"})
    EXPECT_EQ(parseListeningPorts(std::string("p5\n") + address + "\nn*:9\n"), (Ports{{5, {9}}})) << address;
}

TEST(ListeningPortsTests, socketsOfNobodyInParticular) {
  constexpr auto listing = "Active Internet connections (including servers)\n"
                           "Proto Recv-Q Send-Q  Local Address          Foreign Address        (state)\n"
                           "tcp4       0      0  192.168.1.2.3000       17.5.7.9.443           ESTABLISHED\n"
                           "tcp4       0      0  127.0.0.1.631          *.*                    LISTEN\n"
                           "tcp46      0      0  *.80                   *.*                    LISTEN\n"
                           "tcp6       0      0  fe80::1%lo0.49152      *.*                    LISTEN";
  for (const int port : {631, 80, 49152}) EXPECT_TRUE(isListenedOn(listing, port)) << port;
  for (const int port : {3000, 443, 31, 8}) EXPECT_FALSE(isListenedOn(listing, port)) << port;
  Program netstat{"/usr/sbin/netstat -an -p tcp", Seconds{4}, ShellResult{.output = listing}};
  EXPECT_EQ(askWhetherListenedOn(netstat.runner(), 80), true);
  netstat.answer->exitStatus = 1;
  EXPECT_EQ(askWhetherListenedOn(netstat.runner(), 80), std::nullopt);
}

} // namespace
} // namespace korvell
