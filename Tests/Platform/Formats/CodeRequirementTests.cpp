#include "Platform/Formats/CodeRequirement.h"

#include <gtest/gtest.h>

using namespace korvell;

TEST(CodeRequirement, pinsTheTeamWhereThereIsOne) {
  EXPECT_EQ(
      CodeRequirement::forHelper("AB12CD34EF"),
      "anchor apple generic and identifier \"com.korvell.Korvell.Helper\" and certificate leaf[subject.OU] = "
      "\"AB12CD34EF\"");
  EXPECT_EQ(CodeRequirement::forHelper(std::nullopt), "identifier \"com.korvell.Korvell.Helper\"");
  EXPECT_EQ(CodeRequirement::forApplication(std::nullopt), "identifier \"com.korvell.Korvell\"");
}

TEST(CodeRequirement, aTeamCannotChangeWhatItSays) {
  for (const char* team : {"", "A\" or anchor apple or identifier \"x", "AB 12", "AB\\", "AB\n", "ÄB"})
    EXPECT_FALSE(CodeRequirement::forHelper(team)) << team;
}
