#include "Core/Machine/ProcessSampler.h"

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeProcessTable.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Groups by the part of the executable's name before a dash; remembers what it asked.
class PrefixOwners final : public OwnerRules {
public:
  OwnerDecision owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) override {
    auto name = facts.name.substr(0, facts.name.find('-'));
    if (facts.name == "child") // owned like its parent
      if (const auto* parent = lookup.facts(lookup.parent(pid))) name = parent->name;
    return {std::make_shared<Owner>(Owner{"key:" + name, name, "/apps/" + name}), "prefix"};
  }
  SystemGroup systemGroup() const override { return linuxSystemGroup; }
};

struct ProcessSamplerTests : testing::Test {
  FakeProcessTable table;
  FakeRunningApplications applications;
  PrefixOwners owners;
  FakeClock clock;
  RusageSample::Map helper;
  std::vector<ProcessID> helperAsked;
  ProcessSampler sampler{{table, applications, owners, clock}, 4, [this](const std::vector<ProcessID>& pids) {
                           helperAsked = pids;
                           return helper;
                         }};

  std::vector<AppUsage> cycle(double seconds = 2) {
    clock.advance(Seconds{seconds});
    return sampler.sample({});
  }
  static ProcessUsage process(const std::vector<AppUsage>& apps, ProcessID pid) {
    for (const auto& app : apps)
      for (const auto& process : app.processes)
        if (process.pid == pid) return process;
    return {};
  }
  /// What the next cycle makes of process 7's counters.
  void expectRates(ProcessCounters counters, ProcessUsage rates, const char* what) {
    counters.pid = 7;
    counters.footprint = 99;
    table.add(7, "app").counters = counters;
    rates.pid = 7;
    rates.name = "app";
    rates.path = "/opt/app";
    rates.memory = 99;
    EXPECT_EQ(process(cycle(), 7), rates) << what;
  }
};

TEST_F(ProcessSamplerTests, countersOfTwoCyclesBecomeRates) {
  constexpr std::uint64_t s = 1'000'000'000;
  const ProcessCounters some{
      .cpuTime = s, .diskRead = 10, .diskWritten = 20, .energy = s, .network = {{5, 6}}};
  const struct {
    const char* what;
    ProcessCounters before, after;
    ProcessUsage expected;
  } rows[] = {
      {"everything advances",
       some,
       {.cpuTime = 2 * s, .diskRead = 210, .diskWritten = 420, .energy = 5 * s, .network = {{105, 206}}},
       {.cpu = 50, .diskRead = 100, .diskWrite = 200, .netIn = 50, .netOut = 100, .power = 2}},
      {"everything goes backwards", some, {.network = {{0, 0}}}, {}},
      {"more than all processors", {}, {.cpuTime = 100 * s}, {.cpu = 400}},
      {"500 watts are believed", {}, {.energy = 1000 * s}, {.power = 500}},
      {"more is a jump", {}, {.energy = 1000 * s + 10}, {}},
      {"traffic that was not read before", {}, {.network = {{500, 500}}}, {}},
      {"a reused process id",
       {.start = 1, .network = {{1, 1}}},
       {.start = 2, .cpuTime = s, .network = {{9, 9}}},
       {}},
  };
  for (const auto& row : rows) {
    table.processes.clear();
    cycle();
    expectRates(row.before, {}, row.what);
    expectRates(row.after, row.expected, row.what);
  }
}

TEST_F(ProcessSamplerTests, unitsOfTheTimebaseOverElapsedTime) {
  table.base = {125, 3};
  ProcessSampler fresh{{table, applications, owners, clock}, 4};
  auto& counters = table.add(7, "app").counters;
  for (const auto& [elapsed, cpu] : {std::pair(0.0, 0.0), std::pair(4.0, 25.0), std::pair(0.0, 0.0)}) {
    counters.cpuTime += 24'000'000; // one second at 24 MHz
    clock.advance(Seconds{elapsed});
    EXPECT_NEAR(process(fresh.sample({}), 7).cpu, cpu, 1e-9) << elapsed;
  }
}

TEST_F(ProcessSamplerTests, factsAreAskedOnceForAnIdentity) {
  table.add(7, "app");
  table.add(8, "young").facts.settled = false;
  cycle();
  EXPECT_THAT(table.asked, ElementsAre(7, 8));
  cycle();
  EXPECT_THAT(table.asked, ElementsAre(7, 8, 8)) << "once more for the unsettled one";
  cycle();
  EXPECT_EQ(table.asked.size(), 3u);
  table.processes[7].counters.comm = "exec'd"; // same process, another program
  table.processes[7].facts.path = "/opt/exec'd";
  EXPECT_EQ(process(cycle(), 7).path, "/opt/exec'd");
  table.add(7, "other").counters.start = 71; // another process by a reused id
  EXPECT_EQ(cycle().at(0).id, "key:other");
  EXPECT_EQ(sampler.identity(7)->path(), "/opt/other");
}

TEST_F(ProcessSamplerTests, whatIsGoneIsForgotten) {
  table.add(7, "app", 1);
  table.add(9, "app-helper", 7);
  cycle();
  EXPECT_THAT(sampler.parents(), UnorderedElementsAre(std::pair{7, 1}, std::pair{9, 7}));
  table.processes.erase(9);
  EXPECT_EQ(cycle().at(0).processes.size(), 1u);
  EXPECT_THAT(sampler.parents(), ElementsAre(std::pair{7, 1}));
  EXPECT_EQ(sampler.identity(9), nullptr);
  table.add(9, "app-helper", 7).counters.cpuTime = 1'000'000'000;
  EXPECT_EQ(process(cycle(), 9).cpu, 0);
  table.add(10, "app").facts = {};
  EXPECT_EQ(process(cycle(), 10).name, "pid 10") << "a name for want of facts";
}

TEST_F(ProcessSamplerTests, onlyWhatWasHiddenComesFromTheHelper) {
  const RusageSample answer{
      .footprint = 11, .cpuTime = 22, .diskRead = 33, .diskWritten = 44, .energy = 55, .start = 70};
  const struct {
    const char* what;
    std::uint8_t hidden;
    std::uint64_t start; ///< our own reading
    std::uint8_t told;
    std::uint8_t unknown;
    std::vector<std::uint64_t> figures;
  } rows[] = {
      {"disk only", hiddenDisk, 70, allFigures, 0, {1, 2, 33, 44, 4, 70}},
      {"memory only", hiddenMemory, 70, allFigures, 0, {1, 11, 3, 0, 4, 70}},
      {"all but the start", 15, 70, allFigures, 0, {22, 11, 33, 44, 55, 70}},
      {"an answer about another process", 15, 71, allFigures, 15, {1, 2, 3, 0, 4, 71}},
      {"the start itself was hidden", 31, 0, allFigures, 0, {22, 11, 33, 44, 55, 70}},
      {"a helper that tells bytes alone", 31, 0, hiddenDisk | hiddenStart, 11, {1, 2, 33, 44, 4, 70}},
  };
  for (const auto& row : rows) {
    ProcessCounters merged{
        .start = row.start, .cpuTime = 1, .footprint = 2, .diskRead = 3, .energy = 4, .hidden = row.hidden};
    EXPECT_EQ(mergeHidden(merged, &answer, row.told), row.unknown) << row.what;
    EXPECT_EQ((std::vector{merged.cpuTime, merged.footprint, merged.diskRead, merged.diskWritten,
                           merged.energy, merged.start}),
              row.figures)
        << row.what;
  }
}

TEST_F(ProcessSamplerTests, anAnswerAfterASilenceIsNoAdvance) {
  auto& counters = table.add(7, "app").counters;
  counters.hidden = 31;
  counters.start = 0;
  table.add(8, "open");
  cycle();
  EXPECT_THAT(helperAsked, ElementsAre(7));
  EXPECT_EQ(sampler.privilegedUse(), (PrivilegedUse{.told = 0, .hidden = 1}));
  helper = {{7, {.footprint = 5, .cpuTime = 3'000'000'000, .diskRead = 4000, .start = 70}}};
  const auto usage = process(cycle(), 7);
  EXPECT_EQ(usage.cpu + usage.diskRead, 0);
  EXPECT_EQ(usage.memory, 5u);
  EXPECT_EQ(sampler.privilegedUse(), (PrivilegedUse{.told = 1, .hidden = 0}));
  helper[7].cpuTime += 1'000'000'000;
  EXPECT_EQ(process(cycle(), 7).cpu, 50);
  table.asked.clear();
  const auto answers = std::exchange(helper, {}); // a slow helper: no rates, no false identity
  EXPECT_EQ(process(cycle(), 7).cpu, 0);
  EXPECT_THAT(table.asked, IsEmpty());
  EXPECT_EQ(sampler.identity(7)->start, 70u);
  helper = answers;
  EXPECT_EQ(process(cycle(), 7).cpu, 0) << "what advanced in the silence belongs to no cycle";
}

TEST_F(ProcessSamplerTests, bytesThatTheHelperBeginsToTellAreNoTraffic) {
  auto& counters = table.add(7, "app").counters; // its start is known, so nothing but the silence tells
  counters.hidden = hiddenDisk;
  cycle();
  helper = {{7, {.diskRead = 1 << 30, .diskWritten = 1 << 30, .start = 70}}};
  const auto usage = process(cycle(), 7);
  EXPECT_EQ(usage.diskRead + usage.diskWrite, 0);
  helper[7].diskRead += 4000;
  EXPECT_EQ(process(cycle(), 7).diskRead, 2000);
}

TEST_F(ProcessSamplerTests, aHiddenProcessIsTheSameWhetherTheHelperAnswersOrNot) {
  // As under hidepid: the clock is all that can be read; the helper tells bytes and the start.
  table.toldByHelper = hiddenDisk | hiddenStart;
  auto& counters = table.add(7, "").counters;
  counters = {.pid = 7, .hidden = hiddenMemory | hiddenDisk | hiddenStart};
  const RusageSample::Map answer{{7, {.start = 70}}};
  cycle();
  helper = answer;
  cycle();
  for (const bool answers : {true, false, true, true}) {
    helper = answers ? answer : RusageSample::Map{};
    counters.cpuTime += 1'000'000'000;
    EXPECT_EQ(process(cycle(), 7).cpu, 50) << answers;
    EXPECT_EQ(sampler.privilegedUse().hidden, 1) << "its memory stays hidden";
  }
  EXPECT_THAT(table.asked, ElementsAre(7)) << "one identity, one owner";
}

TEST_F(ProcessSamplerTests, processesOfOneOwnerAreOneApplication) {
  table.add(5, "app-main").counters.footprint = 1;
  table.add(6, "other").counters.footprint = 10;
  table.add(9, "app-helper").counters.footprint = 100;
  table.add(10, "child", 12); // identified before its parent
  table.add(12, "other-late");
  applications.applications = {{9, "/apps/app"}, {77, "/apps/unrelated"}};
  const auto apps = sampler.sample({{9, {80, 8080}}});
  ASSERT_EQ(apps.size(), 3u);
  EXPECT_EQ(apps[0].id, "key:app");
  EXPECT_EQ(apps[0].memory(), 101u);
  EXPECT_EQ(apps[0].mainPID, 9);
  EXPECT_THAT(process(apps, 9).ports, ElementsAre(80, 8080));
  EXPECT_THAT(process(apps, 5).ports, IsEmpty());
  EXPECT_EQ(apps[1].mainPID, std::nullopt) << "not among the running applications";
  EXPECT_EQ(apps[2].id, "key:other-late");
}

} // namespace
} // namespace korvell
