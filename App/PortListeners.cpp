#include "App/PortListeners.h"

#include "App/Assembly.h"

#include <algorithm>

namespace korvell {

namespace {

template <class Projects>
auto* serverIn(Projects& projects, ProcessID pid) {
  for (auto& project : projects)
    for (auto& server : project.servers)
      if (server.pid == pid) return &server;
  return decltype(&projects.front().servers.front())(nullptr);
}

} // namespace

PortUse lookUpPort(Assembly& assembly, ProcessTable& table, int port) {
  const auto sampler = assembly.makeProcessSampler();
  const auto scanner = assembly.makeDevServerScanner();
  const auto apps = sampler->sample({});
  const auto projects = scanner->scan(usageByPID(apps), sampler->parents());
  PortUse use{.port = port};
  for (const auto& [pid, ports] : scanner->portsByPID()) {
    if (std::ranges::find(ports, port) == ports.end()) continue;
    PortListener listener{.pid = pid, .startedAt = table.startDate(pid)};
    if (const auto* identity = sampler->identity(pid)) {
      listener.name = identity->name();
      listener.path = identity->path();
      listener.app = identity->owner.owner->name;
    }
    if (const auto* server = serverIn(projects, pid)) listener.server = *server;
    use.listeners.push_back(std::move(listener));
  }
  std::ranges::sort(use.listeners, {}, &PortListener::pid);
  use.isTaken = use.listeners.empty() ? table.isListenedOn(port) : true;
  return use;
}

bool takeActivity(PortUse& use, const std::vector<DevProject>& followed) {
  bool areAllKnown = true;
  for (auto& listener : use.listeners) {
    if (!listener.server) continue;
    const auto* known = serverIn(followed, listener.pid);
    if (known && isSameServer(*known, *listener.server)) {
      listener.server->cpu = known->cpu;
      listener.server->lastActive = known->lastActive;
    } else {
      areAllKnown = false;
    }
  }
  return areAllKnown;
}

std::string stopCommand(const PortListener& listener) {
  return (listener.server ? "korvell servers stop " : "korvell quit ") + std::to_string(listener.pid);
}

Value portValue(const PortUse& use, bool isIdleKnown, Date now) {
  Value listeners = Value::array();
  for (const auto& listener : use.listeners) {
    Value one = toValue(listener);
    if (listener.server && isIdleKnown) one.set("isIdle", isIdle(*listener.server, now));
    one.set("stop", stopCommand(listener));
    listeners.append(std::move(one));
  }
  Value value = Value::object({{"port", use.port}, {"listeners", std::move(listeners)}});
  if (use.isTaken) value.set("isTaken", *use.isTaken);
  return value;
}

} // namespace korvell
