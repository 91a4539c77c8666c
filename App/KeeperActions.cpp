#include "App/KeeperActions.h"

#include "Base/Localization.h"

#include <algorithm>
#include <limits>
#include <unistd.h>

namespace korvell {

namespace {

using Answer = Keeper::Answer;

const std::string* text(const Value& request, std::string_view name) {
  const auto* value = request.find(name);
  return value ? value->asString() : nullptr;
}

void stopServer(AppModel& model, const Value& request, Answer answer) {
  const auto* pid = request.find("pid");
  const auto* startedAt = text(request, "startedAt");
  for (const DevProject& project : *model.projects)
    for (const DevServer& server : project.servers) {
      if (!pid || pid->asInt() != server.pid) continue;
      // Compared as it was told: a text has no more than milliseconds.
      if (!startedAt || *startedAt != rfc3339(server.startedAt)) continue;
      return model.stop(server, [answer = std::move(answer)](StopOutcome outcome) {
        answer(Value::object({{"ok", true}, {"outcome", rawValue(outcome)}}));
      });
    }
  answer(refusal(localized("There is no such server any more.")));
}

/// Nothing when the list says anything but processes.
std::optional<std::vector<QuitTarget>> targetsOf(const Value& request) {
  const auto* processes = request.find("processes");
  const auto* list = processes ? processes->asArray() : nullptr;
  if (!list || list->empty()) return std::nullopt;
  std::vector<QuitTarget> targets;
  for (const Value& process : *list) {
    const auto* pid = process.find("pid");
    const auto* start = process.find("start");
    const auto id = pid ? pid->asInt().value_or(0) : 0;
    const auto ticks = start ? start->asInt().value_or(-1) : -1;
    if (id <= 1 || id > std::numeric_limits<ProcessID>::max() || ticks < 0) return std::nullopt;
    if (id != getpid()) targets.push_back({ProcessID(id), std::uint64_t(ticks)});
  }
  return targets;
}

void quit(AppModel& model, const Value& request, Answer answer) {
  const auto targets = targetsOf(request);
  if (!targets) return answer(refusal("processes are needed, each with its pid and start"));
  const auto* force = request.find("force");
  model.quit(*targets, force && force->asBool() == true,
             [answer = std::move(answer)](const QuitResult& result) {
               answer(Value::object({{"ok", true},
                                     {"sent", std::int64_t{result.sent}},
                                     {"gone", std::int64_t{result.gone}},
                                     {"denied", std::int64_t{result.denied}}}));
             });
}

void rescanStartupItems(AppModel& model, const Value&, Answer answer) {
  model.rescanStartupItems([&model, answer = std::move(answer)] {
    answer(Value::object({{"ok", true}, {"startupItems", toValue(*model.startupItems)}}));
  });
}

void removeStartupItem(AppModel& model, const Value& request, Answer answer) {
  const auto *path = text(request, "plistPath"), *label = text(request, "label"),
             *program = text(request, "program");
  const auto item = std::ranges::find_if(*model.startupItems, [&](const StartupItem& listed) {
    return path && label && program && listed.plistPath == *path && listed.label == *label &&
           listed.program == *program;
  });
  if (item == model.startupItems->end())
    return answer(refusal(localized("There is no such startup item any more.")));
  model.remove(*item, [answer = std::move(answer)](const Outcome& outcome) {
    answer(outcome ? Value::object({{"ok", true}}) : refusal(outcome.reason()));
  });
}

} // namespace

void addModelActions(Keeper& keeper, AppModel& model) {
  constexpr struct {
    const char* name;
    void (*action)(AppModel&, const Value&, Answer);
  } actions[] = {{"stopServer", stopServer},
                 {"quit", quit},
                 {"rescanStartupItems", rescanStartupItems},
                 {"removeStartupItem", removeStartupItem}};
  for (const auto& [name, action] : actions)
    keeper.addAction(name, [&model, action = action](const Value& request, Answer answer) {
      action(model, request, std::move(answer));
    });
}

} // namespace korvell
