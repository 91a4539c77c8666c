// korvell port: who listens on a TCP port, and how to stop it.

#include "App/Assembly.h"
#include "App/PortListeners.h"
#include "Base/Format.h"
#include "Base/LocalTime.h"
#include "Base/Text.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Suggestions.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int highestPort = 65535;

using Lines = std::vector<std::pair<std::string, std::string>>;

std::string sinceText(const Context& context, Date instant) {
  const auto& zone = *context.host.zone;
  return shownDay(localDay(zone, instant)) + " " + clockText(zone, instant);
}

std::string durationText(Seconds span) {
  return span < Seconds{60} ? localized("less than a minute") : Format::duration(span);
}

std::string activityText(const DevServer& server, Date now) {
  const auto span = now - server.lastActive;
  if (span < Seconds{60}) return localized("now");
  const auto ago = localized("{duration} ago", {{"duration", Format::duration(span)}});
  return isIdle(server, now) ? localized("{time}: idle", {{"time", ago}}) : ago;
}

Lines linesOf(const Context& context, const PortListener& listener, bool isIdleKnown) {
  const Date now = context.clock.now();
  Lines lines{
      {localized("Process"), fmt::format("{} (PID {})", escapedControls(listener.name), listener.pid)}};
  if (!listener.app.empty() && listener.app != listener.name)
    lines.emplace_back(localized("Application"), escapedControls(listener.app));
  if (!listener.path.empty()) lines.emplace_back(localized("Program"), escapedControls(listener.path));
  if (const auto& server = listener.server) {
    lines.emplace_back(localized("Project"), escapedControls(server->project));
    lines.emplace_back(localized("Folder"), escapedControls(server->directory));
    lines.emplace_back(localized("Memory"), Format::memory(double(server->memory)));
  }
  if (listener.startedAt)
    lines.emplace_back(
        localized("Running for"),
        localized("{duration}, since {time}", {{"duration", durationText(now - *listener.startedAt)},
                                               {"time", sinceText(context, *listener.startedAt)}}));
  if (listener.server && isIdleKnown)
    lines.emplace_back(localized("At work"), activityText(*listener.server, now));
  lines.emplace_back(localized("Stop it"), stopCommand(listener));
  return lines;
}

void say(Context& context, std::string_view text) {
  for (const auto& line : wrapped(text, std::min(context.out.columns(), widestSummary)))
    context.out.line(line);
}

void print(Context& context, const PortUse& use, bool isIdleKnown) {
  const auto port = std::to_string(use.port);
  if (use.listeners.empty() && use.isTaken == true)
    return say(
        context,
        localized(
            "Somebody listens on port {port}, but the system does not tell you who: a process of another "
            "user, or one in a container. An administrator can ask with \"sudo korvell port {port}\".",
            {{"port", port}}));
  if (use.listeners.empty())
    return say(context, use.isTaken
                            ? localized("Nobody listens on port {port}.", {{"port", port}})
                            : localized("No process of yours listens on port {port}.", {{"port", port}}));
  for (const auto& listener : use.listeners) {
    if (&listener != &use.listeners.front()) context.out.line();
    printLabelled(context.out, linesOf(context, listener, isIdleKnown), 13);
  }
}

int runPort(Context& context, const Arguments& arguments) {
  const auto port = parseInteger<int>(*arguments.text("PORT"));
  if (!port || *port < 1 || *port > highestPort)
    return fail(context, localized("PORT is a number from 1 to 65535."), exitUsage);
  Assembly assembly(context.host, context.clock);
  auto use = lookUpPort(assembly, *context.host.processes, *port);
  bool isIdleKnown = false;
  const auto isServer = [](const PortListener& listener) { return listener.server.has_value(); };
  if (std::ranges::any_of(use.listeners, isServer)) {
    std::vector<DevProject> followed;
    const auto state = askKeeper(context, {"projects"});
    const auto* told = state ? state->find("projects") : nullptr;
    isIdleKnown = told && fromValue(*told, followed) && takeActivity(use, followed);
  }
  if (arguments.flag("--json"))
    printJSON(context.out, portValue(use, isIdleKnown, context.clock.now()));
  else
    print(context, use, isIdleKnown);
  return use.isTaken == true ? exitOK : exitFailed;
}

} // namespace

Command portCommand() {
  return {"port",
          "Show who listens on a TCP port; exit with 1 when nobody does",
          {{"PORT", Option::Kind::positional, "Its number", {}, true, suggestedPorts}, jsonOption()},
          runPort};
}

} // namespace korvell
