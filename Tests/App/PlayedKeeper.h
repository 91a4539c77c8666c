#pragma once
// A keeper that a test plays: it holds the lock, listens on the socket and answers on its own thread.

#include "App/KeeperActions.h"
#include "App/KeeperLock.h"
#include "App/LineServer.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// What a played keeper says of the actions; without it that keeper knows none.
struct PlayedActions final : Actions {
  std::function<Result<DescribedAction>(const ActionRequest&)> describing;
  std::function<ActionAnswer(const ActionRequest&)> performing;

  void describe(const ActionRequest& request, Described done) override { done(describing(request)); }
  void perform(const ActionRequest& request, Performed done) override { done(performing(request)); }
};

class PlayedKeeper {
public:
  using Answer = std::function<Value(const Value& request)>;

  PlayedActions actions;
  std::vector<std::string> orders; ///< what it was told to do, as lines

  void play(const UserFolders& folders, Answer answer, bool isSilent = false) {
    auto acquired = KeeperLock::acquire(folders);
    ASSERT_TRUE(acquired);
    lock_.emplace(std::move(*acquired));
    server_ = LineServer::listen(
        keeperSocketPath(folders),
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
    ASSERT_TRUE(server_);
    lock_->announce(keeperSocketPath(folders));
  }

private:
  std::optional<KeeperLock> lock_;
  std::unique_ptr<LineServer> server_;
};

} // namespace korvell
