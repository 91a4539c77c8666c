#include "App/ErrorLog.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Tests/Fakes/FakeDiagnostics.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tool/SupportReport.h"
#include "Tool/Wrap.h"

#include "CommandFixture.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(WrapTests, wordsFillLines) {
  EXPECT_THAT(wrapped("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(wrapped("one  two", 80), ElementsAre("one two"));
  EXPECT_THAT(wrapped("a incomprehensible b", 6), ElementsAre("a", "incomprehensible", "b"));
  EXPECT_THAT(wrapped("日本 語語", 5), ElementsAre("日本", "語語"));
  EXPECT_THAT(wrapped("", 5), IsEmpty());
}

struct DoctorTests : CommandFixture {
  int run(const std::vector<std::string>& arguments) {
    return CommandFixture::run({doctorCommand()}, arguments);
  }
  void examine() {
    auto diagnostics = std::make_unique<FakeDiagnostics>();
    diagnostics->list = {
        {.name = "Processor", .source = "/proc/stat", .microseconds = 9.4},
        {.name = "Volumes", .source = "/proc/self/mountinfo", .microseconds = 2345.6},
        {.name = "Processor power",
         .source = "/sys/class/powercap/intel-rapl:0/energy_uj",
         .state = SourceReport::State::refused,
         .reason = "Only root may read it.",
         .remedy = "A sentence that is quite a bit longer than what one line of the terminal has room for."}};
    diagnostics->usage.resident = 5 << 20;
    host.diagnostics = std::move(diagnostics);
    host.machine = std::make_unique<FakeMachineCounters>();
  }
};

TEST_F(DoctorTests, everySourceWithItsStateAndWhatItWouldTake) {
  examine();
  EXPECT_EQ(run({"doctor"}), exitOK);
  EXPECT_THAT(output, HasSubstr("readable             9 µs"));
  EXPECT_THAT(output, HasSubstr("2.3 ms"));
  EXPECT_THAT(output, HasSubstr("Only root may read it.\n  A sentence that"));
  EXPECT_THAT(output, HasSubstr("Korvell itself: 1.0 ms of CPU for one cycle, 5.00 MB of memory\n"));
  for (const auto line : splitLines(output)) EXPECT_LE(displayWidth(line), 80) << line;
  EXPECT_EQ(run({"doctor", "--json"}), exitOK);
  EXPECT_THAT(output, HasSubstr(R"("state":"refused")"));
  EXPECT_THAT(output, HasSubstr(R"("residentBytes":5242880)"));
}

TEST_F(DoctorTests, settingsThatCannotBeReadAreASourceToo) {
  examine();
  auto defaults = std::make_unique<FakeUserDefaults>();
  defaults->fault = "Line 3 is no JSON.";
  host.defaults = std::move(defaults);
  EXPECT_EQ(run({"doctor"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Settings · memory\n  Line 3 is no JSON.\n  Mend the file"));
  EXPECT_EQ(errors, "korvell: Line 3 is no JSON.\n") << "as every command says";
  EXPECT_EQ(CommandFixture::run({alertsCommand()}, {"alerts", "off", "cpu"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("nothing was changed"));
}

struct ReportTests : DoctorTests {
  TemporaryFolder home;
  std::vector<std::string> tellingNames = {"augusta.byron",  "Augusta",     "Byron",    "countess-pc",
                                           "Secret Project", "Wedding.app", "elopement"};

  /// A home in which every name that could leak tells something.
  void moveIn() {
    examine();
    const auto root = home / "augusta.byron";
    host.folders = {.home = root, .data = root + "/Secret Project/korvell", .runtime = root + "/run"};
    context.environment = [](std::string_view name) -> std::optional<std::string> {
      if (name == "USER") return "augusta.byron";
      if (name == "HOSTNAME") return "countess-pc";
      if (name == "XDG_CURRENT_DESKTOP") return "GNOME";
      if (name == "LANG") return "/home/augusta.byron/locale";
      return std::nullopt;
    };
    auto defaults = std::make_unique<FakeUserDefaults>();
    for (const auto& [key, value] : {std::pair<const char*, Value>("alert.cpu", false),
                                     {"appearance", "elopement"},
                                     {"metrics.textfile", root + "/elopement.prom"},
                                     {"weeklyReport.last", "Wedding.app was busy"}})
      defaults->set(key, value);
    host.defaults = std::move(defaults);
    auto& sources = dynamic_cast<FakeDiagnostics&>(*host.diagnostics).list;
    sources.push_back({.name = "Helper",
                       .source = root + "/helper.sock",
                       .reason = "COUNTESS-PC has (Augusta's) /opt/Wedding.app."});
    sources.push_back({.name = "Bus", .source = "countess-pc.sock", .reason = "Not for augusta.byron."});
    home.write("augusta.byron/Secret Project/korvell/elopement.sqlite", "x");
    home.write("augusta.byron/Secret Project/korvell/history.sqlite", "no database");
    ErrorLog log(systemQueueFactory(), clock, host.folders.data, "1.2");
    for (int i = 0; i < 2; ++i)
      log.add(troubleOf("The metrics could not be written to {path}: {reason}",
                        {{"path", root + "/elopement.prom"}, {"reason", "No space left"}}, "No space left"));
  }
};

TEST_F(ReportTests, saysWhatHelpsAndNamesNothing) {
  moveIn();
  ASSERT_EQ(run({"doctor", "--report", "-"}), exitOK);
  for (const auto& name : tellingNames)
    EXPECT_THAT(lowercased(output), Not(HasSubstr(lowercased(name)))) << output;
  for (const auto* expected :
       {"keeper: none\n", "history: damaged\n", "history.sqlite: 11 B\n", "alert.cpu: false\n",
        "appearance: not understood\n", "but {found} is stored; its default applies. [appearance]\n",
        "metrics.textfile: set\n", "XDG_CURRENT_DESKTOP: GNOME\n",
        "Processor | /proc/stat | readable | 9 µs\n",
        "intel-rapl:0/energy_uj | refused | –\n    Only root may read it.\n",
        "Bus | (name).sock | readable | –\n    Not for (name).\n",
        " | 1.2 | 2× | The metrics could not be written to {path}: {reason} [No space left]\n"})
    EXPECT_THAT(output, HasSubstr(expected));
}

TEST(SupportReportTests, whatTheSystemCallsItselfIsNobodysName) {
  SupportReport report({}, {"debian", "linux", "ada"}, "Debian GNU/Linux 12 Linux");
  report.fact("release", "Debian GNU/Linux 12 of ada");
  EXPECT_THAT(report.text(), HasSubstr("release: Debian GNU/Linux 12 of (name)\n"));
}

TEST_F(ReportTests, isEnglishForEverybody) {
  constexpr auto german =
      sortedTexts({{"Processor", "Prozessor"}, {"A file is what --report writes.", "Nein."}});
  setLanguages({{.code = "de", .tables = {german}, .numbers = {.decimal = ","}}, {.code = "en"}});
  examine();
  EXPECT_EQ(run({"doctor", "--report", "-"}), exitOK);
  EXPECT_THAT(output, testing::AllOf(HasSubstr("Processor | "), HasSubstr("2.3 ms"), HasSubstr("5.00 MB")));
  EXPECT_EQ(run({"doctor"}), exitOK);
  EXPECT_THAT(output, testing::AllOf(HasSubstr("Prozessor"), HasSubstr("2,3 ms")));
  EXPECT_EQ(run({"doctor", "report.txt"}), exitUsage);
  EXPECT_EQ(errors, "korvell: Nein.\n");
  setLanguages({});
}

TEST_F(ReportTests, isAFileOfItsOwnAndReplacesNone) {
  moveIn();
  const auto file = home / "report.txt";
  ASSERT_EQ(run({"doctor", "--report", file}), exitOK);
  EXPECT_EQ(home.permissions("report.txt"), 0600u);
  const auto first = home.text("report.txt");
  EXPECT_THAT(first, HasSubstr("Last errors"));
  clock.advance(Seconds{60});
  EXPECT_EQ(run({"doctor", "--report", file}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("File exists"));
  EXPECT_EQ(home.text("report.txt"), first);
  EXPECT_EQ(run({"doctor", file}), exitUsage);
  EXPECT_EQ(run({"doctor", "--report", "--json"}), exitUsage);
}

TEST_F(DoctorTests, withoutDiagnosticsItFails) {
  EXPECT_EQ(run({"doctor"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("korvell: "));
}

} // namespace
} // namespace korvell
