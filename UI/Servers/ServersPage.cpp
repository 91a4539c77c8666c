#include "UI/Servers/ServersPage.h"

#include "Base/Files.h"
#include "Base/Format.h"
#include "Base/Localization.h"
#include "Core/DevServers/DevServerRules.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/SpokenFigure.h"

#include <algorithm>
#include <string_view>

namespace korvell {

namespace {

constexpr Seconds justNow{60};

bool isBelow(std::string_view path, std::string_view folder) {
  return !folder.empty() && path.starts_with(folder) && path.size() > folder.size() &&
         path[folder.size()] == '/';
}

/// The deepest folder of that name at or above a directory; empty when there is none.
std::string folderNamed(std::string_view name, std::string_view directory) {
  while (!directory.empty()) {
    const auto slash = directory.rfind('/');
    if (slash == std::string_view::npos) break;
    if (directory.substr(slash + 1) == name) return std::string(directory);
    directory = directory.substr(0, slash);
  }
  return {};
}

/// Where each server's project lies. A service may bear its project's name: then the folder around it counts,
/// which another server of the project tells.
std::vector<std::string> foldersOf(const DevProject& project) {
  std::vector<std::string> folders;
  for (const auto& server : project.servers) folders.push_back(folderNamed(server.project, server.directory));
  for (auto& folder : folders)
    for (const auto& other : folders)
      if (!other.empty() && isBelow(folder, other)) folder = other;
  return folders;
}

std::string detailOf(const DevServer& server, const std::string& project) {
  if (isBelow(server.directory, project))
    return server.directory.substr(project.size() + 1) + " · " + server.runtime;
  return server.runtime == server.name ? std::string() : server.runtime;
}

void fillActivity(ServersPage::Server& row, const DevServer& server, Date now) {
  using enum ServersPage::Activity;
  const auto span = now - server.lastActive;
  row.activity = isIdle(server, now) ? idle : span < justNow ? active : quiet;
  // Only what counts as idle is called so.
  row.activityWords = row.activity == active
                          ? localized("active")
                          : localized(row.activity == idle ? "idle for {duration}" : "quiet for {duration}",
                                      {{"duration", Format::duration(span)}});
}

std::string spokenServer(const ServersPage::Server& row, const DevServer& server) {
  auto words = row.name;
  if (!row.detail.empty()) words += ", " + row.detail;
  for (const auto port : server.ports)
    words += ", " + localized("port {port}", {{"port", std::to_string(port)}});
  return words + ", " + spokenFigure(Unit::memory, double(server.memory)) + ", " +
         spokenFigure(Unit::corePercent, server.cpu) + ", " + row.activityWords;
}

ServersPage::Server rowOf(const DevServer& server, const std::string& project, Date now) {
  ServersPage::Server row{.key = std::to_string(server.pid) + " since " + rfc3339(server.startedAt),
                          .name = server.name,
                          .runtime = server.runtime,
                          .detail = detailOf(server, project),
                          .directory = server.directory,
                          .ports = {},
                          .memory = Format::memory(double(server.memory)),
                          .cpu = Format::figure(Unit::corePercent, server.cpu),
                          .running = Format::duration(now - server.startedAt),
                          .activityWords = {},
                          .stop = {.pid = server.pid, .startedAt = server.startedAt},
                          .spoken = {}};
  for (const auto port : server.ports) {
    const auto number = std::to_string(port);
    row.ports.push_back(
        {port, "http://localhost:" + number,
         localized("Open port {port} of {server}", {{"port", number}, {"server", server.name}})});
  }
  fillActivity(row, server, now);
  row.spoken = spokenServer(row, server);
  return row;
}

ServersPage::Project projectOf(const DevProject& project, const std::string& home, Date now) {
  ServersPage::Project shown{
      .name = project.name, .folders = {}, .folderWords = {}, .memory = {}, .servers = {}};
  const auto folders = foldersOf(project);
  double memory = 0;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const auto& server = project.servers[i];
    memory += double(server.memory);
    shown.servers.push_back(rowOf(server, folders[i], now));
    if (!folders[i].empty() && std::ranges::find(shown.folders, folders[i]) == shown.folders.end())
      shown.folders.push_back(folders[i]);
  }
  if (shown.folders.size() == 1) shown.folderWords = tildePath(shown.folders.front(), home);
  shown.memory = Format::memory(memory);
  return shown;
}

double memoryOf(const std::vector<DevServer>& servers) {
  double memory = 0;
  for (const auto& server : servers) memory += double(server.memory);
  return memory;
}

std::optional<ServersPage::Idle> idleOf(const std::vector<DevServer>& idle) {
  if (idle.empty()) return std::nullopt;
  const auto size = Format::memory(memoryOf(idle));
  return ServersPage::Idle{counted(std::int64_t(idle.size()), "1 dev server is running but idle",
                                   "{n} dev servers are running but idle"),
                           idle.size() == 1 ? localized("Stopping it frees {size}", {{"size", size}})
                                            : localized("Stopping them frees {size}", {{"size", size}})};
}

} // namespace

ServersPage serversPage(const Model& model, const std::string& home) {
  const auto now = model.snapshot->date;
  const auto& projects = *model.projects;
  ServersPage page{.isMeasured = model.projects.version() > 0 || !projects.empty(), .summary = {}};
  std::int64_t count = 0;
  double memory = 0;
  for (const auto& project : projects) {
    page.projects.push_back(projectOf(project, home, now));
    count += std::int64_t(project.servers.size());
    memory += memoryOf(project.servers);
  }
  if (count > 0) page.summary = counted(count, "1 server", "{n} servers") + ", " + Format::memory(memory);
  page.idle = idleOf(idleServers(projects, now));
  return page;
}

ServersPage settled(ServersPage page, const ServersPage& before) {
  auto kept = page.projects;
  if (kept.size() != before.projects.size()) return page;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const auto found = std::ranges::find(page.projects, before.projects[i].name, &ServersPage::Project::name);
    if (found == page.projects.end()) return page;
    kept[i] = *found;
  }
  page.projects = std::move(kept);
  return page;
}

} // namespace korvell
