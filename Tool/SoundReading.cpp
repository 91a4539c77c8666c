#include "Tool/SoundReading.h"

#include "App/KeeperClient.h"
#include "App/SoundServices.h"
#include "Base/Localization.h"
#include "Base/SystemQueue.h"

#include <algorithm>

namespace korvell {

namespace {

/// For a connection and a list. People wait.
constexpr Seconds patience{5};
/// Longer than for figures: a volume that is set here is news to a busy application only later.
constexpr Seconds silence{2};
constexpr Seconds applicationPatience = SoundAnswers::patience + Seconds(1);

/// The running application's answer; nothing where none runs that has sound.
std::optional<Value> askApplication(const Context& context, const Value& request) {
  auto client = KeeperClient::connect(context.host.folders);
  const auto known =
      client ? client->ask(Value::object({{"ask", "actions"}}), std::max(silence, context.keeperPatience))
             : std::nullopt;
  const auto* names = known ? known->find("actions") : nullptr;
  const auto* all = names ? names->asArray() : nullptr;
  if (!all || std::ranges::find(*all, Value(listSoundAction)) == all->end()) return std::nullopt;
  return client->ask(request, applicationPatience);
}

std::unique_ptr<SoundVisit> visit(const Context& context) {
  auto services = soundServices(context.host, context.environment, systemQueueFactory(), visitingRole());
  return services ? std::make_unique<SoundVisit>(std::move(*services), patience) : nullptr;
}

} // namespace

SoundState readSound(const Context& context) {
  SoundState state{.connection = SoundConnection::unsupported};
  const auto answer = askApplication(context, Value::object({{"do", listSoundAction}}));
  const auto* told = answer ? answer->find("sound") : nullptr;
  if (told && fromValue(*told, state)) return state;
  if (const auto own = visit(context)) state = own->state();
  return state;
}

Result<SoundChanged> changeSound(const Context& context, const SoundRequest& request) {
  auto asked = toValue(request);
  asked.set("do", changeSoundAction);
  if (const auto answer = askApplication(context, asked)) {
    SoundChanged changed;
    const auto *app = answer->find("app"), *error = answer->find("error");
    if (app && fromValue(*app, changed.app)) return changed;
    return Failure{error && error->asString() ? *error->asString()
                                              : localized("The running Korvell gave no answer.")};
  }
  const auto own = visit(context);
  if (!own) return Failure{localized("This system lets nobody set the volumes of applications.")};
  auto app = own->change(request);
  if (!app) return Failure{app.reason()};
  return SoundChanged{std::move(*app), visitingRole() == SoundRole::rememberer};
}

} // namespace korvell
