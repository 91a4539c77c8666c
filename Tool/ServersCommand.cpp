// korvell servers: the development servers by project, and stopping them.

#include "App/JSONDocuments.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"
#include "Tool/AskKeeper.h"
#include "Tool/CommandActions.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Measure.h"
#include "Tool/Suggestions.h"
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
    printJSON(context.out, serversValue(found.projects, found.fromKeeper));
  else
    printServers(context, found);
  return exitOK;
}

// Stopping

int runStop(Context& context, const Arguments& arguments) {
  const auto pid = parseInteger<ProcessID>(*arguments.text("PID"));
  if (!pid) return fail(context, localized("PID is a process id."), exitUsage);
  CommandActions actions(context, CommandActions::Where::keeperOrHere);
  const auto described = actions.describe(StopServerRequest{.pid = *pid});
  if (!described) return fail(context, escapedControls(described.reason()));
  const auto& asked = described->description;
  if (!actions.isConfirmed(arguments, escapedControls(asked.message))) return exitFailed;
  return tell(context, arguments, asked, actions.perform(described->request));
}

int runStopIdle(Context& context, const Arguments& arguments) {
  CommandActions actions(context, CommandActions::Where::keeperOrHere);
  if (!actions.isKeepers()) return context.failure ? exitFailed : fail(context, needsKeeper());
  const auto described = actions.describe(StopIdleServersRequest{});
  if (!described) return fail(context, escapedControls(described.reason()));
  const auto& asked = described->description;
  if (!asked.isHarmless &&
      !actions.isConfirmed(arguments, withDetails(asked, escapedControls(asked.message))))
    return exitFailed;
  return tell(context, arguments, asked, actions.perform(described->request), Telling::sum);
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
            {{"PID", Option::Kind::positional, "The process to stop", {}, true, suggestedServers},
             yesOption(),
             jsonOption()},
            runStop},
           {"stop-idle",
            "Stop all that did nothing for half an hour",
            {yesOption(), jsonOption()},
            runStopIdle}}};
}

} // namespace korvell
