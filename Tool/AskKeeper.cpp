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
  KeeperAnswer answer{.isSilent = true};
  if (said) answer.pid = said->pid;
  return answer;
}

KeeperAnswer noted(Context& context, KeeperAnswer answer) {
  if (answer.isSilent || answer.isStarting) fail(context, silence(answer));
  return answer;
}

} // namespace

std::string silence(const KeeperAnswer& answer) {
  if (answer.isStarting) return localized("Korvell was started a moment ago and has not measured yet.");
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
  auto state = keeperState(context, parts);
  const auto* hasSample = state ? state->find("hasSample") : nullptr;
  state.isStarting = state && !(hasSample && hasSample->asBool() == true);
  return noted(context, std::move(state));
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
