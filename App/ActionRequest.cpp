#include "App/ActionRequest.h"

#include <type_traits>
#include <utility>

namespace korvell {

namespace {

/// Calls `visit` with an empty request of each kind until it returns true.
template <class Visit>
bool anyKind(Visit visit) {
  return [&]<std::size_t... I>(std::index_sequence<I...>) {
    return (visit(std::variant_alternative_t<I, ActionRequest>()) || ...);
  }
  (std::make_index_sequence<std::variant_size_v<ActionRequest>>());
}

/// A process that somebody saw has an id above 1 and began at some time. This one is none to end.
bool areProcesses(const QuitRequest& request) {
  for (const auto& process : request.processes)
    if (process.pid <= 1 || process.start == 0) return false;
  return !request.processes.empty() || request.app || request.bundlePath;
}

std::string faultOf(const QuitRequest& request) {
  return areProcesses(request) ? "" : "processes are needed, each with its pid and start";
}
std::string faultOf(const ChangeSettingRequest& request) {
  return request.key.empty() ? "key is needed" : "";
}
template <class Request>
std::string faultOf(const Request&) {
  return "";
}

} // namespace

std::string_view actionName(const ActionRequest& request) {
  return std::visit([](const auto& asked) { return asked.action; }, request);
}

Value toValue(const ActionRequest& request, std::string_view verb) {
  Value value = Value::object({{std::string(verb), actionName(request)}});
  const auto members = std::visit([](const auto& asked) { return toValue(asked); }, request);
  for (const auto& [name, member] : *members.asObject()) value.set(name, member);
  return value;
}

Result<ActionRequest> readActionRequest(const Value& value, std::string_view verb) {
  const auto* named = value.find(verb);
  const auto* name = named ? named->asString() : nullptr;
  Result<ActionRequest> result = Failure{unknownRequest};
  anyKind([&](auto request) {
    if (!name || *name != request.action) return false;
    if (!fromValue(value, request))
      result = Failure{"a member of the request has another type than it needs"};
    else if (auto fault = faultOf(request); !fault.empty())
      result = Failure{std::move(fault)};
    else
      result = ActionRequest(std::move(request));
    return true;
  });
  return result;
}

std::vector<std::string_view> actionNames() {
  std::vector<std::string_view> names;
  anyKind([&](const auto& request) {
    names.push_back(request.action);
    return false;
  });
  return names;
}

} // namespace korvell
