#include "Core/AIUsage/LineRules.h"

#include "Core/AIUsage/Names.h"
#include "LogText.h"
#include "Tests/Fakes/FakeTimeZone.h"

#include <gtest/gtest.h>
#include <random>

namespace korvell {
namespace {

const FakeTimeZone utc;

class Claude {
public:
  explicit Claude(const TimeZone& zone = utc) : tools_(zone, "/home/ann") {}
  bool line(const std::string& text) { return lines_.line(PaddedLine(text)); }
  const UsageEvent& last() const { return batch.events.back(); }
  EventBatch batch;

private:
  LineTools tools_;
  ClaudeLines lines_{tools_, batch};
};

class Codex {
public:
  bool line(const std::string& text) { return lines_.line(PaddedLine(text)); }
  const UsageEvent& last() const { return batch.events.back(); }
  EventBatch batch;
  FileState file;

private:
  LineTools tools_{utc, "/home/ann"};
  CodexLines lines_{tools_, batch, file};
};

TEST(ClaudeLineTests, countsAnAssistantMessage) {
  Claude claude;
  ASSERT_TRUE(claude.line(ClaudeText{.usage = R"("input_tokens":3,"cache_creation_input_tokens":100,)"
                                              R"("cache_read_input_tokens":50,"output_tokens":9,)"
                                              R"("cache_creation":{"ephemeral_5m_input_tokens":60,)"
                                              R"("ephemeral_1h_input_tokens":40},"service_tier":"standard")"}
                              .text()));
  EXPECT_EQ(claude.last().counts, (Counts{3, 9, 100, 40, 50}));
  EXPECT_EQ(*claude.last().model, "claude-sonnet-4-5");
  EXPECT_EQ(*claude.last().project, "shop");
  EXPECT_EQ(dayText(claude.last().day), "2026-03-01");
  EXPECT_EQ(claude.last().key, fnv1a("msg_1:req_1"));
}

TEST(ClaudeLineTests, theHoursShareOfCacheWritesIsAtMostAll) {
  Claude claude;
  claude.line(ClaudeText{.usage = R"("cache_creation_input_tokens":5,"cache_creation":)"
                                  R"({"ephemeral_1h_input_tokens":9})"}
                  .text());
  EXPECT_EQ(claude.last().counts, (Counts{0, 0, 5, 5, 0}));
  claude.line(
      ClaudeText{.id = "msg_2", .usage = R"("cache_creation":{"ephemeral_1h_input_tokens":9})"}.text());
  EXPECT_EQ(claude.last().counts, Counts{});
}

TEST(ClaudeLineTests, anythingThatIsNoCountedMessageIsSkipped) {
  const std::string good = ClaudeText{}.text();
  const auto with = [&](const char* from, const char* to) {
    std::string text = good;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, std::string_view(from).size(), to);
  };
  const std::pair<const char*, std::string> rows[] = {
      {"another type", with(R"("type":"assistant")", R"("kind":{"type":"assistant"},"type":"user")")},
      {"no type", with(R"("type":"assistant")", R"("kind":{"type":"assistant"})")},
      {"another maker's model", ClaudeText{.model = "gpt-5"}.text()},
      {"synthetic", ClaudeText{.model = "<synthetic>"}.text()},
      {"upper case", ClaudeText{.model = "Claude-sonnet"}.text()},
      {"no model", with(R"("model")", R"("modus")")},
      {"null model", with(R"("claude-sonnet-4-5-20250929")", "null")},
      {"usage elsewhere", with(R"("usage":{)", R"("more":{"usage":{}},"used":{)")},
      {"short timestamp", ClaudeText{.timestamp = "2026-03-01T12:00:0"}.text()},
      {"blank after the colon", with(R"("usage":{)", R"("usage": {)")},
      {"text where a number belongs", ClaudeText{.usage = R"("input_tokens":"1")"}.text()},
      {"a fraction", ClaudeText{.usage = R"("input_tokens":1.5)"}.text()},
      {"beyond 64 bits", ClaudeText{.usage = R"("input_tokens":9223372036854775808)"}.text()},
      {"a wrong type before the right one",
       ClaudeText{.usage = R"("input_tokens":[],"input_tokens":1)"}.text()},
      {"a wrong type after the right one",
       ClaudeText{.usage = R"("input_tokens":1,"input_tokens":{})"}.text()},
      {"wrong type of an unused member", ClaudeText{.extra = R"(,"cwd":5)"}.text()},
      {"cut off", good.substr(0, good.size() - 1)},
      {"tail behind the object", good + "}"},
      {"second object", good + good},
      {"bad literal behind all members", ClaudeText{.extra = R"(,"x":trux)"}.text()},
      {"empty element", ClaudeText{.extra = R"(,"x":[1,,2])"}.text()},
      {"leading zero", ClaudeText{.extra = R"(,"x":01)"}.text()},
      {"unknown escape", ClaudeText{.extra = R"(,"x":"\q")"}.text()},
      {"lone surrogate", ClaudeText{.extra = R"(,"x":"\ud800")"}.text()},
      {"mismatched brackets", ClaudeText{.extra = R"(,"x":[})"}.text()},
      {"control character", ClaudeText{.extra = ",\"x\":\"\x01\""}.text()},
      {"no UTF-8", ClaudeText{.extra = ",\"x\":\"\xff\""}.text()},
      {"too deep", ClaudeText{.extra = R"(,"x":)" + std::string(1100, '[') + std::string(1100, ']')}.text()},
      {"byte order mark", "\xef\xbb\xbf" + good}};
  for (const auto& [name, text] : rows) EXPECT_FALSE(Claude().line(text)) << name;
  EXPECT_TRUE(Claude().line(good));
}

TEST(ClaudeLineTests, unknownMembersDoNotMatter) {
  for (const char* extra : {R"(,"x":123456789012345678901234567890)", R"(,"x":-1.5e300,"y":null)",
                            R"(,"usage":5,"id":{},"model":[1])", R"(,"type":"user","type":"assistant")"}) {
    Claude claude;
    EXPECT_TRUE(claude.line(ClaudeText{.extra = extra}.text())) << extra;
    EXPECT_EQ(claude.last().counts.output, 2) << extra;
  }
  EXPECT_TRUE(Claude().line(ClaudeText{}.text() + " \r"));
  Claude claude;
  EXPECT_TRUE(claude.line(ClaudeText{.usage = R"("input_tokens":null,"input_tokens":1,"output_tokens":4,)"
                                              R"("output_tokens":null,"cache_creation":null)"}
                              .text()));
  EXPECT_EQ(claude.last().counts, (Counts{.input = 1}));
}

TEST(ClaudeLineTests, theKeyIsMessageAndRequest) {
  const auto key = [](const std::string& line) { return messageKey(line); };
  EXPECT_EQ(key(R"({"id":"msg_a","requestId":"r"})"), fnv1a("msg_a:r"));
  EXPECT_EQ(key(R"({"id":"msg_a"})"), fnv1a("msg_a:"));
  EXPECT_EQ(key(R"({"id":"msg_a","requestId":"r)"), fnv1a("msg_a:"));
  EXPECT_EQ(key(R"({"id":"msg_","requestId":"r"})"), fnv1a("msg_:r"));
  EXPECT_EQ(key(R"({"id":"msg_a)"), std::nullopt);
  EXPECT_EQ(key(R"({"id":"chat_a","requestId":"r"})"), std::nullopt);
  EXPECT_EQ(fnv1a(""), 0xcbf29ce484222325);
  EXPECT_EQ(fnv1a("foobar"), 0x85944171f73967e8);
}

TEST(ClaudeLineTests, anUndecodableLineSpendsItsKey) {
  Claude claude;
  EXPECT_FALSE(claude.line(ClaudeText{}.text() + "}"));
  ASSERT_EQ(claude.batch.events.size(), 1u);
  EXPECT_FALSE(claude.last().counted);
  EXPECT_FALSE(claude.line(ClaudeText{}.text())) << "the same message again";
  EXPECT_EQ(claude.batch.events.size(), 1u);
  EXPECT_TRUE(claude.line(ClaudeText{.id = "chat_1"}.text()));
  EXPECT_TRUE(claude.line(ClaudeText{.id = "chat_1"}.text())) << "without an id every line counts";
}

TEST(ClaudeLineTests, linesAreDatedInTheLocalZone) {
  const FakeTimeZone west(-5 * 3'600);
  Claude there(west), here;
  const auto text = ClaudeText{.timestamp = "2025-03-01T00:30:00Z"}.text();
  there.line(text);
  here.line(text);
  EXPECT_EQ(dayText(there.last().day), "2025-02-28");
  EXPECT_EQ(dayText(here.last().day), "2025-03-01");
}

TEST(CodexLineTests, countsWhatTheLastTurnUsed) {
  Codex codex;
  EXPECT_FALSE(codex.line(CodexText::context("gpt-5.5", "/home/ann/code/api")));
  ASSERT_TRUE(codex.line(CodexText{.last = R"("input_tokens":50,"cached_input_tokens":20,)"
                                           R"("cache_write_input_tokens":3,"output_tokens":7)"}
                             .text()));
  EXPECT_EQ(codex.last().counts, (Counts{30, 7, 3, 0, 20}));
  EXPECT_EQ(*codex.last().model, "gpt-5.5");
  EXPECT_EQ(*codex.last().project, "api");
  EXPECT_FALSE(codex.last().key);
  EXPECT_EQ(codex.file, (FileState{.lastTotal = 100, .model = "gpt-5.5", .project = "api"}));
}

TEST(CodexLineTests, aRepeatedRunningTotalAddsNothing) {
  Codex codex;
  EXPECT_TRUE(codex.line(CodexText{.total = 100}.text()));
  EXPECT_FALSE(codex.line(CodexText{.total = 100}.text()));
  EXPECT_TRUE(codex.line(CodexText{.total = 90}.text()));
  EXPECT_FALSE(codex.line(CodexText{.timestamp = "short", .total = 80}.text()));
  EXPECT_EQ(codex.file.lastTotal, 90) << "a line without a day leaves the state alone";
}

TEST(CodexLineTests, withoutAContextModelAndProjectAreUnknown) {
  Codex codex;
  ASSERT_TRUE(codex.line(CodexText{.last = R"("input_tokens":5,"cached_input_tokens":9)"}.text()));
  EXPECT_EQ(*codex.last().model, "unknown");
  EXPECT_EQ(*codex.last().project, "Home");
  EXPECT_EQ(codex.last().counts, (Counts{.cacheRead = 9})) << "more cached than sent";
}

TEST(CodexLineTests, anythingElseIsSkipped) {
  const std::pair<const char*, std::string> rows[] = {
      {"another event",
       R"({"timestamp":"2026-03-01T12:00:00Z","type":"event_msg","payload":{"type":"turn_count"}})"},
      {"no payload", R"({"type":"token_count","timestamp":"2026-03-01T12:00:00Z"})"},
      {"needle of a context only", R"({"type":"event_msg","payload":{"type":"turn_context","model":"m"}})"},
      {"no info", R"({"timestamp":"2026-03-01T12:00:00Z","payload":{"type":"token_count","info":null}})"},
      {"no total",
       R"({"timestamp":"2026-03-01T12:00:00Z","payload":{"type":"token_count","info":{"last_token_usage":{}}}})"},
      {"broken limits", CodexText{.limits = R"({"primary":{"used_percent":"1"}})"}.text()},
      {"broken tail", CodexText{}.text() + "]"}};
  for (const auto& [name, text] : rows) {
    Codex codex;
    EXPECT_FALSE(codex.line(text)) << name;
    EXPECT_EQ(codex.file, FileState{}) << name;
    EXPECT_FALSE(codex.batch.limits) << name;
  }
}

TEST(CodexLineTests, theNewestLimitsAreKeptWhateverTheOrder) {
  const auto line = [](const char* time, double used) {
    return CodexText{.timestamp = time,
                     .limits = fmt::format(R"({{"primary":{{"used_percent":{},"window_minutes":300,)"
                                           R"("resets_at":1772380000.5}},"secondary":{{"used_percent":1}},)"
                                           R"("plan_type":"pro"}})",
                                           used)}
        .text();
  };
  Codex codex;
  codex.line(line("2026-03-01T12:10:00Z", 40));
  codex.line(line("2026-03-01T12:00:00Z", 20));
  ASSERT_TRUE(codex.batch.limits);
  EXPECT_EQ(*codex.batch.limits,
            (AICodexLimits{{1'772'367'000}, "pro", AIPlanLimit{40, 300, {1'772'380'000.5}}, std::nullopt}));
  codex.line(
      line("2026-03-01T12:10:00Z", 41)); // an equal date replaces, and so does a line that adds nothing
  EXPECT_EQ(codex.batch.limits->primary->usedPercent, 41);
  codex.line(line("short", 99));
  EXPECT_EQ(codex.batch.limits->primary->usedPercent, 41);
}

TEST(LineRulesTests, aBlockOfLinesIsEveryLineOfIt) {
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    std::string block;
    std::vector<std::string> lines;
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
      lines.push_back(choices[random() % std::size(choices)]);
      block += lines.back() + "\n";
    }
    Claude claude, claudeByLine;
    Codex codex, codexByLine;
    LineTools tools(utc, "/home/ann");
    ClaudeLines(tools, claude.batch).lines(PaddedLine(block));
    CodexLines(tools, codex.batch, codex.file).lines(PaddedLine(block));
    for (const auto& line : lines) {
      claudeByLine.line(line);
      codexByLine.line(line);
    }
    const auto same = [](const EventBatch& a, const EventBatch& b) {
      return std::equal(a.events.begin(), a.events.end(), b.events.begin(), b.events.end(),
                        [](const UsageEvent& x, const UsageEvent& y) {
                          return x.key == y.key && x.counted == y.counted && x.counts == y.counts &&
                                 (x.model ? *x.model : "") == (y.model ? *y.model : "") &&
                                 (x.project ? *x.project : "") == (y.project ? *y.project : "");
                        });
    };
    EXPECT_TRUE(same(claude.batch, claudeByLine.batch));
    EXPECT_TRUE(same(codex.batch, codexByLine.batch));
    EXPECT_EQ(codex.file, codexByLine.file);
    EXPECT_FALSE(claude.batch.events.empty() && codex.batch.events.empty());
  }
}

TEST(NamesTests, projects) {
  struct Row {
    const char *cwd, *expected;
  };
  const Row rows[] = {{"/Users/ann/code/shop", "shop"},
                      {"/Users/ann/code/shop/", "shop"},
                      {"/Users/ann/code/shop/.claude/worktrees/fix-1", "shop"},
                      {"/Users/ann/code/shop/.claude/worktrees", "shop"},
                      {"/Users/ann/.claude/worktrees/x", "Home"},
                      {"/Users/ann/worktrees/fix-1/src", "fix-1"},
                      {"/worktrees/a/.claude/worktrees/b", "a"},
                      {"/Users/ann/worktrees", "worktrees"},
                      {"/.claude/worktrees/b", "Home"},
                      {"/Users/ann", "Home"},
                      {"//Users//ann/", "Home"},
                      {"/", "Home"},
                      {"C:\\work", "C:\\work"}};
  for (const auto& row : rows) EXPECT_EQ(projectName(row.cwd, "", "/Users/ann"), row.expected) << row.cwd;
  for (const auto& cwd : {std::optional<std::string_view>(), std::optional<std::string_view>("")}) {
    EXPECT_EQ(projectName(cwd, "-Users-ann-code-shop", "/Users/ann"), "shop");
    EXPECT_EQ(projectName(cwd, "---", "/Users/ann"), "Home");
  }
}

TEST(NamesTests, modelsLoseVariantAndDate) {
  const std::pair<const char*, const char*> rows[] = {{"claude-sonnet-4-5-20250929", "claude-sonnet-4-5"},
                                                      {"claude-opus-4-6[1m]", "claude-opus-4-6"},
                                                      {"claude-opus-4-6-20260101[1m]", "claude-opus-4-6"},
                                                      {"claude-opus-4-6-2026010", "claude-opus-4-6-2026010"},
                                                      {"claude-x-202601011", "claude-x-202601011"},
                                                      {"claude-x-2026o101", "claude-x-2026o101"},
                                                      {"-20250929", ""}};
  for (const auto& [model, expected] : rows) EXPECT_EQ(normalizedModel(model), expected);
}

TEST(NamesTests, instantsAreReadByPosition) {
  EXPECT_EQ(logInstant("2025-01-31T12:34:56.789Z"), 1'738'326'896);
  EXPECT_EQ(logInstant("2025-01-31 12:34:56+09:00"), 1'738'326'896) << "the zone is not looked at";
  EXPECT_EQ(logInstant("2024-02-29x23x59x60"), 1'709'251'200);
  EXPECT_EQ(logInstant("2025-01-31T12:34:5"), std::nullopt);
  EXPECT_EQ(logInstant(std::nullopt), std::nullopt);
}

} // namespace
} // namespace korvell
