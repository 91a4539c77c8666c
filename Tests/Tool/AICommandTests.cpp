#include "Base/Text.h"
#include "CommandFixture.h"
#include "Platform/Formats/LinuxWords.h"
#include "Platform/Posix/PosixLogFiles.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <fmt/format.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::Not;

struct AICommandTests : CommandFixture {
  TemporaryFolder folder;

  AICommandTests() {
    clock.wall = SystemClock().now(); // log files bear the machine's time
    host.logFiles = std::make_unique<PosixLogFiles>();
    host.folders.home = folder / "home";
    host.folders.data = folder / "data";
    const auto now = rfc3339(clock.wall);
    write(".claude/projects/-p-shop/a.jsonl",
          fmt::format(
              R"({{"type":"assistant","timestamp":"{}","cwd":"/p/shop","requestId":"r","message":{{"id":)"
              R"("msg_1","model":"claude-sonnet-4-5","usage":{{"input_tokens":1000000,)"
              R"("output_tokens":2345678}}}}}})",
              now));
    write(".codex/sessions/b.jsonl",
          fmt::format(
              R"({{"timestamp":"{}","type":"event_msg","payload":{{"type":"token_count","info":)"
              R"({{"total_token_usage":{{"total_tokens":9}},"last_token_usage":{{"output_tokens":9}}}},)"
              R"("rate_limits":{{"primary":{{"used_percent":84.6,"window_minutes":300,"resets_at":{}}},)"
              R"("plan_type":"pro\u001b[31m\u009b"}}}}}})",
              now, std::int64_t(clock.wall.sinceEpoch) - 60));
  }
  void write(const std::string& path, const std::string& line) { folder.write("home/" + path, line + "\n"); }
  int ai(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "ai");
    return run({aiCommand()}, arguments);
  }
};

TEST_F(AICommandTests, tablesByDayModelAndProject) {
  EXPECT_EQ(ai({}), exitOK);
  EXPECT_THAT(output, HasSubstr("2,345,687"));
  EXPECT_THAT(output, HasSubstr("API-equivalent, 30 days: $38.19* at API list prices"));
  EXPECT_THAT(output, HasSubstr("* Costs leave out the tokens of models without a price: 9."));
  EXPECT_EQ(ai({"--by", "model"}), exitOK);
  EXPECT_LT(output.find("claude-sonnet-4-5"), output.find("unknown"));
  EXPECT_EQ(ai({"--by", "project", "--tool", "codex", "--explain"}), exitOK);
  EXPECT_THAT(output, Not(HasSubstr("shop")));
  EXPECT_THAT(output, Not(HasSubstr("$"))) << "what has no price costs no figure";
  EXPECT_THAT(output, HasSubstr("API-equivalent today: – at API list prices"));
  EXPECT_THAT(output, HasSubstr("\nCosts leave out the tokens of models without a price: 9."));
  EXPECT_THAT(output, HasSubstr("2026-09-25). Subscription"));
  setLocalization(linuxWords());
  EXPECT_EQ(ai({"--explain"}), exitOK);
  setLocalization({});
  EXPECT_THAT(output, Not(HasSubstr(" Mac"))) << "every key of a text with other words is whole";
  EXPECT_EQ(ai({"--by", "model", "--tool", "claude"}), exitOK);
  EXPECT_THAT(output, HasSubstr("$38.19\n"));
  EXPECT_THAT(output, Not(HasSubstr("leave out")));
  EXPECT_EQ(ai({"--by", "week"}), exitUsage);
}

TEST_F(AICommandTests, tablesFitWhateverTheFigures) {
  for (const char* tokens : {"1", "123456789", "123456789012"}) {
    write(fmt::format(".claude/projects/-p-a-project-with-a-long-name/{}.jsonl", tokens),
          fmt::format(R"({{"type":"assistant","timestamp":"{}","message":{{"model":"claude-a-long-name-7",)"
                      R"("usage":{{"input_tokens":{},"output_tokens":{},"cache_read_input_tokens":{}}}}}}})",
                      rfc3339(clock.wall), tokens, tokens, tokens));
    for (const char* by : {"day", "model", "project"}) {
      EXPECT_EQ(ai({"--by", by}), exitOK);
      for (const auto line : splitLines(output)) EXPECT_LE(inkedWidth(std::string(line)), 80) << line;
    }
  }
}

TEST_F(AICommandTests, oneObjectOfJSONHoldsAllRowsWhateverTheTable) {
  EXPECT_EQ(ai({"--by", "project", "--json"}), exitOK);
  const auto json = parseJSON(output).value();
  const auto& rows = *json.find("rows")->asArray();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(*rows[0].find("tool")->asString(), "Claude Code");
  EXPECT_EQ(rows[0].find("tokens")->find("output")->asInt(), 2'345'678);
  EXPECT_EQ(rows[0].find("day")->asString()->size(), 10u);
  EXPECT_FALSE(rows[1].find("cost")) << "no price";
  EXPECT_EQ(json.find("lastScan")->find("records")->asInt(), 2);
  EXPECT_EQ(json.find("codexLimits")->find("primary")->find("usedPercent")->asDouble(), 84.6);
  EXPECT_EQ(ai({"--json"}), exitOK);
  EXPECT_EQ(parseJSON(output)->find("lastScan")->find("files")->asInt(), 0);
}

TEST_F(AICommandTests, limitsNothingAndFaults) {
  EXPECT_EQ(ai({"limits"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Codex plan: pro\\x1b[31m\\u009b\n"));
  EXPECT_THAT(output, HasSubstr(" 84%")) << "as the alert says it";
  const auto plan = Value::object({{"plan", "\x7f\\x7f\u009b\u202e\n–"}});
  EXPECT_EQ(terminalJSON(plan), "{\n  \"plan\": \"\\u007f\\\\x7f\\u009b\\u202e\\n–\"\n}\n");
  EXPECT_EQ(parseJSON(terminalJSON(plan)), plan);
  EXPECT_THAT(output, HasSubstr("window has reset"));
  std::ofstream(host.folders.data + "/ai-usage.sqlite") << std::string(5'000, 'x');
  EXPECT_EQ(ai({}), exitOK);
  EXPECT_THAT(output, HasSubstr("$38.19"));
  EXPECT_THAT(errors, HasSubstr("ai-usage-damaged-"));
  std::filesystem::remove_all(folder.path());
  EXPECT_EQ(ai({"limits"}), exitOK);
  EXPECT_EQ(output, "no Codex sessions yet\n");
  EXPECT_EQ(ai({}), exitOK);
  EXPECT_EQ(output, "No Claude Code or Codex usage in the last 30 days.\n");
  host.folders.data = "/dev/null/nowhere";
  EXPECT_EQ(ai({}), exitFailed);
  EXPECT_EQ(output, "No Claude Code or Codex usage in the last 30 days.\n");
  EXPECT_EQ(errors, "korvell: /dev/null/nowhere/ai-usage.sqlite can't be read or written\n");
}

} // namespace
} // namespace korvell
