#include "App/Keeper.h"

#include "App/KeeperActions.h"
#include "App/ModelParts.h"

#include <utility>

namespace korvell {

Value refusal(std::string_view reason) { return Value::object({{"ok", false}, {"error", reason}}); }

Keeper::Keeper(Queue& main, AppModel& model) : main_(main), model_(model) { addModelActions(*this, model); }

Keeper::~Keeper() {
  server_.reset();
  life_.cut();
}

bool Keeper::listen(const std::string& socketPath) {
  const auto handOver = [&main = main_, watch = life_.watch()](std::string line, LineServer::Reply reply) {
    // Read on the socket's thread: the main queue sees well-formed requests only.
    auto request = parseJSON(line);
    if (!request || !request->asObject()) return reply(dumpJSON(refusal("not a JSON object")));
    main.async([watch, request = std::move(*request), reply = std::move(reply)] {
      if (auto* keeper = watch.get())
        keeper->handle(request, [reply](const Value& answer) { reply(dumpJSON(answer)); });
    });
  };
  server_ = LineServer::listen(socketPath, handOver, {}, isSameUser);
  return server_ != nullptr;
}

void Keeper::handle(const Value& request, Answer answer) {
  const auto* ask = request.find("ask");
  if (ask && ask->asString() && *ask->asString() == "state") return answerState(request, answer);
  const auto* what = request.find("do");
  const auto action = what && what->asString() ? actions_.find(*what->asString()) : actions_.end();
  if (action == actions_.end()) return answer(refusal("unknown request"));
  action->second(request, std::move(answer));
}

void Keeper::answerState(const Value& request, const Answer& answer) const {
  Value state = Value::object({{"ok", true}});
  const auto told = stateValue(model_, request.find("parts"));
  for (const auto& [name, value] : *told.asObject()) state.set(name, value);
  answer(std::move(state));
}

} // namespace korvell
