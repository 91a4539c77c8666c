#include "Tool/AskKeeper.h"

#include "App/KeeperClient.h"
#include "App/KeeperLock.h"

namespace korvell {

namespace {

Value stateRequest(std::initializer_list<const char*> parts) {
  Value names = Value::array();
  for (const char* part : parts) names.append(part);
  return Value::object({{"ask", "state"}, {"parts", names}});
}

/// Without an answer: whether there is somebody who should have given one.
KeeperAnswer unanswered(const UserFolders& folders) {
  if (!isKeeperRunning(folders)) return {};
  const auto said = keeperAnnouncement(folders);
  return {.value = {}, .isSilent = true, .pid = said ? said->pid : 0};
}

KeeperAnswer noted(Context& context, KeeperAnswer answer) {
  if (answer.isSilent) fail(context, silence(answer));
  return answer;
}

} // namespace

std::string silence(const KeeperAnswer& answer) {
  return answer.pid == 0
             ? localized("Korvell is running but does not answer: it is busy or hangs.")
             : localized("Korvell (process {pid}) is running but does not answer: it is busy or hangs.",
                         {{"pid", std::to_string(answer.pid)}});
}

KeeperAnswer keeperState(Context& context, std::initializer_list<const char*> parts) {
  auto client = KeeperClient::connect(context.host.folders);
  if (auto state = client ? client->ask(stateRequest(parts), context.keeperPatience) : std::nullopt)
    return {.value = std::move(state)};
  return unanswered(context.host.folders);
}

KeeperAnswer askKeeper(Context& context, std::initializer_list<const char*> parts) {
  auto state = noted(context, keeperState(context, parts));
  if (!state) return state;
  const auto* hasSample = state->find("hasSample");
  return hasSample && hasSample->asBool() == true ? state : KeeperAnswer();
}

KeeperAnswer tellKeeper(Context& context, const Value& request, Seconds patience) {
  auto client = KeeperClient::connect(context.host.folders);
  if (client && client->ask(stateRequest({}), context.keeperPatience))
    if (auto answer = client->ask(request, patience)) return {.value = std::move(answer)};
  return noted(context, unanswered(context.host.folders));
}

} // namespace korvell
