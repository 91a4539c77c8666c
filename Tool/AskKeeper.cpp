#include "Tool/AskKeeper.h"

#include "App/KeeperClient.h"

namespace korvell {

namespace {

KeeperAnswer noted(Context& context, KeeperAnswer answer) {
  const InLanguage people(context.language);
  if (answer.isSilent || answer.isStarting) fail(context, silence(answer));
  return answer;
}

} // namespace

KeeperAnswer keeperState(Context& context, std::initializer_list<const char*> parts) {
  return keeperState(context.host.folders, context.keeperPatience, parts);
}

KeeperAnswer askKeeper(Context& context, std::initializer_list<const char*> parts) {
  return noted(context, measuredState(context.host.folders, context.keeperPatience, parts));
}

bool keeperActs(Context& context) {
  auto client = KeeperClient::connect(context.host.folders);
  const auto answer =
      client ? client->ask(Value::object({{"ask", "actions"}}), context.keeperPatience) : std::nullopt;
  if (!answer) noted(context, unanswered(context.host.folders));
  if (!answer || answer->find("actions")) return answer.has_value();
  fail(context, localized("The Korvell that runs is of another version; this is done without it."));
  return false;
}

} // namespace korvell
