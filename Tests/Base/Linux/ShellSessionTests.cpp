// An interactive shell in the background of a terminal stops itself: programs are started away from it.

#include "Base/Shell.h"

#include <gtest/gtest.h>

using namespace korvell;

TEST(Shell, theProgramHasASessionOfItsOwnAndNoTerminal) {
  const auto result =
      Shell::run("/bin/sh",
                 {"-c", "read pid name state parent group session terminal rest < /proc/$$/stat; echo "
                        "$((session - pid)) $((group - pid)) $terminal"},
                 Seconds{60});
  EXPECT_EQ(result.value_or(ShellResult{}).output, "0 0 0\n");
}
