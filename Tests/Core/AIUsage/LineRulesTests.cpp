#include "Core/AIUsage/LineRules.h"

#include "Core/AIUsage/Names.h"
#include "LogText.h"
#include "Tests/Fakes/FakeTimeZone.h"

#include <gtest/gtest.h>
#include <random>

namespace korvell {
namespace {

/// One file of either tool.
struct File {
  explicit File(int offset = 0) : zone(offset) {}
  FakeTimeZone zone;
  EventBatch batch;
  FileState state;
  LineTools tools{zone, "/home/ann", {1'772'400'000}};
  ClaudeLines claudeLines{tools, batch};
  CodexLines codexLines{tools, batch, state};

  bool claude(const std::string& text) { return claudeLines.claudeLine(PaddedLine(text)); }
  bool codex(const std::string& text) { return codexLines.codexLine(PaddedLine(text)); }
};

std::string described(const UsageEvent& event) {
  const auto& n = event.counts;
  return fmt::format("{} {} {} {} {} {} {} {}", dayText(event.day), event.model ? *event.model : "-",
                     event.project ? *event.project : "-", n.input, n.output, n.cacheWrite, n.cacheWrite1h,
                     n.cacheRead);
}
/// What the last line of a file added.
std::string last(const File& file) { return described(file.batch.events.back()); }

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

const std::string good = ClaudeText{}.text();

TEST(ClaudeLineTests, whatAMessageAdds) {
  const std::pair<std::string, const char*> rows[] = {
      {good, "2026-03-01 claude-sonnet-4-5 shop 1 2 0 0 0"},
      {ClaudeText{.usage = R"("input_tokens":3,"cache_creation_input_tokens":100,"output_tokens":9,)"
                           R"("cache_read_input_tokens":50,"service_tier":"standard","cache_creation":)"
                           R"({"ephemeral_5m_input_tokens":60,"ephemeral_1h_input_tokens":40})"}
           .text(),
       "2026-03-01 claude-sonnet-4-5 shop 3 9 100 40 50"},
      {ClaudeText{.usage = R"("cache_creation_input_tokens":5,"cache_creation":)"
                           R"({"ephemeral_1h_input_tokens":9})"}
           .text(),
       "2026-03-01 claude-sonnet-4-5 shop 0 0 5 5 0"},
      {ClaudeText{.usage = R"("cache_creation":{"ephemeral_1h_input_tokens":9})"}.text(),
       "2026-03-01 claude-sonnet-4-5 shop 0 0 0 0 0"},
      {ClaudeText{.model = "claude-x[1m]",
                  .cwd = "",
                  .usage = R"("input_tokens":1000000000000,"output_tokens":300.0)"}
           .text(),
       "2026-03-01 claude-x - 1000000000000 300 0 0 0"},
      // null is absent, of two members the last counts
      {ClaudeText{.usage = R"("input_tokens":null,"input_tokens":1,"output_tokens":4,"output_tokens":null,)"
                           R"("cache_creation":null)"}
           .text(),
       "2026-03-01 claude-sonnet-4-5 shop 1 0 0 0 0"},
      // unknown members, whatever they hold
      {ClaudeText{.extra = R"(,"x":[123456789012345678901234567890,-1e400,""],"y":"\"-01","z":null,)" +
                           ("\"long\":\"" + std::string(1'200'000, 'x') + "\"")}
               .text() +
           " \r",
       "2026-03-01 claude-sonnet-4-5 shop 1 2 0 0 0"},
      // texts that were cut within a character, read or not
      {ClaudeText{.cwd = R"(/p/a\ud83d)", .extra = R"(,"x":"\ud83d","y":["\udc00\ud83d\ude00"])"}.text(),
       "2026-03-01 claude-sonnet-4-5 a� 1 2 0 0 0"},
      {ClaudeText{.extra = R"(,"usage":5,"id":{},"model":[1],"type":"user","type":"assistant")"}.text(),
       "2026-03-01 claude-sonnet-4-5 shop 1 2 0 0 0"}};
  for (const auto& [text, expected] : rows) {
    File file;
    ASSERT_TRUE(file.claude(text)) << text;
    EXPECT_EQ(last(file), expected) << text;
  }
  File west(-5 * 3'600);
  west.claude(ClaudeText{.timestamp = "2025-03-01T00:30:00Z"}.text());
  EXPECT_EQ(last(west), "2025-02-28 claude-sonnet-4-5 shop 1 2 0 0 0");
}

TEST(ClaudeLineTests, anythingThatIsNoCountedMessageIsSkipped) {
  const std::string lines[] = {
      replaced(good, R"("type":"assistant")", R"("kind":{"type":"assistant"},"type":"user")"),
      replaced(good, R"("type":"assistant")", R"("kind":{"type":"assistant"})"),
      replaced(good, R"("model")", R"("modus")"), replaced(good, R"("claude-sonnet-4-5-20250929")", "null"),
      replaced(good, R"("usage":{)", R"("more":{"usage":{}},"used":{)"),
      replaced(good, R"("usage":{)", R"("usage": {)"), ClaudeText{.model = "gpt-5"}.text(),
      ClaudeText{.model = "Claude-sonnet"}.text(), ClaudeText{.timestamp = "2026-03-01T12:00:0"}.text(),
      // malformed anywhere
      good.substr(0, good.size() - 1), good + "}", good + good, "\xef\xbb\xbf" + good};
  for (const auto& line : lines) EXPECT_FALSE(File().claude(line)) << line;
  // no whole number, no count, or none in one of two members of that name
  for (const char* tokens :
       {R"("1")", "1.5", "1000000000001", "-1e13", "9223372036854775807", "9223372036854775808", "1e400",
        "123456789012345678901234567890", "true", "[]", R"([],"input_tokens":1)", R"(1,"input_tokens":{})"})
    EXPECT_FALSE(File().claude(ClaudeText{.usage = R"("input_tokens":)" + std::string(tokens)}.text()))
        << tokens;
  // behind all that matters
  const std::string deep = R"(,"x":)" + std::string(1100, '[') + std::string(1100, ']');
  for (const std::string extra :
       {R"(,"cwd":5)", R"(,"x":trux)", R"(,"x":[1,,2])", R"(,"x":01)", R"(,"x":[1e400,1.])", R"(,"x":"\q")",
        R"(,"x":"\ud80")", R"(,"x":[})", ",\"x\":\"\x01\"", ",\"x\":\"\xff\"", deep.c_str()})
    EXPECT_FALSE(File().claude(ClaudeText{.extra = extra}.text())) << extra;
}

TEST(ClaudeLineTests, theKeyIsMessageAndRequestAndSpentByTheFirstLine) {
  MessageKeys keys;
  EXPECT_EQ(keys.key(R"({"id":"msg_a","requestId":"r"})"), fnv1a("msg_a:r"));
  EXPECT_EQ(keys.key(R"({"id":"msg_a"})"), fnv1a("msg_a:"));
  EXPECT_EQ(keys.key(R"({"id":"msg_a","requestId":"r)"), fnv1a("msg_a:"));
  EXPECT_EQ(keys.key(R"({"id":"msg_a)"), std::nullopt);
  EXPECT_EQ(keys.key(R"({"id":"chat_a","requestId":"r"})"), std::nullopt);
  EXPECT_EQ(fnv1a(""), 0xcbf29ce484222325);
  EXPECT_EQ(fnv1a("foobar"), 0x85944171f73967e8);

  File file;
  EXPECT_FALSE(file.claude(good + "}"));
  ASSERT_EQ(file.batch.events.size(), 1u);
  EXPECT_FALSE(file.batch.events[0].counted);
  EXPECT_EQ(file.batch.events[0].key, fnv1a("msg_1:req_1"));
  EXPECT_FALSE(file.claude(good)) << "the same message again";
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(file.claude(ClaudeText{.id = "chat_1"}.text())) << "without an id";
}

TEST(CodexLineTests, countsWhatTheLastTurnUsed) {
  File file;
  ASSERT_TRUE(
      file.codex(CodexText{.total = 1, .last = R"("input_tokens":5,"cached_input_tokens":9)"}.text()));
  EXPECT_EQ(last(file), "2026-03-01 unknown Home 0 0 0 0 9") << "before any context, more cached than sent";
  EXPECT_FALSE(file.codex(CodexText::context("gpt-5.5", "/home/ann/code/api")));
  ASSERT_TRUE(file.codex(CodexText{.last = R"("input_tokens":50,"cached_input_tokens":20,)"
                                           R"("cache_write_input_tokens":3,"output_tokens":7)"}
                             .text()));
  EXPECT_EQ(last(file), "2026-03-01 gpt-5.5 api 30 7 3 0 20");
  EXPECT_FALSE(file.batch.events.back().key);
  EXPECT_FALSE(file.codex(CodexText{.total = 100}.text())) << "a repeated running total";
  EXPECT_TRUE(file.codex(CodexText{.total = 90}.text()));
  EXPECT_FALSE(file.codex(CodexText{.timestamp = "short", .total = 80}.text()));
  EXPECT_EQ(file.state, (FileState{.lastTotal = 90, .model = "gpt-5.5", .project = "api"}))
      << "a line without a day leaves the state alone";
}

TEST(CodexLineTests, anythingElseIsSkipped) {
  const std::string at = R"({"timestamp":"2026-03-01T12:00:00Z",)";
  const std::pair<const char*, std::string> rows[] = {
      {"another event", at + R"("type":"event_msg","payload":{"type":"turn_count"}})"},
      {"no payload", at + R"("type":"token_count"})"},
      {"needle of a context only", R"({"type":"event_msg","payload":{"type":"turn_context","model":"m"}})"},
      {"no info", at + R"("payload":{"type":"token_count","info":null}})"},
      {"no total", at + R"("payload":{"type":"token_count","info":{"last_token_usage":{}}}})"},
      {"broken limits", CodexText{.limits = R"({"primary":{"used_percent":"1"}})"}.text()},
      {"broken tail", CodexText{}.text() + "]"}};
  for (const auto& [name, text] : rows) {
    File file;
    EXPECT_FALSE(file.codex(text)) << name;
    EXPECT_EQ(file.state, FileState{}) << name;
    EXPECT_EQ(file.batch.limits, PlanReadings{}) << name;
  }
}

TEST(CodexLineTests, theNewestLimitsAreKeptWhateverTheOrder) {
  File file;
  const auto used = [&](const char* time, double percent) {
    file.codex(CodexText{.timestamp = time,
                         .limits = fmt::format(R"({{"primary":{{"used_percent":{},"window_minutes":300,)"
                                               R"("resets_at":1772380000.5}},"secondary":{{)"
                                               R"("used_percent":1}},"plan_type":"pro"}})",
                                               percent)}
                   .text());
    return file.batch.limits.latest.value().primary->usedPercent;
  };
  EXPECT_EQ(used("2026-03-01T12:10:00Z", 40), 40);
  EXPECT_EQ(*file.batch.limits.latest,
            (AICodexLimits{{1'772'367'000}, "pro", AIPlanLimit{40, 300, {1'772'380'000.5}}, std::nullopt}));
  EXPECT_EQ(used("2026-03-01T12:00:00Z", 20), 40);
  EXPECT_EQ(used("2026-03-01T12:10:00Z", 41), 41) << "an equal date, in a line that adds nothing";
  EXPECT_EQ(used("short", 99), 41);
  EXPECT_EQ(used("2026-03-03T12:00:00Z", 1e300), 41) << "its time has not come";
  EXPECT_EQ(used("2026-03-02T12:00:00Z", -3), 41);
  EXPECT_EQ(used("2026-03-01T12:20:00Z", 1e300), 999);
  EXPECT_EQ(file.batch.limits.ahead->date, *parseRFC3339("2026-03-02T12:00:00Z")) << "the first to come";
  file.batch.limits.advance(*parseRFC3339("2026-03-02T12:00:00Z"));
  EXPECT_EQ(file.batch.limits.latest->primary->usedPercent, 0);
  EXPECT_FALSE(file.batch.limits.ahead);
}

TEST(LineRulesTests, aBlockOfLinesIsEveryLineOfIt) {
  std::mt19937 random(11);
  std::size_t events = 0;
  for (int round = 0; round < 50; ++round) {
    std::string block;
    File byBlock, byLine;
    for (int i = 0; i < 40; ++i) {
      const std::string id = std::to_string(random() % 20);
      const std::string choices[] = {"",
                                     "{}",
                                     std::string(random() % 300, ' '),
                                     R"({"usage":{}})",
                                     ClaudeText{.id = "msg_" + id}.text(),
                                     ClaudeText{.id = "m" + id}.text(),
                                     CodexText{.total = std::int64_t(random() % 5)}.text(),
                                     CodexText::context("m" + id, "/p/q" + id)};
      const auto& line = choices[random() % std::size(choices)];
      block += line + "\n";
      round % 2 ? byLine.claude(line) : byLine.codex(line);
    }
    const PaddedLine padded(block);
    round % 2 ? byBlock.claudeLines.lines(padded) : byBlock.codexLines.lines(padded);
    const auto all = [](const File& file) {
      std::vector<std::string> texts;
      for (const auto& event : file.batch.events)
        texts.push_back(fmt::format("{} {} {}", event.key.value_or(1), event.counted, described(event)));
      return texts;
    };
    EXPECT_EQ(all(byBlock), all(byLine));
    EXPECT_EQ(byBlock.state, byLine.state);
    events += byLine.batch.events.size();
  }
  EXPECT_GT(events, 100u);
}

TEST(NamesTests, projects) {
  const std::pair<const char*, const char*> rows[] = {
      {"/Users/ann/code/shop", "shop"},
      {"/Users/ann/code/shop/.claude/worktrees/fix-1", "shop"},
      {"/Users/ann/code/shop/.claude/worktrees", "shop"},
      {"/Users/ann/.claude/worktrees/x", "Home"},
      {"/Users/ann/worktrees/fix-1/src", "fix-1"},
      {"/worktrees/a/.claude/worktrees/b", "a"},
      {"/Users/ann/worktrees", "worktrees"},
      {"/.claude/worktrees/b", "Home"},
      {"//Users//ann/", "Home"},
      {"/", "Home"},
      {"C:\\work", "C:\\work"}};
  for (const auto& [cwd, project] : rows) EXPECT_EQ(projectName(cwd, "", "/Users/ann"), project) << cwd;
  for (const auto& cwd : {std::optional<std::string_view>(), std::optional<std::string_view>("")}) {
    EXPECT_EQ(projectName(cwd, "-Users-ann-code-shop", "/Users/ann"), "shop");
    EXPECT_EQ(projectName(cwd, "---", "/Users/ann"), "Home");
  }
}

TEST(NamesTests, modelsAndInstants) {
  const std::pair<const char*, const char*> models[] = {
      {"claude-sonnet-4-5-20250929", "claude-sonnet-4-5"},
      {"claude-opus-4-6-20260101[1m]", "claude-opus-4-6"},
      {"claude-opus-4-6-2026010", "claude-opus-4-6-2026010"},
      {"claude-x-202601011", "claude-x-202601011"},
      {"claude-x-2026o101", "claude-x-2026o101"},
      {"-20250929", ""}};
  for (const auto& [model, expected] : models) EXPECT_EQ(normalizedModel(model), expected);

  EXPECT_EQ(logInstant("2025-01-31 12:34:56+09:00"), 1'738'326'896)
      << "separators and zone are not looked at";
  EXPECT_EQ(logInstant("2024-02-29x23x59x60"), 1'709'251'200);
  EXPECT_EQ(logInstant("2025-01-31T12:34:5"), std::nullopt);
  EXPECT_EQ(logInstant(std::nullopt), std::nullopt);
}

} // namespace
} // namespace korvell
