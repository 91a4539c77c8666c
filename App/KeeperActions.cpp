#include "App/KeeperActions.h"

#include "App/Keeper.h"
#include "Base/Localization.h"

#include <algorithm>

namespace korvell {

namespace {

Value describedValue(const Result<DescribedAction>& described) {
  if (!described) return refusal(described.reason());
  return Value::object({{"ok", true},
                        {"request", toValue(described->request)},
                        {"description", toValue(described->description)}});
}

Value answerValue(const ActionAnswer& answer) {
  if (answer.json.asObject()->empty()) return refusal(answer.message);
  Value value = Value::object({{"ok", answer.worked}, {"sentence", answer.message}});
  if (!answer.problems.empty()) value.set("notes", toValue(answer.problems));
  for (const auto& [name, member] : *answer.json.asObject()) value.set(name, member);
  return value;
}

/// Why a keeper did not do it.
std::string errorOf(const Value& answer) {
  const auto* error = answer.find("error");
  const auto* text = error ? error->asString() : nullptr;
  if (!text) return localized("Korvell refused.");
  if (*text == unknownRequest)
    return localized("The Korvell that runs is of another version and can't do that. Restart it.");
  return *text;
}

bool isOK(const Value& answer) {
  const auto* ok = answer.find("ok");
  return ok && ok->asBool() == true;
}

} // namespace

bool isActionRequest(const Value& request) {
  if (request.find("describe")) return true;
  const auto* what = request.find("do");
  const auto names = actionNames();
  return what && what->asString() && std::ranges::find(names, *what->asString()) != names.end();
}

void carryOut(Actions& actions, const Value& request, std::function<void(const Value&)> answer) {
  const bool describes = request.find("describe") != nullptr;
  const auto asked = readActionRequest(request, describes ? "describe" : "do");
  const auto* language = request.find(languageName);
  const auto* code = language ? language->asString() : nullptr;
  const InLanguage speaking(code ? std::string_view(*code) : std::string_view()); // none changes nothing
  if (!asked) return answer(refusal(asked.reason()));
  if (!describes)
    return actions.perform(
        *asked, [answer = std::move(answer)](const ActionAnswer& done) { answer(answerValue(done)); });
  actions.describe(
      *asked, [answer = std::move(answer)](const auto& described) { answer(describedValue(described)); });
}

Result<DescribedAction> readDescribed(const Value& answer) {
  const auto *request = answer.find("request"), *description = answer.find("description");
  if (!isOK(answer) || !request || !description) return Failure{errorOf(answer)};
  auto exact = readActionRequest(*request);
  DescribedAction described;
  if (!exact || !fromValue(*description, described.description)) return Failure{errorOf(Value())};
  described.request = std::move(*exact);
  return described;
}

ActionAnswer readAnswer(const Value& answer) {
  const auto *sentence = answer.find("sentence"), *notes = answer.find("notes");
  if (!sentence || !sentence->asString()) return ActionAnswer::refused(errorOf(answer));
  ActionAnswer read{.worked = isOK(answer), .message = *sentence->asString(), .json = answer};
  if (notes && !fromValue(*notes, read.problems)) read.problems.clear();
  for (const char* name : {"ok", "sentence", "notes"}) read.json.erase(name);
  return read;
}

} // namespace korvell
