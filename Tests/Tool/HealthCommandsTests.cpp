// status, top, alerts and report beside a keeper that a test plays.

#include "Base/Text.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/HealthReport.h"
#include "Core/Health/WeeklyReport.h"
#include "Core/History/HistoryDatabase.h"
#include "Tests/Fakes/FakeDiagnostics.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Tool/KeeperFixture.h"
#include "Tool/Findings.h"

#include <unistd.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Action = Insight::Action;

const HealthReport report{
    65,
    {{Insight::Severity::critical, "Disk\x1b[2J is almost full",
      "3.00 GB free. The system needs room for swap and updates.", 20,
      Action{.kind = Action::Kind::freeUpSpace}},
     {Insight::Severity::warning, "CPU busy for 10 minutes", "91% on average. Editor is the main load.", 15,
      Action{Action::Kind::quitApp, "/Editor", "Editor"}},
     {Insight::Severity::info, "Up for 15 days",
      "A restart clears leaked memory and applies pending updates.", 4, std::nullopt}}};

struct HealthCommandsTests : KeeperFixture {
  KnownParts known;

  HealthCommandsTests() {
    known.set(KnownPart::tenMinuteAverage, true);
    host.defaults = std::make_unique<FakeUserDefaults>();
    columns = 60;
  }
  void startKeeper(Value state) {
    state.set("ok", true).set("hasSample", true);
    playKeeper([state](const Value&) { return state; });
  }
  void startKeeper(const std::vector<AppUsage>& apps) {
    SystemSnapshot snapshot;
    snapshot.apps = apps;
    startKeeper(Value::object(
        {{"snapshot", toValue(snapshot)}, {"known", toValue(known)}, {"report", reportValue(report)}}));
  }
};

TEST_F(HealthCommandsTests, statusTellsTheFindingsAndTheirFixes) {
  startKeeper(std::vector<AppUsage>());
  EXPECT_EQ(run({"status"}), exitOK);
  EXPECT_THAT(out, testing::StartsWith("Health   65 Fair\n"
                                       "         ● Disk\\x1b[2J is almost full −20\n"
                                       "           3.00 GB free. The system needs room for swap and\n"
                                       "           updates.\n"
                                       "           → Free up space: korvell storage\n"
                                       "         ▲ CPU busy for 10 minutes −15\n"
                                       "           91% on average. Editor is the main load.\n"
                                       "           → Quit Editor: korvell quit Editor\n"
                                       "         · Up for 15 days −4\n"
                                       "           A restart clears leaked memory and applies\n"
                                       "           pending updates.\n"
                                       "\nCPU "));
  EXPECT_THAT(out, Not(HasSubstr("korvell run"))) << "there is a keeper";
}

TEST_F(HealthCommandsTests, statusAsJSONAndAsACheck) {
  startKeeper(std::vector<AppUsage>());
  EXPECT_EQ(run({"status", "--json", "--check", "65"}), exitOK);
  const auto json = *parseJSON(out);
  EXPECT_EQ(json.find("score")->asInt(), 65);
  EXPECT_EQ(*json.find("label")->asString(), "Fair");
  EXPECT_EQ(json.find("keeper")->asBool(), true);
  const auto& insights = *json.find("insights")->asArray();
  ASSERT_EQ(insights.size(), 3u);
  EXPECT_EQ(
      dumpJSON(insights[1]),
      R"({"severity":"warning","title":"CPU busy for 10 minutes","detail":"91% on average. Editor is the )"
      R"(main load.","penalty":15,"action":{"kind":"quitApp","bundlePath":"/Editor","name":"Editor"}})");
  EXPECT_EQ(run({"status", "--check", "66"}), exitFailed);
  EXPECT_EQ(run({"status", "--check", "101"}), exitUsage) << "no machine reaches that";
}

TEST_F(HealthCommandsTests, aScoreWithoutItsTenMinutesIsOneSoFar) {
  known.set(KnownPart::tenMinuteAverage, false);
  known.set(KnownPart::graphics, Knowledge::refused);
  auto diagnostics = std::make_unique<FakeDiagnostics>();
  diagnostics->list = {{.name = "Graphics",
                        .state = SourceReport::State::refused,
                        .reason = "It is asleep.",
                        .parts = {KnownPart::graphics}}};
  host.diagnostics = std::move(diagnostics);
  startKeeper(std::vector<AppUsage>());
  EXPECT_EQ(run({"status"}), exitOK);
  EXPECT_THAT(out, testing::StartsWith("Health   65 Fair so far\n"));
  EXPECT_EQ(run({"status", "--json"}), exitOK);
  const auto told = *parseJSON(out)->find("known");
  EXPECT_EQ(dumpJSON(*told.find("graphics")), R"({"state":"refused","reason":"It is asleep."})");
  EXPECT_THAT(dumpJSON(*told.find("tenMinuteAverage")),
              HasSubstr(R"({"state":"absent","reason":"Fewer than eight)"));
  EXPECT_EQ(dumpJSON(*told.find("load")), R"({"state":"absent"})");
}

TEST_F(HealthCommandsTests, findingsOnFewLines) {
  std::string sink;
  const Terminal terminal(sink, 60);
  EXPECT_EQ(findingLines(terminal, report, known, 60, 20), findingLines(terminal, report, known, 60))
      << "all that there is";
  EXPECT_THAT(findingLines(terminal, report, known, 60, 4),
              ElementsAre("Health   65 Fair", "         ● Disk\\x1b[2J is almost full −20  3.00 GB free. Th…",
                          "         ▲ CPU busy for 10 minutes −15  91% on average. Edi…",
                          "         · Up for 15 days −4  A restart clears leaked memor…"));
  for (const int height : {0, 2, 3}) {
    const auto lines = findingLines(terminal, report, known, 60, height);
    EXPECT_EQ(lines.size(), std::size_t(std::max(2, height)));
    EXPECT_EQ(lines.back(), height == 3 ? "           and 2 more: korvell status"
                                        : "           and 3 more: korvell status");
  }
  for (const auto& line : findingLines(terminal, report, known, 60, 20))
    EXPECT_THAT(plainText(line), Not(HasSubstr("?"))) << "a terminal without Unicode shows everything";
}

TEST_F(HealthCommandsTests, topSortsWhatTheKeeperMeasured) {
  columns = 80;
  known.set(KnownPart::processEnergy, true);
  startKeeper(
      {{.id = "a", .name = "Alpha", .processes = {{.pid = 1, .name = "a1", .cpu = 2, .memory = 3 << 20}}},
       {.id = "b",
        .name = "Beta",
        .processes = {{.pid = 2, .name = "b1", .cpu = 30, .memory = 1 << 20, .power = 2},
                      {.pid = 3, .name = "b2", .cpu = 1, .memory = 1 << 20}}}});
  const auto rows = [this](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "top");
    EXPECT_EQ(run(arguments), exitOK);
    std::vector<std::string> names;
    for (const auto line : splitLines(out)) names.emplace_back(trimmed(line.substr(0, 10)));
    return names;
  };
  EXPECT_THAT(rows({}), ElementsAre("Applicatio", "Beta (2)", "Alpha"));
  EXPECT_THAT(out, HasSubstr("Energy")) << "the keeper knows it";
  EXPECT_THAT(out, HasSubstr("–")) << "and no network";
  EXPECT_THAT(rows({"--by", "memory", "--limit", "1"}), ElementsAre("Applicatio", "Alpha"));
  EXPECT_THAT(rows({"--processes", "--limit", "2"}), ElementsAre("Process", "2       b1", "1       a1"));
  EXPECT_EQ(run({"top", "--json", "--processes", "--limit", "1"}), exitOK);
  const auto json = *parseJSON(out);
  EXPECT_EQ(json.find("apps")->asArray()->size(), 1u);
  EXPECT_EQ(json.find("apps")->asArray()->front().find("cpu")->asDouble(), 31);
  EXPECT_EQ(json.find("processes")->asArray()->front().find("pid")->asInt(), 2);
}

TEST_F(HealthCommandsTests, alertsComeFromTheKeeper) {
  EXPECT_EQ(run({"alerts"}), exitFailed);
  EXPECT_THAT(err, HasSubstr("need a running Korvell"));
  const HealthAlert alert{
      .id = "1", .kind = HealthAlert::Kind::cpu, .title = "A\tis busy", .detail = "11%", .date = {1.8e9}};
  Value state;
  state.set("alerts", toValue(std::vector<HealthAlert>{alert}));
  startKeeper(std::move(state));
  EXPECT_EQ(run({"alerts"}), exitOK);
  EXPECT_THAT(out, HasSubstr("  A\\x09is busy\n                  11%\n"));
  EXPECT_EQ(run({"alerts", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"({"alerts":[{"id":"1","kind":"cpu","title":"A\tis busy")"));
  EXPECT_THAT(out, HasSubstr(R"("new":1})"));
  EXPECT_EQ(run({"alerts", "seen"}), exitOK);
  EXPECT_THAT(out, HasSubstr("marked as seen: 1."));
  EXPECT_EQ(run({"alerts"}), exitOK);
  EXPECT_THAT(out, Not(HasSubstr("seen")));
  static_cast<FakeUserDefaults&>(*host.defaults).readOnly = true;
  EXPECT_EQ(run({"alerts", "seen"}), exitFailed);
}

TEST_F(HealthCommandsTests, aKeeperThatIsSilentIsNotCalledAbsent) {
  playKeeper([](const Value&) { return Value(); }, /*isSilent=*/true);
  patience = Seconds{0.01};
  const auto name = "Korvell (process " + std::to_string(getpid()) + ") is running but does not answer";
  const std::vector<std::string> commands[] = {
      {"alerts"}, {"startup"}, {"history", "cpu", "--range", "live"}};
  for (const auto& command : commands) {
    EXPECT_EQ(run(command), command[0] == "alerts" ? exitFailed : exitOK);
    EXPECT_THAT(err, HasSubstr(name)) << command[0];
    EXPECT_THAT(out + err, Not(HasSubstr("need a running"))) << command[0];
  }
  EXPECT_THAT(orders, testing::IsEmpty());
}

TEST_F(HealthCommandsTests, thatNothingIsRecordedIsSaid) {
  SystemSnapshot snapshot;
  const HistoryProblem problem{DatabaseFault::full, "The disk is full."};
  startKeeper(Value::object({{"snapshot", toValue(snapshot)},
                             {"known", toValue(known)},
                             {"report", reportValue(report)},
                             {"historyProblem", toValue(problem)}}));
  host.diagnostics = std::make_unique<FakeDiagnostics>();
  host.machine = std::make_unique<FakeMachineCounters>();
  EXPECT_EQ(run({"status"}), exitOK);
  EXPECT_THAT(out, HasSubstr("\nNothing is recorded: The disk is full.\n"));
  EXPECT_EQ(run({"status", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"("historyProblem":{"kind":"full","detail":"The disk is full."})"));
  EXPECT_EQ(run({"doctor"}), exitOK);
  EXPECT_THAT(out, HasSubstr("\n  The disk is full.\n"));
}

TEST_F(HealthCommandsTests, switches) {
  EXPECT_EQ(run({"alerts", "off", "disk"}), exitOK);
  EXPECT_FALSE(host.defaults->boolean("alert.disk", true));
  EXPECT_THAT(out, HasSubstr("disk            off"));
  EXPECT_EQ(run({"alerts", "on", "disk"}), exitOK);
  EXPECT_TRUE(host.defaults->boolean("alert.disk", false));
  EXPECT_EQ(run({"alerts", "on", "cheese"}), exitUsage);
  EXPECT_EQ(run({"report", "off"}), exitOK);
  EXPECT_FALSE(host.defaults->boolean("weeklyReport.enabled", true));
  static_cast<FakeUserDefaults&>(*host.defaults).readOnly = true;
  EXPECT_EQ(run({"alerts", "off", "disk"}), exitFailed);
  EXPECT_EQ(run({"report", "on"}), exitFailed);
}

TEST_F(HealthCommandsTests, theReportReadsTheHistoryAndSendsNothing) {
  EXPECT_EQ(run({"report"}), exitOK);
  EXPECT_THAT(out, HasSubstr("No health score was recorded"));
  EXPECT_EQ(run({"report", "last"}), exitOK);
  EXPECT_THAT(out, HasSubstr("No weekly report has been sent yet."));
  EXPECT_TRUE(static_cast<FakeUserDefaults&>(*host.defaults).changed.empty());
  host.defaults->set("weeklyReport.last", toValue(SentReport{clock.now(), "Your week", "Busy."}));
  EXPECT_EQ(run({"report", "last"}), exitOK);
  EXPECT_THAT(out, HasSubstr("Your week\nBusy.\nSent on "));
  EXPECT_EQ(run({"report", "last", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"("title":"Your week","body":"Busy."}})"));
  EXPECT_FALSE(std::filesystem::exists(host.folders.data + "/history.sqlite"));
}

TEST_F(HealthCommandsTests, historyTellsNothingRecordedFromUnreadable) {
  host.zone = std::make_unique<FakeTimeZone>(0);
  using Line = std::vector<std::string>;
  for (const auto& line :
       {Line{"history", "cpu", "--top", "memory"}, Line{"history", "--at", "14:32", "--top", "cpu"},
        Line{"history", "--at", "14:32", "--range", "7d"}}) {
    EXPECT_EQ(run(line), exitUsage);
    EXPECT_THAT(err, HasSubstr("can't be combined"));
  }
  const Line lines[] = {{"history", "cpu"},
                        {"history", "--top", "cpu", "--limit", "0"},
                        {"history", "--at", "14:32"},
                        {"report"}};
  for (const auto& line : lines) EXPECT_EQ(run(line), exitOK) << "there is no file";
  setLanguages({{.code = "de", .numbers = {.isDayFirst = true}}});
  EXPECT_EQ(run({"history", "--at", "2026-03-01 14:32"}), exitOK);
  EXPECT_THAT(out, HasSubstr("01.03.2026 14:32."));
  setLanguages({});
  folder.write("data/history.sqlite", std::string(3000, 'x'));
  for (const auto& line : lines) {
    EXPECT_EQ(run(line), exitFailed);
    EXPECT_THAT(err, HasSubstr(host.folders.data + "/history.sqlite"));
  }
  std::filesystem::remove(folder / "data/history.sqlite");
  {
    HistoryDatabase keeper(folder / "data/history.sqlite", HistoryAccess::keeper);
    ASSERT_TRUE(keeper.ensureOpen(clock.now()));
    HistoryMinute minute{
        .ts = std::int64_t(clock.now().sinceEpoch) / 60 * 60, .system = {}, .score = {}, .apps = {}};
    for (int i = 0; i < 20; ++i)
      minute.apps.push_back({.id = "a" + std::to_string(i),
                             .name = "App" + std::to_string(i),
                             .path = {},
                             .values = {1.0 + i}});
    ASSERT_TRUE(keeper.write(minute));
  }
  for (const auto& line : {Line{"history", "--top", "cpu"}, Line{"history", "--at", rfc3339(clock.now())}})
    for (const auto& [limit, last] : {std::pair{"0", true}, std::pair{"15", false}}) {
      auto limited = line;
      limited.insert(limited.end(), {"--limit", limit});
      EXPECT_EQ(run(limited), exitOK) << err;
      EXPECT_EQ(out.find("App0 ") != std::string::npos, last) << out;
    }
}

} // namespace
} // namespace korvell
