#include "Tool/AskKeeper.h"

#include "App/KeeperClient.h"

namespace korvell {

std::optional<Value> keeperState(Context& context, std::initializer_list<const char*> parts,
                                 Seconds patience) {
  Value names = Value::array();
  for (const char* part : parts) names.append(part);
  return tellKeeper(context, Value::object({{"ask", "state"}, {"parts", names}}), patience);
}

std::optional<Value> askKeeper(Context& context, std::initializer_list<const char*> parts, Seconds patience) {
  auto state = keeperState(context, parts, patience);
  const auto* hasSample = state ? state->find("hasSample") : nullptr;
  return hasSample && hasSample->asBool() == true ? state : std::nullopt;
}

std::optional<Value> tellKeeper(Context& context, const Value& request, Seconds patience) {
  auto client = KeeperClient::connect(context.host.folders);
  return client ? client->ask(request, patience) : std::nullopt;
}

} // namespace korvell
