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
}

TEST(ProcessTrafficTests, aLoneLineIsAHeader) {
  EXPECT_EQ(parseProcessTraffic(""), ProcessTraffic{});
  EXPECT_EQ(parseProcessTraffic("ok.2,3,4,\n"), ProcessTraffic{});
}

TEST(ProcessTrafficTests, aSlowOrMissingProgramTellsNothing) {
  std::optional<ShellResult> answer = ShellResult{.output = "\nok.2,3,4,\n"};
  const CommandRunner run = [&](const std::string& path, const std::vector<std::string>& arguments,
                                Seconds timeout) {
    EXPECT_EQ(path, "/usr/bin/nettop");
    EXPECT_EQ(arguments, (std::vector<std::string>{"-P", "-L", "1", "-x", "-n", "-J", "bytes_in,bytes_out"}));
    EXPECT_EQ(timeout, Seconds{3});
    return answer;
  };
  EXPECT_EQ(readProcessTraffic(run), (ProcessTraffic{{2, {3, 4}}}));
  answer->timedOut = true;
  EXPECT_EQ(readProcessTraffic(run), ProcessTraffic{});
  answer.reset();
  EXPECT_EQ(readProcessTraffic(run), ProcessTraffic{});
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

using Ports = std::unordered_map<ProcessID, std::vector<int>>;

TEST(ListeningPortsTests, portsBelongToTheProcessAboveThem) {
  EXPECT_EQ(parseListeningPorts("p412\nf23\nn127.0.0.1:5432\nf24\nn[::1]:5432\n"
                                "p99\nn*:8080\nn[fe80::1%en0]:80\nn*:3000\n"),
            (Ports{{412, {5432}}, {99, {80, 3000, 8080}}}));
}

TEST(ListeningPortsTests, linesThatDoNotParseMeanNothing) {
  EXPECT_EQ(parseListeningPorts(""), Ports{});
  EXPECT_EQ(parseListeningPorts("n*:80\n"), Ports{}) << "no process yet";
  EXPECT_EQ(parseListeningPorts("p5\np\nn*:80\n"), Ports{}) << "the process did not parse";
  for (const char* address : {"n*:http", "n*", "n", "n*:", "n*:70000", "n*:-1", "x*:80"})
    EXPECT_EQ(parseListeningPorts(std::string("p5\n") + address + "\nn*:9\n"), (Ports{{5, {9}}})) << address;
}

} // namespace
} // namespace korvell
