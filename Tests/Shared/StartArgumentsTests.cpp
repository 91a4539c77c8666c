#include "Shared/StartArguments.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::optional<StartAnswer> answer(std::vector<const char*> arguments) {
  return startAnswer(StartArguments::of(arguments), "korvell-app", "1.2", "Shows it.", "[URL]...");
}

TEST(StartArgumentsTests, addressesAreWhatTheToolkitLeaves) {
  const char* const words[] = {"-platform", "offscreen", "korvell:cpu", "--style=fusion",
                               "-reverse",  "--",        "-x"};
  const auto read = StartArguments::of(words);
  EXPECT_THAT(read.addresses, ElementsAre("korvell:cpu", "-x"));
  EXPECT_FALSE(read.unknown);
  EXPECT_FALSE(answer({"-platform", "--help"})) << "a value of the toolkit's option";
  EXPECT_FALSE(answer({}));
}

TEST(StartArgumentsTests, questionsAreAnsweredAndStrangeOptionsRefused) {
  EXPECT_EQ(answer({"--version"})->text, "korvell-app 1.2\n");
  for (const auto* help : {"--help", "-h"}) {
    EXPECT_THAT(answer({help})->text, HasSubstr("Shows it.\nUsage: korvell-app [OPTIONS] [URL]...\n"));
    EXPECT_EQ(answer({help})->exitStatus, 0);
  }
  for (const auto* strange : {"--nonsense", "-x", "--help=1", "-", "--reverse=1", "--\x1b"}) {
    EXPECT_EQ(answer({"korvell:cpu", strange})->exitStatus, 2) << strange;
    EXPECT_THAT(answer({strange, "--help"})->text, HasSubstr("\nRun korvell-app --help")) << strange;
  }
  EXPECT_THAT(answer({"--\x1b"})->text, HasSubstr("Not expected here: --\\x1b."));
}

} // namespace
} // namespace korvell
