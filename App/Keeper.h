#pragma once
// What the keeper answers on its socket, one JSON object a line in both directions:
//
//   {"ask":"state"}                        everything that is published, each part under its name
//   {"ask":"state","parts":["projects"]}   only these parts
//   {"ask":"subscription","parts":[…],"watching":true}
//                                          the same, and from then on what each cycle changed, a line a
//                                          cycle; the fast pace while somebody watches
//   {"ask":"actions"}                      the names of the actions
//   {"ask":"consent","of":{"do":"NAME", …}}
//                                          a person at the screen, where there is one; see ConsentDesk.h
//   {"describe":"NAME", …}                 what an action would do; see KeeperActions.h
//   {"do":"NAME", …}                       does it
//
// An answer is {"ok":true, …} or {"ok":false,"error":"…"}. Asking changes nothing else. A subscriber that is
// late with fetching a line misses cycles, not changes, and is dropped after ten seconds. Lives on the main
// queue; the socket's thread only hands lines over. Destroyed before the model.

#include "App/Actions.h"
#include "App/AppModel.h"
#include "App/LineServer.h"
#include "App/ModelParts.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace korvell {

class Keeper {
public:
  using Answer = std::function<void(Value)>;
  /// Does what a request asks, on the main queue, and answers once, on the main queue.
  using Action = std::function<void(const Value& request, Answer answer)>;

  /// Both outlive it.
  Keeper(Queue& main, AppModel& model, Actions& actions);
  ~Keeper();
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;

  /// Starts to answer; false when the socket can't be made, and then the keeper works without.
  bool listen(const std::string& socketPath);
  /// Teaches the keeper an action of its process for {"do":"NAME", …}, beside the actions of all.
  void addAction(std::string name, Action action) { own_[std::move(name)] = std::move(action); }
  /// Puts a request to a person; the question goes with what it hands back.
  using AskPerson = std::function<std::shared_ptr<void>(const Value& request, Answer answer)>;
  /// Where somebody can be asked at the screen of this process. A question goes when who asked has gone.
  void setAskPerson(AskPerson ask) { askPerson_ = std::move(ask); }
  /// Answers a request as if it had come through the socket; subscriptions and questions need the
  /// socket.
  void handle(const Value& request, Answer answer);

private:
  struct Subscriber {
    LineServer::Peer peer;
    PartSelection parts;
    ToldVersions told;
    bool isWatching;
  };
  void receive(const Value& request, const LineServer::Peer& peer);
  void subscribe(const Value& request, const LineServer::Peer& peer);
  void consult(const Value& request, const LineServer::Peer& peer);
  void pushCycle();
  void countOnlookers();
  Value names() const;

  Queue& main_;
  AppModel& model_;
  Actions& actions_;
  std::map<std::string, Action, std::less<>> own_;
  AskPerson askPerson_; ///< null where nobody can be asked
  std::map<std::int64_t, std::shared_ptr<void>> questions_;
  std::int64_t lastQuestion_ = 0;
  std::vector<Subscriber> subscribers_;
  Subscription cycles_;
  Lifeline<Keeper> life_{*this};
  std::unique_ptr<LineServer> server_;
};

/// {"ok":false,"error":reason}
Value refusal(std::string_view reason);

} // namespace korvell
