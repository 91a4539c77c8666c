#include "Tool/Confirmation.h"

#include "CommandFixture.h"

namespace korvell {
namespace {

using Kind = Option::Kind;
using testing::HasSubstr;

int echo(Context& context, const Arguments& arguments) {
  context.out.line("limit " + std::to_string(arguments.number("--limit").value_or(-1)));
  context.out.line("by " + arguments.text("--by").value_or("none"));
  for (const auto& kind : arguments.list("--kind")) context.out.line("kind " + kind);
  if (arguments.flag("--json")) context.out.line("json");
  context.out.line("who " + arguments.text("WHO").value_or("nobody"));
  return exitOK;
}

int ask(Context& context, const Arguments& arguments) {
  return confirmed(context, arguments, "Everything will go.") ? exitOK : exitFailed;
}

int refuse(Context& context, const Arguments&) {
  fail(context, "first");
  return fail(context, "second");
}

struct CommandLineTests : CommandFixture {
  const std::vector<Command> commands = {
      {"echo",
       "Says what it was given",
       {jsonOption(),
        {"--limit", Kind::number, "How many"},
        {"--by", Kind::text, "Order", {"cpu", "memory"}},
        {"--kind", Kind::list, "Kinds"},
        {"WHO", Kind::positional, "Whom"}},
       echo},
      {"outer",
       "Runs, and has a part",
       {jsonOption(), {"--limit", Kind::number, "How many"}},
       echo,
       {{"inner", "Its part", {jsonOption()}, echo}}},
      {"group",
       "Has parts",
       {},
       nullptr,
       {{"ask", "Asks first", {yesOption()}, ask}, {"refuse", "Fails", {jsonOption()}, refuse}}}};
  int run(const std::vector<std::string>& arguments) { return CommandFixture::run(commands, arguments); }
};

TEST_F(CommandLineTests, valuesArriveTyped) {
  EXPECT_EQ(run({"echo", "--limit", "5", "--by", "memory", "--kind", "a", "--kind", "b c", "--json", "me"}),
            exitOK);
  EXPECT_EQ(output, "limit 5\nby memory\nkind a\nkind b c\njson\nwho me\n");
  EXPECT_EQ(run({"outer", "--json", "inner"}), exitOK);
  EXPECT_THAT(output, testing::HasSubstr("json\n")) << "what stands before the part counts for it";
}

TEST_F(CommandLineTests, mistakesEndWithTwoAndSayWhy) {
  const std::vector<std::vector<std::string>> mistakes = {{"nonsense"},
                                                          {"echo", "--nonsense"},
                                                          {"echo", "--limit", "many"},
                                                          {"echo", "--limit", "-3"},
                                                          {"echo", "--limit", "99999999999999999999"},
                                                          {"echo", "--by", "size"},
                                                          {"outer", "--limit", "3", "inner"},
                                                          {"echo", "--limit"},
                                                          {"group"},
                                                          {"group", "nonsense"}};
  for (const auto& arguments : mistakes) {
    EXPECT_EQ(run(arguments), exitUsage) << arguments.back();
    EXPECT_EQ(output, "") << arguments.back();
    EXPECT_THAT(errors, testing::StartsWith("korvell: ")) << arguments.back();
  }
  run({"echo", "me", "one", "two\x1b"});
  EXPECT_THAT(errors, testing::StartsWith("korvell: Not expected here: one two\\x1b.\n"));
}

TEST_F(CommandLineTests, aFlagTakesNoValue) {
  for (const auto* value : {"=false", "=true", "=nonsense", "=", "=1", "={}"}) {
    EXPECT_EQ(run({"group", "ask", std::string("--yes") + value}), exitUsage) << value;
    EXPECT_THAT(errors, testing::StartsWith("korvell: --yes takes no value.\nRun korvell group ask --help"));
    EXPECT_EQ(run({"outer", std::string("--json") + value, "inner"}), exitUsage) << value;
    EXPECT_EQ(output, "{\"error\":\"--json takes no value.\"}\n") << "whoever writes that reads JSON";
    EXPECT_EQ(run({"echo", std::string("--help") + value}), exitUsage) << value;
    EXPECT_EQ(run({std::string("--version") + value}), exitUsage) << value;
  }
  EXPECT_EQ(run({"echo", "--kind", "--json=1", "--kind=--json=2", "--", "--json=3"}), exitOK);
  EXPECT_THAT(output, HasSubstr("kind --json=1\nkind --json=2\nwho --json=3\n")) << "values of others";
  EXPECT_EQ(run({"echo", "WHO", "--json=1"}), exitUsage) << "no option, though it is called like one";
}

TEST_F(CommandLineTests, mistakesSuggestWhatWasMeantAndWhereToRead) {
  struct Row {
    std::vector<std::string> arguments;
    const char *meant, *help; ///< null: nothing is near
  };
  for (const auto& [arguments, meant, help] :
       {Row{{"ehco"}, "echo", "korvell"}, Row{{"ech"}, "echo", "korvell"}, Row{{"zzz"}, nullptr, "korvell"},
        Row{{"echo", "--limt", "3"}, "--limit", "korvell echo"},
        Row{{"echo", "--JSON=1"}, "--json", "korvell echo"},
        Row{{"echo", "--by", "memroy"}, "memory", "korvell echo"},
        Row{{"group", "as"}, "ask", "korvell group"},
        Row{{"group", "ask", "--yse"}, "--yes", "korvell group ask"},
        Row{{"help", "group", "aks"}, "ask", "korvell group"}}) {
    EXPECT_EQ(run(arguments), exitUsage) << arguments.back();
    EXPECT_THAT(errors, HasSubstr("Run " + std::string(help) + " --help for")) << arguments.back();
    if (meant)
      EXPECT_THAT(errors, HasSubstr("Did you mean " + std::string(meant) + "?")) << arguments.back();
    else
      EXPECT_THAT(errors, testing::Not(HasSubstr("Did you mean"))) << arguments.back();
  }
  EXPECT_EQ(run({"echo", "--by", "MEMORY"}), exitOK);
  EXPECT_THAT(output, HasSubstr("by memory\n")) << "as the choice is spelt";
}

TEST_F(CommandLineTests, failuresAreObjectsToo) {
  EXPECT_EQ(run({"group", "ask", "--json"}), exitUsage) << "it knows no such option";
  EXPECT_THAT(output, HasSubstr("{\"error\":\"Not expected here: --json."));
  EXPECT_EQ(run({"group", "refuse", "--json"}), exitFailed);
  EXPECT_EQ(output, "{\"error\":\"first\"}\n");
  EXPECT_EQ(errors, "korvell: first\nkorvell: second\n");
  EXPECT_EQ(run({"group", "refuse"}), exitFailed);
  EXPECT_EQ(output, "");
}

TEST(SpeaksToPrograms, whatIsForProgramsButNotItsHelp) {
  const std::vector<std::string> programs[] = {
      {"status", "--json"}, {"status", "--json=1"}, {"mcp"}, {"metrics", "--listen", "[::1]:9"}, {"bar"},
      {"complete", "st"}};
  const std::vector<std::string> people[] = {{}, {"status"}, {"mcp", "--help"}, {"servers", "mcp"}};
  for (const auto& arguments : programs) EXPECT_TRUE(speaksToPrograms(arguments)) << arguments.front();
  for (const auto& arguments : people)
    EXPECT_FALSE(speaksToPrograms(arguments)) << testing::PrintToString(arguments);
}

TEST_F(CommandLineTests, whatWritesNeedsAHomeFolder) {
  const std::vector<Command> writer = {
      writing({"note", "Writes", {}, [](Context&, const Arguments&) { return int(exitOK); }})};
  EXPECT_EQ(CommandFixture::run(writer, {"note"}), exitOK);
  host.folders.home = UserFolders::noHome;
  EXPECT_EQ(CommandFixture::run(writer, {"note"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("Nobody knows your home folder"));
  EXPECT_EQ(run({"echo"}), exitOK) << "what only reads goes on";
}

TEST_F(CommandLineTests, helpIsOfTheInnermostCommand) {
  EXPECT_EQ(run({"--help"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Says what it was given"));
  EXPECT_EQ(run({"group", "ask", "--help"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Usage: korvell group ask"));
  EXPECT_THAT(output, HasSubstr("--yes"));
  const auto asked = output;
  EXPECT_EQ(run({"help", "group", "ask"}), exitOK);
  EXPECT_EQ(output, asked);
  EXPECT_EQ(run({"help"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Says what it was given"));
  EXPECT_EQ(run({"echo", "--help"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Order: cpu, memory\n"));
  EXPECT_EQ(run({}), exitOK);
  EXPECT_THAT(output, HasSubstr("echo"));
}

TEST_F(CommandLineTests, peopleAreToldInTheirLanguageWhereProgramsReadTheOutput) {
  constexpr auto german = sortedTexts({{"{name}: the value is missing.", "{name}: Wert fehlt."},
                                       {"{option} takes no value.", "{option}: kein Wert."},
                                       {"REQUIRED", "(nötig)"},
                                       {"Its number", "Seine Zahl"}});
  const std::vector<Command> port = {
      {"port",
       "Tells the language",
       {{"PORT", Kind::positional, "Its number", {}, true}, {"--limit", Kind::number, "How many"}},
       [](Context& context, const Arguments&) {
         context.out.line(currentLanguage().code);
         return int(exitOK);
       }}};
  setLanguages({{.code = "en"}, {.code = "de", .tables = {german}}});
  context.language = "de";
  EXPECT_EQ(CommandFixture::run(port, {"port", "--limit"}), exitUsage);
  EXPECT_THAT(errors, testing::StartsWith("korvell: --limit: Wert fehlt.\n"));
  EXPECT_EQ(CommandFixture::run(port, {"port", "7"}), exitOK);
  EXPECT_EQ(output, "en\n");
  setLanguages({{.code = "de", .tables = {german}}});
  EXPECT_EQ(CommandFixture::run(port, {"help", "port"}), exitOK);
  EXPECT_THAT(output, HasSubstr("\n  PORT (nötig)            Seine Zahl\n")) << "in columns, not in bytes";
  EXPECT_EQ(CommandFixture::run(port, {"help", "help"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Usage: korvell help [OPTIONS] [COMMAND]"));
  setLanguages({});
}

TEST_F(CommandLineTests, withoutATerminalNothingIsConfirmedUnlessYes) {
  EXPECT_EQ(run({"group", "ask"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("Everything will go."));
  EXPECT_EQ(run({"group", "ask", "--yes"}), exitOK);
}

} // namespace
} // namespace korvell
