#include "CommandFixture.h"
#include "Tool/Completion.h"
#include "Tool/ManPage.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::HasSubstr;

int doNothing(Context&, const Arguments&) { return exitOK; }

std::vector<Suggestion> fruit(Context&) { return {{"apple: red", "a\tfruit"}, {"bad\nname"}, {"pear"}}; }

struct CompletionTests : CommandFixture {
  const std::vector<Command> commands{
      {"draw",
       "Draw",
       {{"FRUIT", Option::Kind::positional, "", {}, true, fruit},
        {"SIZE", Option::Kind::positional, "", {"big", "small"}},
        {"--ink", Option::Kind::text, "Which ink", {"red", "green"}},
        {"--to", Option::Kind::text, "A file", {}, false, nullptr, true},
        {"--layer", Option::Kind::list, "Layers", {"top"}},
        {"--fast", Option::Kind::flag, "Hurry"}},
       doNothing},
      {"keep", "Keep", {{"--json", Option::Kind::flag, "JSON"}}, doNothing, {{"all", "All", {}, doNothing}}}};

  std::vector<std::string> values(const std::vector<std::string>& words) {
    std::vector<std::string> found;
    for (const auto& candidate : completions(context, commands, words).candidates)
      found.push_back(candidate.value);
    return found;
  }
};

TEST_F(CompletionTests, whatCouldStandThere) {
  const struct {
    std::vector<std::string> words, candidates;
  } rows[] = {
      {{""}, {"draw", "keep", "help"}},
      {{"-"}, {"--help", "--version"}},
      {{"help", ""}, {"draw", "keep"}},
      {{"help", "draw", ""}, {}},
      {{"keep", ""}, {"all"}},
      {{"keep", "--json", ""}, {"all"}},
      {{"keep", "all", ""}, {"--help"}},
      {{"keep", "all", "x"}, {}},
      {{"draw", ""}, {"apple: red", "bad\nname", "pear"}},
      {{"draw", "pear", ""}, {"big", "small"}},
      {{"draw", "--fast", "--ink", "red", "pear", ""}, {"big", "small"}},
      {{"draw", "--ink=red", "pear", ""}, {"big", "small"}},
      {{"draw", "--ink", "=", ""}, {"red", "green"}},
      {{"draw", "--ink", ""}, {"red", "green"}},
      {{"draw", "--ink=r"}, {"--ink=red", "--ink=green"}},
      {{"draw", "--fast=r"}, {}},
      {{"draw", "--ink", "red", "--layer", "top", "--fast", "-"}, {"--to", "--layer", "--help"}},
      {{"draw", "--", "pear", "-"}, {"big", "small"}},
      {{"unknown", ""}, {"--help", "--version"}},
      {{"unknown", "d"}, {}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(values(row.words), row.candidates) << testing::PrintToString(row.words);
}

TEST_F(CompletionTests, oneLineACandidate) {
  EXPECT_EQ(run(commands, {"complete", "draw", ""}), exitOK);
  EXPECT_EQ(output, "apple: red\ta\\x09fruit\npear\n");
  EXPECT_EQ(run(commands, {"complete", "draw", "--to", "x"}), exitOK);
  EXPECT_EQ(output, ":files\n");
  EXPECT_EQ(run(commands, {"complete"}), exitOK);
  EXPECT_EQ(output, "draw\tDraw\nkeep\tKeep\nhelp\tPrint the help of a command\n");
  EXPECT_EQ(run(commands, {"complete", "draw", "--ink", "--help"}), exitOK);
  EXPECT_EQ(output, "red\ngreen\n") << "what was typed so far is no argument of ours";
}

TEST_F(CompletionTests, theManualHoldsTextsThatRoffWouldTakeForItsOwn) {
  const std::vector<Command> odd{
      {"say", "Say so. Then \\ stop", {{"--at", Option::Kind::text, ".dotted 'quoted'", {"one", "two"}}}}};
  const auto page = manPage(odd, "May 1, 2027");
  EXPECT_THAT(page, HasSubstr(".Ss say\nSay so.\nThen \\e stop.\n"));
  EXPECT_THAT(page, HasSubstr(".It Fl -at Ar TEXT\n\\&.dotted 'quoted'.\nOne of one and two.\n"));
}

} // namespace
} // namespace korvell
