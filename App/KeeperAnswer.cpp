#include "App/KeeperAnswer.h"

#include "App/KeeperClient.h"
#include "App/KeeperLock.h"
#include "Base/Localization.h"

namespace korvell {

namespace {

Value stateRequest(std::initializer_list<const char*> parts) {
  Value names = Value::array();
  for (const char* part : parts) names.append(part);
  return Value::object({{"ask", "state"}, {"parts", names}});
}

} // namespace

KeeperAnswer unanswered(const UserFolders& folders) {
  if (!isKeeperRunning(folders)) return {};
  const auto said = keeperAnnouncement(folders);
  KeeperAnswer answer{.isSilent = true};
  if (said) answer.pid = said->pid;
  return answer;
}

std::string silence(const KeeperAnswer& answer) {
  if (answer.isStarting) return localized("Korvell was started a moment ago and has not measured yet.");
  return answer.pid == 0
             ? localized("Korvell is running but does not answer: it is busy or hangs.")
             : localized("Korvell (process {pid}) is running but does not answer: it is busy or hangs.",
                         {{"pid", std::to_string(answer.pid)}});
}

KeeperAnswer keeperState(const UserFolders& folders, Seconds patience,
                         std::initializer_list<const char*> parts) {
  auto client = KeeperClient::connect(folders);
  if (auto state = client ? client->ask(stateRequest(parts), patience) : std::nullopt)
    return {.value = std::move(state)};
  return unanswered(folders);
}

KeeperAnswer measuredState(const UserFolders& folders, Seconds patience,
                           std::initializer_list<const char*> parts) {
  auto state = keeperState(folders, patience, parts);
  const auto* hasSample = state ? state->find("hasSample") : nullptr;
  state.isStarting = state && !(hasSample && hasSample->asBool() == true);
  return state;
}

} // namespace korvell
