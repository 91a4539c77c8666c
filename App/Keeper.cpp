#include "App/Keeper.h"

#include "App/KeeperActions.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

struct Part {
  std::string_view name;
  Value (*value)(const AppModel&);
};

Value liveValue(const AppModel& model) {
  Value live = Value::object();
  for (const auto& [metric, points] : *model.live) live.set(rawValue(metric), toValue(points));
  return live;
}

Value aiUsageValue(const AppModel& model) {
  const auto* store = model.aiUsage();
  if (!store) return {};
  auto value = summaryValue(*store->summary, store->zone());
  value.set("isScanning", *store->isScanning);
  return value;
}

// The parts of a state, in the order in which they are printed.
constexpr Part parts[] = {
    {"snapshot", [](const AppModel& model) { return toValue(*model.snapshot); }},
    {"privileged",
     [](const AppModel& model) { return *model.privileged ? toValue(**model.privileged) : Value(); }},
    {"sensors", [](const AppModel& model) { return *model.sensors ? toValue(**model.sensors) : Value(); }},
    {"peripherals", [](const AppModel& model) { return toValue(*model.peripherals); }},
    {"projects", [](const AppModel& model) { return toValue(*model.projects); }},
    {"startupItems", [](const AppModel& model) { return toValue(*model.startupItems); }},
    {"report", [](const AppModel& model) { return *model.hasSample ? reportValue(*model.report) : Value(); }},
    {"alerts", [](const AppModel& model) { return toValue(*model.alerts); }},
    {"aiUsage", aiUsageValue},
    {"totals", [](const AppModel& model) { return toValue(*model.totals); }},
    {"live", liveValue},
};

bool isWanted(const Value* wanted, std::string_view name) {
  const auto* names = wanted ? wanted->asArray() : nullptr;
  return !names || std::any_of(names->begin(), names->end(), [&](const Value& value) {
    return value.asString() && *value.asString() == name;
  });
}

} // namespace

Value refusal(std::string_view reason) { return Value::object({{"ok", false}, {"error", reason}}); }

Keeper::Keeper(Queue& main, AppModel& model)
    : main_(main), model_(model), self_(std::make_shared<Keeper*>(this)) {
  addModelActions(*this, model);
}

Keeper::~Keeper() {
  server_.reset();
  self_.reset();
}

bool Keeper::listen(const std::string& socketPath) {
  const auto handOver = [&main = main_, weak = std::weak_ptr(self_)](std::string line,
                                                                     LineServer::Reply reply) {
    // Read on the socket's thread: the main queue sees well-formed requests only.
    auto request = parseJSON(line);
    if (!request || !request->asObject()) return reply(dumpJSON(refusal("not a JSON object")));
    main.async([weak, request = std::move(*request), reply = std::move(reply)] {
      if (const auto self = weak.lock())
        (*self)->handle(request, [reply](const Value& answer) { reply(dumpJSON(answer)); });
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
  Value state = Value::object({{"ok", true}, {"hasSample", *model_.hasSample}});
  const Value* wanted = request.find("parts");
  for (const Part& part : parts) {
    if (!isWanted(wanted, part.name)) continue;
    if (auto value = part.value(model_); !value.isNull()) state.set(part.name, std::move(value));
  }
  answer(std::move(state));
}

} // namespace korvell
