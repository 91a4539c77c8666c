#include "Tool/Suggestions.h"

#include "App/Assembly.h"
#include "Core/Machine/Quit.h"
#include "Core/Startup/StartupScanner.h"
#include "Tool/AskKeeper.h"

#include <map>

namespace korvell {

namespace {

/// The keeper's part of that name; nothing without a keeper that tells it.
template <class T>
std::optional<T> kept(Context& context, const char* part) {
  const auto state = askKeeper(context, {part});
  const auto* told = state ? state->find(part) : nullptr;
  T read{};
  return told && fromValue(*told, read) ? std::optional(std::move(read)) : std::nullopt;
}

std::vector<AppUsage> applications(Context& context) {
  if (auto snapshot = kept<SystemSnapshot>(context, "snapshot")) return std::move(snapshot->apps);
  Assembly assembly(context.host, context.clock);
  return assembly.makeProcessSampler()->sample({});
}

std::vector<DevProject> projects(Context& context) {
  if (auto told = kept<std::vector<DevProject>>(context, "projects")) return std::move(*told);
  Assembly assembly(context.host, context.clock);
  const auto sampler = assembly.makeProcessSampler();
  const auto apps = sampler->sample({});
  return assembly.makeDevServerScanner()->scan(usageByPID(apps), sampler->parents());
}

} // namespace

std::vector<Suggestion> suggestedApplications(Context& context) {
  std::vector<Suggestion> found;
  for (const auto& app : applications(context))
    if (!isSystemGroup(app)) found.push_back({app.name});
  return found;
}

std::vector<Suggestion> suggestedServers(Context& context) {
  std::vector<Suggestion> found;
  for (const auto& project : projects(context))
    for (const auto& server : project.servers) {
      std::string about = project.name + ": " + server.name;
      for (const int port : server.ports) about += " " + std::to_string(port);
      found.push_back({std::to_string(server.pid), std::move(about)});
    }
  return found;
}

std::vector<Suggestion> suggestedLeftovers(Context& context) {
  auto items = kept<std::vector<StartupItem>>(context, "startupItems");
  if (!items) items = StartupScanner::scan(*context.host.launchItems);
  std::vector<Suggestion> found;
  for (const auto& item : *items)
    if (item.isLeftover) found.push_back({item.label, item.program.value_or("")});
  return found;
}

std::vector<Suggestion> suggestedPorts(Context& context) {
  auto& table = *context.host.processes;
  std::map<int, std::string> byPort;
  for (const auto& [pid, ports] : table.listeningPorts())
    for (const int port : ports) {
      auto& name = byPort[port];
      if (const auto facts = name.empty() ? table.facts(pid) : std::nullopt) name = facts->name;
    }
  std::vector<Suggestion> found;
  for (const auto& [port, name] : byPort) found.push_back({std::to_string(port), name});
  return found;
}

std::vector<Suggestion> suggestedProcesses(Context& context) {
  std::vector<Suggestion> found;
  for (const auto& process : context.host.processes->read())
    found.push_back({std::to_string(process.pid), process.comm});
  return found;
}

} // namespace korvell
