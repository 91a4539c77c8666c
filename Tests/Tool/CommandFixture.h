#pragma once
// A command as a user starts it, on a host that has nothing but what the test puts there.

#include "Tests/Fakes/FakeClock.h"
#include "Tool/Commands.h"

#include <gmock/gmock.h>

namespace korvell {

struct CommandFixture : testing::Test {
  FakeClock clock;
  Host host{};
  std::string output, errors; ///< of the last run
  Terminal out{output, 80}, err{errors, 80};
  Context context{host, clock, [](std::string_view) { return std::nullopt; }, out, err};

  int run(const std::vector<Command>& commands, const std::vector<std::string>& arguments) {
    output.clear();
    errors.clear();
    out = Terminal(output, 80);
    context.failure.reset();
    return runCommandLine(context, commands, arguments);
  }
};

} // namespace korvell
