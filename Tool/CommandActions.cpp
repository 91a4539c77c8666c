#include "Tool/CommandActions.h"

#include "App/RemoteActions.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Tool/AskKeeper.h"
#include "Tool/Confirmation.h"

#include <algorithm>
#include <optional>
#include <span>

namespace korvell {

CommandActions::CommandActions(Context& context, Where where)
    : context_(context), assembly_(context.host, context.clock),
      isKeepers_(where == Where::keeperOrHere && keeperActs(context)), actions_(makeActions()) {}

std::unique_ptr<Actions> CommandActions::makeActions() {
  if (isKeepers_)
    return std::make_unique<RemoteActions>(loop_.main(), systemQueueFactory(), context_.host.folders,
                                           context_.keeperPatience);
  return assembly_.makeActions(
      loop_.main(), [this]() -> AppModel& { return model(); }, storage_);
}

AppModel& CommandActions::model() {
  if (!model_) model_ = assembly_.makeWatchingModel(loop_.main(), unwatched_);
  return *model_;
}

template <class Told>
Told CommandActions::wait(const std::function<void(std::function<void(const Told&)>)>& begin, Told otherwise,
                          const Task& interrupted) {
  const auto told = std::make_shared<std::optional<Told>>(); // it may still come when nobody waits any more
  begin([told, &loop = loop_](const Told& result) {
    *told = result;
    loop.quit();
  });
  for (bool isInterrupted = false; !*told; isInterrupted = true) {
    if (isInterrupted && !interrupted) return otherwise;
    loop_.run();
    if (!*told && !isInterrupted && interrupted) interrupted();
  }
  return **told;
}

Result<DescribedAction> CommandActions::describe(const ActionRequest& request) {
  return wait<Result<DescribedAction>>(
      [&](Actions::Described done) { actions_->describe(request, std::move(done)); },
      Failure{localized("Interrupted. Nothing was done.")}, {});
}

ActionAnswer CommandActions::perform(const ActionRequest& request, const Task& interrupted) {
  auto unknown = ActionAnswer::refused(localized("Interrupted. What was begun may still be done."));
  unknown.isKnown = false;
  return wait<ActionAnswer>([&](Actions::Performed done) { actions_->perform(request, std::move(done)); },
                            std::move(unknown), interrupted);
}

bool CommandActions::isConfirmed(const Arguments& arguments, std::string_view text) {
  bool answer = false;
  loop_.withoutSignals([&] { answer = confirmed(context_, arguments, text); });
  return answer;
}

std::string withDetails(const ActionDescription& asked, std::string text) {
  constexpr std::size_t most = 20;
  const auto& details = asked.details;
  if (details.size() < 2) return text;
  for (const auto& line : std::span(details).first(std::min(details.size(), most)))
    text += "\n  " + escapedControls(line);
  if (details.size() > most)
    text += "\n  " + localized("and {count} more", {{"count", std::to_string(details.size() - most)}});
  return text;
}

int tell(Context& context, const Arguments& arguments, const ActionDescription& asked,
         const ActionAnswer& answer, Telling telling) {
  const bool json = arguments.flag("--json"), wasBegun = !answer.json.asObject()->empty();
  if (json && wasBegun) printJSON(context.out, answer.json);
  if (json && !answer.isKnown) printJSON(context.out, asked.about);
  for (const auto& problem : answer.problems) context.err.line("korvell: " + escapedControls(problem));
  const auto message = escapedControls(answer.message);
  if (!answer.worked && (telling == Telling::one || !wasBegun)) return fail(context, message);
  if (!json) context.out.line(message);
  return answer.worked ? exitOK : exitFailed;
}

} // namespace korvell
