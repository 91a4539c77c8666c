#pragma once
// A command run as a user meets it, in a home of its own, beside no keeper or one that the test plays.

#include "Tests/App/PlayedKeeper.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tool/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

struct KeeperFixture : testing::Test {
  using Answer = PlayedKeeper::Answer;

  TemporaryFolder folder;
  Host host;
  FakeClock clock;
  int columns = 80;
  Seconds patience{20};
  std::string out, err; ///< of the last run

  KeeperFixture() {
    host.folders.home = folder.path().string();
    host.folders.data = folder / "data";
    host.machine = std::make_unique<FakeMachineCounters>();
  }
  /// Answers on the keeper's own thread.
  void playKeeper(Answer answer, bool isSilent = false) {
    keeper.play(host.folders, std::move(answer), isSilent);
  }
  int run(const std::vector<std::string>& arguments) {
    out.clear();
    err.clear();
    Terminal outTerminal(out, columns), errTerminal(err, columns);
    Context context{host,        clock,       [](std::string_view) { return std::optional<std::string>(); },
                    outTerminal, errTerminal, nullptr,
                    patience};
    return runCommandLine(context, allCommands(), arguments);
  }

  PlayedKeeper keeper;
  PlayedActions& actions = keeper.actions;
  std::vector<std::string>& orders = keeper.orders; ///< what the keeper was told to do, as lines
};

} // namespace korvell
