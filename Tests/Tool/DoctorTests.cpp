#include "Base/Text.h"
#include "Tests/Fakes/FakeDiagnostics.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tool/Wrap.h"

#include "CommandFixture.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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

TEST_F(DoctorTests, withoutDiagnosticsItFails) {
  EXPECT_EQ(run({"doctor"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("korvell: "));
}

} // namespace
} // namespace korvell
