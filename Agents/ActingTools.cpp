#include "Agents/ActingTools.h"

#include "Agents/Schema.h"
#include "Base/Localization.h"

namespace korvell {

namespace {

enum class ActionOutcome { done, declined, unanswered, refused, failed, unknown };

struct ActionResult {
  bool done = false;
  ActionOutcome outcome = ActionOutcome::refused;
  std::string message;
  std::vector<std::string> problems;

  static constexpr auto fields() {
    return std::tuple{Field{"done", &ActionResult::done}, Field{"outcome", &ActionResult::outcome},
                      Field{"message", &ActionResult::message}, Field{"problems", &ActionResult::problems}};
  }
};

} // namespace

template <>
struct EnumTable<ActionOutcome> {
  using enum ActionOutcome;
  static constexpr EnumCase<ActionOutcome> cases[] = {{done, "done", "Done"},
                                                      {declined, "declined", "Declined"},
                                                      {unanswered, "unanswered", "Not answered"},
                                                      {refused, "refused", "Refused"},
                                                      {failed, "failed", "Failed"},
                                                      {unknown, "unknown", "Unknown"}};
};

namespace {

constexpr std::size_t longestHandle = 64;

ToolAnswer answerOf(const ActionResult& result) {
  return {.content = toValue(result), .isError = result.outcome != ActionOutcome::done};
}

ToolAnswer refused(std::string why) {
  return answerOf({.outcome = ActionOutcome::refused, .message = std::move(why)});
}

ToolAnswer answerOf(const ActionAnswer& answer) {
  const auto outcome = !answer.isKnown ? ActionOutcome::unknown
                       : answer.worked ? ActionOutcome::done
                                       : ActionOutcome::failed;
  return answerOf(ActionResult{answer.worked, outcome, answer.message, answer.problems});
}

/// What a person types to do it; it holds nothing that a stranger chose.
std::string typed(const QuitRequest& request) {
  const auto force = request.force ? " --force" : "";
  if (request.processes.size() == 1)
    return "korvell quit " + std::to_string(request.processes.front().pid) + force;
  return "korvell quit NAME" + std::string(force);
}
std::string typed(const StopServerRequest& request) {
  return "korvell servers stop " + std::to_string(request.pid);
}
std::string typed(const StopIdleServersRequest&) { return "korvell servers stop-idle"; }

std::string typedFor(const ActionRequest& request) {
  return std::visit(
      [](const auto& exact) -> std::string {
        if constexpr (requires { typed(exact); })
          return typed(exact);
        else
          return {};
      },
      request);
}

std::string whatToType(const ActionRequest& request) {
  const auto* quit = std::get_if<QuitRequest>(&request);
  return localized(
      quit && quit->processes.size() != 1
          ? "Nobody could be asked, so nothing was done. Whoever wants it types {command}, with the "
            "application's name in place of NAME."
          : "Nobody could be asked, so nothing was done. Whoever wants it types: {command}",
      {{"command", typedFor(request)}});
}

/// Why nothing was done.
ActionResult refusalOf(Consent consent, const ActionRequest& request) {
  switch (consent) {
  case Consent::declined:
    return {.outcome = ActionOutcome::declined,
            .message = localized("The person said no. Nothing was done.")};
  case Consent::unanswered:
    return {.outcome = ActionOutcome::unanswered, .message = localized("Nobody answered. Nothing was done.")};
  default:
    return {.outcome = ActionOutcome::refused, .message = whatToType(request)};
  }
}

/// One call, on its way.
struct Act : std::enable_shared_from_this<Act> {
  Handles& handles;
  Actions& actions;
  std::shared_ptr<ToolCall> call;
  Tool::Done done;
  std::string handle;
  std::string_view action;

  Act(Handles& given, Actions& door, std::shared_ptr<ToolCall> of, Tool::Done told, std::string_view name)
      : handles(given), actions(door), call(std::move(of)), done(std::move(told)), action(name) {
    const auto* text = call->arguments().find("handle");
    handle = *text->asString();
  }

  /// What the handle stands for, forced where that is asked for.
  Result<ActionRequest> request() const {
    const auto target = handles.find(handle, action);
    if (!target) return Failure{target.reason()};
    const auto* force = call->arguments().find("force");
    const bool isForced = force && force->asBool() == true;
    return isForced && target->forced ? *target->forced : target->request;
  }

  void start() {
    const auto wanted = request();
    if (!wanted) return done(refused(wanted.reason()));
    actions.describe(*wanted, [self = shared_from_this()](const Result<DescribedAction>& described) {
      if (!described) return self->done(refused(described.reason()));
      self->ask(*described);
    });
  }

  void ask(const DescribedAction& described) {
    const auto& asked = described.description;
    if (asked.isHarmless) return done(refused(asked.message)); // there is nothing to do
    const AgentQuestion question{asked.title, asked.message, asked.details, asked.button, described.request};
    const auto exact = described.request;
    call->ask(question, handle + dumpJSON(toValue(exact)),
              [self = shared_from_this(), exact](Consent consent) { self->answered(consent, exact); });
  }

  void answered(Consent consent, const ActionRequest& exact) {
    if (consent == Consent::impossible) return done(answerOf(refusalOf(consent, exact)));
    // Another call may have used it while the person thought.
    const auto still = request();
    handles.use(handle);
    if (!still) return done(refused(still.reason()));
    if (consent != Consent::given) return done(answerOf(refusalOf(consent, exact)));
    actions.perform(
        exact, [self = shared_from_this()](const ActionAnswer& answer) { self->done(answerOf(answer)); });
  }
};

Tool actingTool(Handles& handles, Actions& actions, std::string name, std::string title,
                std::string description, std::string_view action, bool canForce) {
  const auto handle = schema::text("From a reading tool; good for ten minutes and once", longestHandle);
  const auto force = schema::boolean("At once, without the chance to save");
  return {.name = std::move(name),
          .title = std::move(title),
          .description = std::move(description),
          .input = canForce ? schema::object({{"handle", handle, true}, {"force", force}})
                            : schema::object({{"handle", handle, true}}),
          .output = schema::of<ActionResult>(),
          .isReadOnly = false,
          .isIdempotent = false,
          .run = [&handles, &actions, action](const std::shared_ptr<ToolCall>& call, Tool::Done done) {
            std::make_shared<Act>(handles, actions, call, std::move(done), action)->start();
          }};
}

} // namespace

std::vector<Tool> actingTools(Handles& handles, Actions& actions) {
  return {
      actingTool(
          handles, actions, "quit_app", "Quit an application or a process",
          "Asks the person, then quits the application or process that a handle of why_slow, processes "
          "or health stands for.",
          QuitRequest::action, true),
      actingTool(handles, actions, "stop_server", "Stop a development server",
                 "Asks the person, then stops the server that a handle of dev_servers stands for: politely, "
                 "and after three seconds for good.",
                 StopServerRequest::action, false),
      actingTool(handles, actions, "stop_idle_servers", "Stop idle development servers",
                 "Asks the person, then stops the servers that idleHandle of dev_servers or a fix of health "
                 "stands for. One that is not idle any more is left alone.",
                 StopIdleServersRequest::action, false)};
}

} // namespace korvell
