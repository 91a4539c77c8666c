#include "Core/DevServers/DevServerScanner.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace korvell {

namespace {

std::uint64_t memoryOf(const DevProject& project) {
  return std::accumulate(project.servers.begin(), project.servers.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const DevServer& server) { return sum + server.memory; });
}

void add(std::vector<DevProject>& projects, DevServer server) {
  auto project = std::find_if(projects.begin(), projects.end(),
                              [&](const DevProject& p) { return p.name == server.project; });
  if (project == projects.end()) project = projects.insert(project, {.name = server.project, .servers = {}});
  project->servers.push_back(std::move(server));
}

/// Servers keep their places from scan to scan; projects go by the memory that they take.
void sort(std::vector<DevProject>& projects) {
  for (DevProject& project : projects)
    std::sort(project.servers.begin(), project.servers.end(), [](const DevServer& a, const DevServer& b) {
      return std::tie(a.directory, a.ports, a.pid) < std::tie(b.directory, b.ports, b.pid);
    });
  std::vector<std::pair<std::uint64_t, DevProject>> keyed;
  for (DevProject& project : projects) keyed.emplace_back(memoryOf(project), std::move(project));
  std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second.name < b.second.name;
  });
  std::transform(keyed.begin(), keyed.end(), projects.begin(),
                 [](auto& entry) { return std::move(entry.second); });
}

} // namespace

UsageByPID usageByPID(const std::vector<AppUsage>& apps) {
  UsageByPID processes;
  for (const AppUsage& app : apps)
    for (const ProcessUsage& process : app.processes) processes.emplace(process.pid, &process);
  return processes;
}

DevServerScanner::DevServerScanner(ProcessTable& table, const DevServerTables& rules, std::string home,
                                   FileExists exists, IsDesktopProgram isDesktopProgram, const Clock& clock)
    : table_(table), rules_(rules), home_(std::move(home)), exists_(std::move(exists)),
      isDesktopProgram_(std::move(isDesktopProgram)), clock_(clock), launchDate_(clock.now()) {}

std::vector<DevProject> DevServerScanner::scan(const UsageByPID& processes, const ParentsByPID& parents) {
  portsByPID_ = table_.listeningPorts();
  const Date now = clock_.now();
  const auto children = childrenOf(parents);
  std::vector<DevProject> projects;
  for (const auto& [pid, ports] : portsByPID_) {
    auto found = server(pid, processes);
    if (!found) continue;
    found->ports = ports;
    addUse(*found, processes, children);
    found->lastActive = lastActive(*found, now);
    add(projects, std::move(*found));
  }
  std::erase_if(sightings_, [&](const auto& entry) { return !portsByPID_.contains(entry.first); });
  sort(projects);
  return projects;
}

std::optional<DevServerScanner::Program> DevServerScanner::program(ProcessID pid,
                                                                   const UsageByPID& processes) {
  if (const auto usage = processes.find(pid); usage != processes.end() && !usage->second->path.empty())
    return Program{usage->second->path, usage->second->name};
  auto facts = table_.facts(pid); // younger than the snapshot
  if (!facts || facts->path.empty()) return std::nullopt;
  return Program{std::move(facts->path), std::move(facts->name)};
}

std::optional<DevServer> DevServerScanner::server(ProcessID pid, const UsageByPID& processes) {
  const auto program = this->program(pid, processes);
  if (!program || isSkippedExecutable(program->path, rules_) || isInfrastructure(program->name, rules_))
    return std::nullopt;
  const auto directory = table_.workingDirectory(pid);
  if (!directory || !directory->starts_with(home_ + "/")) return std::nullopt;
  if (isDesktopLayout(program->path, exists_) || isDesktopProgram_(program->path)) return std::nullopt;
  const auto startedAt = table_.startDate(pid);
  if (!startedAt) return std::nullopt;

  auto folders = projectFolders(*directory, home_, exists_);
  DevServer server;
  server.pid = pid;
  server.name = isFrameworkPython(program->path) ? "python" : program->name;
  server.project = folders.project.substr(folders.project.rfind('/') + 1);
  server.directory = std::move(folders.service);
  server.runtime = runtimeLabel(server.name);
  server.startedAt = *startedAt;
  return server;
}

void DevServerScanner::addUse(DevServer& server, const UsageByPID& processes,
                              const ChildrenByPID& children) const {
  for (ProcessID pid : descendants(server.pid, children)) {
    const auto usage = processes.find(pid);
    if (usage == processes.end()) continue;
    server.cpu += usage->second->cpu;
    server.memory += usage->second->memory;
  }
}

Date DevServerScanner::lastActive(const DevServer& server, Date now) {
  const Sighting fresh{
      .startedAt = server.startedAt, .firstSeen = std::max(now, launchDate_), .lastActive = {}};
  auto& sighting = sightings_.try_emplace(server.pid, fresh).first->second;
  if (sighting.startedAt != server.startedAt) sighting = fresh;
  if (server.cpu > activeAbove) sighting.lastActive = now;
  return sighting.lastActive.value_or(sighting.firstSeen);
}

} // namespace korvell
