#include "App/Keeper.h"

#include "App/KeeperActions.h"

#include <algorithm>
#include <utility>

namespace korvell {

Value refusal(std::string_view reason) { return Value::object({{"ok", false}, {"error", reason}}); }

namespace {

bool isAsking(const Value& request, std::string_view what) {
  const auto* ask = request.find("ask");
  return ask && ask->asString() && *ask->asString() == what;
}

Value accepted(const Value& members) {
  Value answer = Value::object({{"ok", true}});
  for (const auto& [name, value] : *members.asObject()) answer.set(name, value);
  return answer;
}

} // namespace

Keeper::Keeper(Queue& main, AppModel& model, Actions& actions)
    : main_(main), model_(model), actions_(actions),
      cycles_(model.cycle.observe([this](std::int64_t) { pushCycle(); })) {}

Keeper::~Keeper() {
  server_.reset();
  life_.cut();
}

bool Keeper::listen(const std::string& socketPath) {
  const auto handOver = [&main = main_, watch = life_.watch()](std::string line, LineServer::Peer peer) {
    // Read on the socket's thread: the main queue sees well-formed requests only.
    auto request = parseJSON(line);
    if (!request || !request->asObject()) return peer.answer(dumpJSON(refusal("not a JSON object")));
    main.async([watch, request = std::move(*request), peer = std::move(peer)] {
      if (auto* keeper = watch.get()) keeper->receive(request, peer);
    });
  };
  server_ = LineServer::listen(socketPath, handOver, {}, isSameUser);
  return server_ != nullptr;
}

void Keeper::receive(const Value& request, const LineServer::Peer& peer) {
  if (isAsking(request, "subscription")) return subscribe(request, peer);
  if (isAsking(request, "consent") && askPerson_) return consult(request, peer);
  handle(request, [peer](const Value& answer) { peer.answer(dumpJSON(answer)); });
}

void Keeper::handle(const Value& request, Answer answer) {
  if (isAsking(request, "state")) return answer(accepted(PartSelection::of(request).state(model_)));
  if (isAsking(request, "actions")) return answer(accepted(names()));
  if (isActionRequest(request)) return carryOut(actions_, request, std::move(answer));
  const auto* what = request.find("do");
  const auto action = what && what->asString() ? own_.find(*what->asString()) : own_.end();
  if (action == own_.end()) return answer(refusal(unknownRequest));
  action->second(request, std::move(answer));
}

Value Keeper::names() const {
  Value names = Value::array();
  for (const auto name : actionNames()) names.append(name);
  for (const auto& [name, action] : own_) names.append(name);
  return Value::object({{"actions", std::move(names)}});
}

void Keeper::subscribe(const Value& request, const LineServer::Peer& peer) {
  const auto* watching = request.find("watching");
  Subscriber subscriber{peer, PartSelection::of(request), {}, watching && watching->asBool() == true};
  const auto ignored = subscriber.parts.changes(model_, subscriber.told); // the state has them all
  peer.subscribe(dumpJSON(accepted(subscriber.parts.state(model_))));
  subscribers_.push_back(std::move(subscriber));
  countOnlookers();
}

void Keeper::consult(const Value& request, const LineServer::Peer& peer) {
  const auto number = ++lastQuestion_;
  // Later: it may be the question itself that ends with this.
  const auto end = [&main = main_, watch = life_.watch(), number] {
    main.async([watch, number] {
      if (auto* keeper = watch.get()) keeper->questions_.erase(number);
    });
  };
  questions_[number] = askPerson_(request, [peer, end](const Value& answer) {
    peer.answer(dumpJSON(answer));
    end();
  });
  peer.whenGone(end);
}

void Keeper::pushCycle() {
  const auto isGone = [this](Subscriber& subscriber) {
    auto told = subscriber.told;
    const auto changes = subscriber.parts.changes(model_, told);
    const auto pushed = subscriber.peer.push(dumpJSON(changes));
    if (pushed == LineServer::Pushed::taken) subscriber.told = std::move(told);
    return pushed == LineServer::Pushed::gone;
  };
  if (std::erase_if(subscribers_, isGone) > 0) countOnlookers();
}

void Keeper::countOnlookers() {
  model_.setOnlookers(std::size_t(std::ranges::count_if(subscribers_, &Subscriber::isWatching)));
}

} // namespace korvell
