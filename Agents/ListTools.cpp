// The tools "alerts", "dev_servers" and "startup_items".

#include "Agents/ReadingTools.h"
#include "Core/DevServers/DevServerRules.h"

namespace korvell {

namespace {

constexpr std::int64_t usualItems = 20, mostItems = 100;

// alerts

struct AlertsAnswer {
  std::vector<HealthAlert> alerts; ///< newest first
  std::optional<std::string> nextCursor;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"alerts", &AlertsAnswer::alerts}, Field{"nextCursor", &AlertsAnswer::nextCursor},
                      Field{"source", &AlertsAnswer::source}};
  }
};

Result<Value> readAlerts(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualItems);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"alerts"});
  const auto alerts = reading.alerts();
  return toValue(AlertsAnswer{page->cut(alerts), page->next(alerts.size()),
                              reading.source({"Alerts need a running Korvell."})});
}

// dev_servers

struct ServerFigures {
  ProcessID pid = 0;
  std::string name, project, directory, runtime;
  std::vector<int> ports;
  std::uint64_t memory = 0;
  double cpu = 0;
  Date startedAt;
  std::optional<bool> isIdle; ///< absent where nobody followed it
  std::optional<std::int64_t> idleMinutes;
  std::string handle;

  static constexpr auto fields() {
    return std::tuple{Field{"pid", &ServerFigures::pid},
                      Field{"name", &ServerFigures::name},
                      Field{"project", &ServerFigures::project},
                      Field{"directory", &ServerFigures::directory},
                      Field{"runtime", &ServerFigures::runtime},
                      Field{"ports", &ServerFigures::ports},
                      Field{"memory", &ServerFigures::memory, Unit::memory},
                      Field{"cpu", &ServerFigures::cpu, Unit::corePercent},
                      Field{"startedAt", &ServerFigures::startedAt},
                      Field{"isIdle", &ServerFigures::isIdle},
                      Field{"idleMinutes", &ServerFigures::idleMinutes, Unit::minutes},
                      Field{"handle", &ServerFigures::handle}};
  }
};

struct ServersAnswer {
  std::vector<ServerFigures> servers; ///< by project
  std::optional<std::string> idleHandle;
  std::optional<std::string> nextCursor;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{
        Field{"servers", &ServersAnswer::servers}, Field{"idleHandle", &ServersAnswer::idleHandle},
        Field{"nextCursor", &ServersAnswer::nextCursor}, Field{"source", &ServersAnswer::source}};
  }
};

ServerFigures figuresOf(const DevServer& server, bool isFollowed, Readings& readings) {
  ServerFigures figures{.pid = server.pid,
                        .name = server.name,
                        .project = server.project,
                        .directory = server.directory,
                        .runtime = server.runtime,
                        .ports = server.ports,
                        .memory = server.memory,
                        .cpu = server.cpu,
                        .startedAt = server.startedAt,
                        .handle = readings.handleOf(server)};
  if (!isFollowed) return figures;
  const auto now = readings.now();
  figures.isIdle = isIdle(server, now);
  figures.idleMinutes = std::max(std::int64_t{0}, std::int64_t((now - server.lastActive).count() / 60));
  return figures;
}

Result<Value> readServers(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualItems);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"projects"});
  const auto projects = reading.projects();
  std::vector<DevServer> servers;
  for (const auto& project : projects)
    servers.insert(servers.end(), project.servers.begin(), project.servers.end());
  ServersAnswer answer;
  for (const auto& server : page->cut(servers))
    answer.servers.push_back(figuresOf(server, reading.isKeepers(), readings));
  auto idle = reading.isKeepers() ? idleServers(projects, readings.now()) : std::vector<DevServer>();
  if (!idle.empty())
    answer.idleHandle = readings.services().handles.give({StopIdleServersRequest{std::move(idle)}});
  answer.nextCursor = page->next(servers.size());
  answer.source = reading.source({"Which servers are idle needs a running Korvell."});
  return toValue(answer);
}

// startup_items

struct StartupAnswer {
  std::uint32_t count = 0, leftovers = 0;
  std::vector<StartupItem> items;
  std::optional<std::string> nextCursor;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"count", &StartupAnswer::count}, Field{"leftovers", &StartupAnswer::leftovers},
                      Field{"items", &StartupAnswer::items}, Field{"nextCursor", &StartupAnswer::nextCursor},
                      Field{"source", &StartupAnswer::source}};
  }
};

Result<Value> readStartupItems(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualItems);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"startupItems"});
  auto items = reading.startupItems();
  const auto leftovers = std::ranges::count_if(items, &StartupItem::isLeftover);
  if (flagOf(arguments, "leftovers"))
    std::erase_if(items, [](const StartupItem& item) { return !item.isLeftover; });
  return toValue(StartupAnswer{std::uint32_t(items.size()), std::uint32_t(leftovers), page->cut(items),
                               page->next(items.size()), reading.source()});
}

} // namespace

ReadingTool alertsTool() {
  return {"alerts",
          "Alerts",
          "What Korvell alerted about, the newest first.",
          schema::object({ResultPage::limit(mostItems, usualItems), ResultPage::cursor()}),
          schema::of<AlertsAnswer>(),
          readAlerts};
}

ReadingTool devServersTool() {
  return {"dev_servers",
          "Development servers",
          "Processes started from a project folder that listen on a TCP port, each with a handle for "
          "stop_server; idleHandle stands for all that did nothing for half an hour, for stop_idle_servers.",
          schema::object({ResultPage::limit(mostItems, usualItems), ResultPage::cursor()}),
          schema::of<ServersAnswer>(),
          readServers};
}

ReadingTool startupItemsTool() {
  return {"startup_items",
          "Startup items",
          "What the system starts by itself. A leftover names a program that no longer exists.",
          schema::object({{"leftovers", schema::boolean("Only leftovers")},
                          ResultPage::limit(mostItems, usualItems),
                          ResultPage::cursor()}),
          schema::of<StartupAnswer>(),
          readStartupItems};
}

} // namespace korvell
