#include "Tool/Summary.h"

#include "Base/Text.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::Not;

SystemSnapshot bigMachine() {
  SystemSnapshot s;
  s.cpu = {.total = 93.4,
           .user = 60,
           .system = 33.4,
           .performanceCores = 96,
           .efficiencyCores = 32,
           .load1 = 140.25};
  for (int i = 0; i < 128; ++i) s.cpu.perCore.push_back(i % 101);
  s.memory = {.total = 1ull << 40,
              .app = 900ull << 30,
              .wired = 3ull << 30,
              .compressed = 1ull << 30,
              .cached = 50ull << 30,
              .free = 70ull << 30,
              .swapUsed = 12ull << 30,
              .pressure = MemoryStats::Pressure::critical};
  s.disk = {.readRate = 123'456'789,
            .writeRate = 9'876'543'210,
            .volumes = {{"日本語のボリューム", "/media/someone/日本語のボリューム", 2'000'000'000'000, 1},
                        {"/", "/", 100, 0}}};
  s.network = {.inRate = 1e9, .outRate = 1e9, .interface = "Thunderbolt Ethernet Slot 1 · enp0s31f6"};
  s.gpu = {.name = "A graphics processor with a very long marketing name, revision 17",
           .utilization = 71.5,
           .memoryInUse = 24ull << 30};
  s.battery = {.present = true,
               .percent = 61,
               .onAC = false,
               .cycles = 1234,
               .health = 82,
               .temperature = 31.4,
               .minutesRemaining = 161,
               .systemPower = 112.6};
  return s;
}

KnownParts everything() {
  KnownParts known;
  for (const auto& part : allCases<KnownPart>()) known.set(part.value, Knowledge::fresh);
  return known;
}

TEST(SummaryTests, everyLineFitsWhateverTheMachine) {
  std::string sink;
  const Terminal terminal(sink, 80, true, true);
  for (const auto& snapshot : {bigMachine(), SystemSnapshot{}})
    for (const auto& known : {everything(), KnownParts()})
      for (const int width : {1, 2, 8, 9, 10, 11, 12, 15, 20, 27, 40, 59, 60, 80, 100, 120})
        for (const auto& line : summaryLines(terminal, snapshot, known, width))
          EXPECT_LE(inkedWidth(line), width) << line;
}

TEST(SummaryTests, manyCoresTakeAColumnEach) {
  std::string sink;
  const Terminal terminal(sink, 80);
  int columns = 0;
  for (const auto& line : summaryLines(terminal, bigMachine(), everything(), 80))
    if (line.find("▁▁▁") != std::string::npos || line.find("▃▃▃") != std::string::npos)
      columns += displayWidth(line) - 9;
  EXPECT_EQ(columns, 128);
}

TEST(SummaryTests, whatIsNotKnownIsADashAndAZeroIsNone) {
  std::string sink;
  const Terminal terminal(sink, 80);
  const auto text = [&](const SystemSnapshot& snapshot, const KnownParts& known) {
    std::string all;
    for (const auto& line : summaryLines(terminal, snapshot, known, 120)) all += line + "\n";
    return all;
  };
  const auto nothing = text(bigMachine(), {});
  for (const char* line :
       {"CPU      –  load –", "Memory   –\n", "Disk     –\n", "Network  –\n", "GPU      –\n",
        "Battery  –  on battery · 2 h 41 min left · – · health – · – cycles\n", "Volumes  –\n"})
    EXPECT_THAT(nothing, HasSubstr(line));
  EXPECT_THAT(nothing, Not(HasSubstr("▃"))) << "no cores either";
  SystemSnapshot idle;
  idle.battery.present = true;
  idle.network.interface = "eth0";
  const auto zeros = text(idle, everything());
  for (const char* line : {"  0%  of the machine · user 0% · system 0% · load 0.00", "↓ 0 B/s",
                           "  0%  0 B · GPU\n", "0.0 W · health 0% · 0 cycles · 0°C\n"})
    EXPECT_THAT(zeros, HasSubstr(line));
  EXPECT_THAT(zeros, Not(HasSubstr("–")));
  EXPECT_THAT(text({}, {}), Not(HasSubstr("Battery"))) << "no battery, no line about one";
}

} // namespace
} // namespace korvell
