#pragma once
// A command run as a user meets it, in a home of its own, beside no keeper or one that the test plays.

#include "App/KeeperActions.h"
#include "App/KeeperLock.h"
#include "App/LineServer.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tool/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

/// What a played keeper says of the actions; without it that keeper knows none.
struct PlayedActions final : Actions {
  std::function<Result<DescribedAction>(const ActionRequest&)> describing;
  std::function<ActionAnswer(const ActionRequest&)> performing;

  void describe(const ActionRequest& request, Described done) override { done(describing(request)); }
  void perform(const ActionRequest& request, Performed done) override { done(performing(request)); }
};

struct KeeperFixture : testing::Test {
  using Answer = std::function<Value(const Value& request)>;

  TemporaryFolder folder;
  Host host;
  FakeClock clock;
  int columns = 80;
  Seconds patience{20};
  PlayedActions actions;
  std::string out, err;            ///< of the last run
  std::vector<std::string> orders; ///< what the keeper was told to do, as lines

  KeeperFixture() {
    host.folders.home = folder.path().string();
    host.folders.data = folder / "data";
    host.machine = std::make_unique<FakeMachineCounters>();
  }
  /// Answers on the keeper's own thread.
  void playKeeper(Answer answer, bool isSilent = false) {
    auto acquired = KeeperLock::acquire(host.folders);
    ASSERT_TRUE(acquired);
    lock_.emplace(std::move(*acquired));
    keeper_ = LineServer::listen(
        keeperSocketPath(host.folders),
        [this, isSilent, answer = std::move(answer)](const std::string& line, const LineServer::Peer& peer) {
          const auto request = *parseJSON(line);
          if (request.find("do")) orders.push_back(line);
          if (isSilent) return;
          const auto* asked = request.find("ask");
          if (actions.performing && isActionRequest(request))
            carryOut(actions, request, [&](const Value& told) { peer.answer(dumpJSON(told)); });
          else if (actions.performing && asked && *asked == Value("actions"))
            peer.answer(R"({"ok":true,"actions":[]})");
          else
            peer.answer(dumpJSON(answer(request)));
        },
        {}, isSameUser);
    ASSERT_TRUE(keeper_);
    lock_->announce(keeperSocketPath(host.folders));
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

private:
  std::optional<KeeperLock> lock_;
  std::unique_ptr<LineServer> keeper_;
};

} // namespace korvell
