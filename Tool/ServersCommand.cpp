// korvell servers: the development servers by project, and stopping them.

#include "App/Assembly.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/HeadlessLoop.h"
#include "Tool/Measure.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

/// What the keeper knows, or what this command found by itself.
struct Found {
  std::vector<DevProject> projects;
  bool fromKeeper = false;
  bool keeperIsRunning = false; ///< where it told nothing, that was said
};

/// The first signal, three seconds, the second one, and some time for a busy keeper.
constexpr Seconds stopPatience{8};

Found findServers(Context& context) {
  Found found;
  const auto state = askKeeper(context, {"projects"});
  const auto* told = state ? state->find("projects") : nullptr;
  found.fromKeeper = told && fromValue(*told, found.projects);
  found.keeperIsRunning = state.isRunning();
  if (!found.fromKeeper) found.projects = measure(context).projects.value_or(std::vector<DevProject>());
  return found;
}

std::string needsKeeper() {
  return localized("Idle times need a running Korvell: the application, or \"korvell run\".");
}

std::string portsText(const std::vector<int>& ports) {
  std::string text;
  for (int port : ports) text += (text.empty() ? "" : ",") + std::to_string(port);
  return text;
}

std::string folderText(const std::string& folder, const std::string& home) {
  return folder.starts_with(home + "/") ? "~" + folder.substr(home.size()) : folder;
}

void printHint(Context& context, std::string_view text) {
  for (const auto& line : wrapped(text, context.out.columns()))
    context.out.line(context.out.ink(Ink::dim, line));
}

void printServers(Context& context, const Found& found) {
  if (found.projects.empty()) {
    context.out.line(localized("No dev servers running"));
    printHint(context,
              localized("Anything you start from a project folder that listens on a port shows up here, "
                        "grouped by project."));
    return;
  }
  using Align = Column::Align;
  std::vector<Column> columns{{.title = localized("Project"), .flexible = true},
                              {.title = localized("Server"), .flexible = true},
                              {.title = "PID", .align = Align::right},
                              {.title = localized("Ports"), .flexible = true, .minimum = 5},
                              {.title = localized("Memory"), .align = Align::right},
                              {.title = cpuColumnTitle(CPUScale::core), .align = Align::right}};
  if (found.fromKeeper) columns.push_back({.title = localized("Idle"), .align = Align::right});
  columns.push_back({.title = localized("Folder"), .flexible = true});
  Table table(columns);
  const Date now = context.clock.now();
  for (const DevProject& project : found.projects)
    for (const DevServer& server : project.servers) {
      const bool first = &server == &project.servers.front();
      const auto name =
          server.runtime == server.name ? server.name : server.name + " (" + server.runtime + ")";
      std::vector<Table::Cell> cells{first ? Table::Cell(project.name, Ink::bold) : Table::Cell(""),
                                     name,
                                     std::to_string(server.pid),
                                     portsText(server.ports),
                                     Format::memory(double(server.memory)),
                                     Format::percent(server.cpu)};
      if (found.fromKeeper)
        cells.push_back(
            {Format::duration(now - server.lastActive), isIdle(server, now) ? Ink::warning : Ink::plain});
      cells.push_back({folderText(server.directory, context.host.folders.home), Ink::dim});
      table.row(std::move(cells));
    }
  table.print(context.out);
  if (!found.fromKeeper && !found.keeperIsRunning) printHint(context, needsKeeper());
}

int listServers(Context& context, const Arguments& arguments) {
  const auto found = findServers(context);
  if (arguments.flag("--json"))
    printJSON(context.out,
              Value::object({{"projects", toValue(found.projects)}, {"idleKnown", found.fromKeeper}}));
  else
    printServers(context, found);
  return exitOK;
}

// Stopping

/// The keeper does it; nothing when it does not answer or refuses.
std::optional<StopOutcome> stopThroughKeeper(Context& context, const DevServer& server) {
  const auto answer = tellKeeper(context,
                                 Value::object({{"do", "stopServer"},
                                                {"pid", std::int64_t{server.pid}},
                                                {"startedAt", rfc3339(server.startedAt)}}),
                                 stopPatience);
  const auto* told = answer ? answer->find("outcome") : nullptr;
  if (!told || !told->asString()) return answer ? std::optional(StopOutcome::gone) : std::nullopt;
  return fromRawValue<StopOutcome>(*told->asString());
}

std::optional<StopOutcome> stopHere(Context& context, const DevServer& server) {
  Assembly assembly(context.host, context.clock);
  HeadlessLoop loop;
  const auto sampler = assembly.makeSampler(nullptr);
  ProcessActions actions(*sampler, assembly.quitServices());
  std::optional<StopOutcome> result;
  sampler->queue().async([&] {
    actions.stopServer(server.pid, server.startedAt, [&](StopOutcome outcome) {
      loop.main().async([&loop, &result, outcome] {
        result = outcome;
        loop.quit();
      });
    });
  });
  loop.run(); // an interrupt ends the wait; the first signal has been sent by then
  return result;
}

/// Stops one and says how it went; true when it has stopped.
std::optional<StopOutcome> stopServer(Context& context, const Found& found, const DevServer& server) {
  return found.fromKeeper ? stopThroughKeeper(context, server) : stopHere(context, server);
}

std::string nameOf(const DevServer& server) {
  return fmt::format("{} (PID {})", escapedControls(server.name), server.pid);
}

std::string sentence(const DevServer& server, std::optional<StopOutcome> outcome) {
  std::string_view text = "{server} may still be running.";
  for (const auto& row : allCases<StopOutcome>())
    if (row.value == outcome) text = row.title;
  return localized(text, {{"server", nameOf(server)}});
}

Value outcomeValue(const DevServer& server, std::optional<StopOutcome> outcome) {
  Value value = Value::object({{"server", toValue(server)}});
  if (outcome) value.set("outcome", rawValue(*outcome));
  return value;
}

int runStop(Context& context, const Arguments& arguments) {
  const auto pid = parseInteger<ProcessID>(*arguments.text("PID"));
  if (!pid) return fail(context, localized("PID is a process id"), exitUsage);
  const auto found = findServers(context);
  for (const DevProject& project : found.projects)
    for (const DevServer& server : project.servers) {
      if (server.pid != *pid) continue;
      const auto question =
          localized("{server} will receive a stop signal.", {{"server", escapedControls(server.name)}});
      if (!confirmed(context, arguments, question)) return exitFailed;
      const auto outcome = stopServer(context, found, server);
      if (arguments.flag("--json")) printJSON(context.out, outcomeValue(server, outcome));
      if (!outcome || !hasStopped(*outcome)) return fail(context, sentence(server, outcome));
      if (!arguments.flag("--json")) context.out.line(sentence(server, outcome));
      return exitOK;
    }
  return fail(context, localized("{pid} is none of the servers in \"korvell servers\"",
                                 {{"pid", std::to_string(*pid)}}));
}

std::string idleBanner(const std::vector<DevServer>& idle, std::uint64_t memory) {
  const auto count = idle.size() == 1 ? localized("1 dev server is running but idle")
                                      : localized("{count} dev servers are running but idle",
                                                  {{"count", std::to_string(idle.size())}});
  std::string text = count + ". " + localized("Stopping them frees ") + Format::memory(double(memory)) + ".";
  for (const DevServer& server : idle)
    text += "\n  " + escapedControls(server.project) + ": " + nameOf(server);
  return text;
}

int runStopIdle(Context& context, const Arguments& arguments) {
  const auto found = findServers(context);
  if (!found.fromKeeper) return found.keeperIsRunning ? exitFailed : fail(context, needsKeeper());
  const auto idle = idleServers(found.projects, context.clock.now());
  std::uint64_t memory = 0;
  for (const DevServer& server : idle) memory += server.memory;
  if (idle.empty() && !arguments.flag("--json")) {
    context.out.line(localized("No dev server is idle."));
    return exitOK;
  }
  if (!idle.empty() && !confirmed(context, arguments, idleBanner(idle, memory))) return exitFailed;

  // The answer may have taken hours: what was put to work or has ended meanwhile is left alone.
  const auto present = findServers(context);
  if (!present.fromKeeper) return present.keeperIsRunning ? exitFailed : fail(context, needsKeeper());
  const auto still = stillIdle(idle, present.projects, context.clock.now());
  Value spared = Value::array();
  for (const DevServer& server : idle)
    if (std::ranges::find(still, server.pid, &DevServer::pid) == still.end()) {
      spared.append(toValue(server));
      context.err.line("korvell: " + localized("{server} is no longer idle and was left alone.",
                                               {{"server", nameOf(server)}}));
    }

  Value results = Value::array();
  std::size_t stopped = 0;
  memory = 0;
  for (const DevServer& server : still) {
    const auto outcome = stopServer(context, present, server);
    results.append(outcomeValue(server, outcome));
    if (outcome && hasStopped(*outcome)) {
      ++stopped;
      memory += server.memory;
    } else {
      fail(context, sentence(server, outcome));
    }
  }
  if (arguments.flag("--json"))
    printJSON(context.out, Value::object({{"stopped", results}, {"spared", spared}}));
  else
    context.out.line((stopped == 1
                          ? localized("1 server stopped. ")
                          : localized("{count} servers stopped. ", {{"count", std::to_string(stopped)}})) +
                     Format::memory(double(memory)) + localized(" freed."));
  return stopped == still.size() ? exitOK : exitFailed;
}

} // namespace

Command serversCommand() {
  return {"servers",
          "List dev servers by project, and stop them",
          {jsonOption()},
          listServers,
          {{"list", "List them with ports, memory and idle time", {jsonOption()}, listServers},
           {"stop",
            "Stop one of them: politely, and after three seconds for good",
            {{"PID", Option::Kind::positional, "The process to stop", {}, true}, yesOption(), jsonOption()},
            runStop},
           {"stop-idle",
            "Stop all that did nothing for half an hour",
            {yesOption(), jsonOption()},
            runStopIdle}}};
}

} // namespace korvell
