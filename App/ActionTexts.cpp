#include "App/ActionTexts.h"

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Startup/StartupScanner.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace korvell {

// Applications and processes

namespace {

std::string withID(const std::string& name, ProcessID pid) { return fmt::format("{} (PID {})", name, pid); }

std::vector<AppUsage> ofProcess(const std::vector<AppUsage>& apps, ProcessID pid) {
  std::vector<AppUsage> found;
  for (const auto& app : apps)
    for (const auto& process : app.processes)
      if (process.pid == pid)
        found.push_back(
            {.id = app.id, .name = process.name, .bundlePath = app.bundlePath, .processes = {process}});
  return found;
}

/// Case is told apart only where that helps.
std::vector<AppUsage> ofName(const std::vector<AppUsage>& apps, std::string_view name) {
  std::vector<AppUsage> exact, alike;
  for (const auto& app : apps) {
    if (app.id == name || app.name == name) exact.push_back(app);
    if (lowercased(app.name) == lowercased(name)) alike.push_back(app);
  }
  return exact.empty() ? alike : exact;
}

std::string processName(const std::vector<AppUsage>& apps, ProcessID pid) {
  const auto found = ofProcess(apps, pid);
  return found.empty() ? localized("a process") : found.front().name;
}

std::string nameOf(const QuitRequest& request, const std::vector<AppUsage>& apps) {
  if (request.name) return *request.name;
  if (request.processes.empty()) return localized("a process");
  const auto pid = request.processes.front().pid;
  return withID(processName(apps, pid), pid);
}

std::string quitMessage(const std::string& name, std::size_t count, bool force) {
  if (force)
    return count == 1
               ? localized("{name} will be ended at once. Unsaved work is lost.", {{"name", name}})
               : localized("{name} and its {count} processes will be ended at once. Unsaved work is lost.",
                           {{"name", name}, {"count", std::to_string(count)}});
  return count == 1 ? localized("{name} will be asked to quit.", {{"name", name}})
                    : localized("The {count} processes of {name} will be asked to quit.",
                                {{"name", name}, {"count", std::to_string(count)}});
}

} // namespace

Result<QuitChoice> chooseToQuit(const std::vector<AppUsage>& apps, std::string_view what) {
  const auto pid = parseInteger<ProcessID>(what);
  const auto found = pid ? ofProcess(apps, *pid) : ofName(apps, what);
  if (found.empty() && pid)
    return Failure{localized("There is no process {pid}.", {{"pid", std::to_string(*pid)}})};
  if (found.empty())
    return Failure{localized("Nothing called {name} is running.", {{"name", std::string(what)}})};
  if (found.size() > 1) {
    std::string keys;
    for (const auto& app : found) keys += "\n  " + app.id;
    return Failure{localized("There are several of that name; say which one:") + keys};
  }
  const auto& app = found.front();
  if (pid) return QuitChoice{app, withID(app.name, *pid)};
  if (isSystemGroup(app))
    return Failure{localized("{name} is the system itself: end its processes one by one, by their ids.",
                             {{"name", app.name}})};
  return QuitChoice{app, app.name};
}

ActionDescription describeQuit(const QuitRequest& request, const std::vector<AppUsage>& apps) {
  const auto name = nameOf(request, apps);
  ActionDescription asked;
  asked.title = localized("Quit {name}?", {{"name", name}});
  asked.message = quitMessage(name, request.processes.size(), request.force);
  asked.button = localized(request.force ? "Force Quit" : "Quit");
  asked.isPermanent = request.force;
  // Processes which only share a name are noticed before they end.
  for (const auto& process : request.processes)
    asked.details.push_back(fmt::format("{} {}", process.pid, processName(apps, process.pid)));
  asked.about.set("name", name);
  return asked;
}

ActionAnswer answerOf(const QuitRequest& request, const QuitResult& result,
                      const std::vector<AppUsage>& apps) {
  const auto name = nameOf(request, apps);
  ActionAnswer answer;
  answer.worked = result.denied == 0 && result.sent > 0;
  answer.message = localized(result.denied > 0  ? "{name} belongs to another user."
                             : result.sent == 0 ? "{name} is not running any more."
                                                : "{name} was told to end.",
                             {{"name", name}});
  answer.json.set("name", name)
      .set("sent", result.sent)
      .set("gone", result.gone)
      .set("denied", result.denied);
  return answer;
}

// Development servers

namespace {

std::string nameOf(const DevServer& server) { return withID(server.name, server.pid); }

std::string idleLine(const DevServer& server) {
  const auto line = server.project + ": " + nameOf(server);
  if (server.ports.empty()) return line;
  return localized(server.ports.size() == 1 ? "{server}, port {ports}" : "{server}, ports {ports}",
                   {{"server", line}, {"ports", fmt::format("{}", fmt::join(server.ports, ", "))}});
}

std::uint64_t memoryOf(const std::vector<DevServer>& servers) {
  std::uint64_t memory = 0;
  for (const auto& server : servers) memory += server.memory;
  return memory;
}

} // namespace

ActionDescription describeStop(const DevServer& server) {
  return {.title = localized("Stop {name}?", {{"name", server.name}}),
          .message = localized("{server} will receive a stop signal.", {{"server", server.name}}),
          .details = {idleLine(server)},
          .button = localized("Stop"),
          .bytes = server.memory,
          .about = Value::object({{"server", toValue(server)}})};
}

ActionDescription describeStopIdle(const std::vector<DevServer>& idle) {
  ActionDescription asked;
  asked.about.set("servers", toValue(idle));
  asked.button = localized("Stop");
  asked.isHarmless = idle.empty();
  if (idle.empty()) {
    asked.message = localized("No dev server is idle.");
    return asked;
  }
  const auto count = std::to_string(idle.size());
  asked.bytes = memoryOf(idle);
  const auto size = Format::memory(double(*asked.bytes));
  asked.title = idle.size() == 1 ? localized("Stop 1 idle server?")
                                 : localized("Stop {n} idle servers?", {{"n", count}});
  asked.message =
      idle.size() == 1
          ? localized("1 dev server is running but idle. Stopping it frees {size}.", {{"size", size}})
          : localized("{n} dev servers are running but idle. Stopping them frees {size}.",
                      {{"n", count}, {"size", size}});
  for (const auto& server : idle) asked.details.push_back(idleLine(server));
  return asked;
}

ActionAnswer answerOf(const DevServer& server, StopOutcome outcome) {
  const auto sentence =
      std::ranges::find(allCases<StopOutcome>(), outcome, &EnumCase<StopOutcome>::value)->title;
  return {.worked = hasStopped(outcome),
          .message = localized(sentence, {{"server", nameOf(server)}}),
          .json = Value::object({{"server", toValue(server)}, {"outcome", rawValue(outcome)}})};
}

ActionAnswer answerOf(const std::vector<DevServer>& stopped, std::span<const StopOutcome> outcomes,
                      const std::vector<DevServer>& spared) {
  ActionAnswer answer;
  for (const auto& server : spared)
    answer.problems.push_back(
        localized("{server} is no longer idle and was left alone.", {{"server", nameOf(server)}}));
  Value results = Value::array();
  std::vector<DevServer> gone;
  for (std::size_t i = 0; i < stopped.size(); ++i) {
    auto one = answerOf(stopped[i], outcomes[i]);
    if (one.worked)
      gone.push_back(stopped[i]);
    else
      answer.problems.push_back(std::move(one.message));
    results.append(std::move(one.json));
  }
  const auto size = Format::memory(double(memoryOf(gone)));
  answer.worked = gone.size() == stopped.size();
  answer.message = stopped.empty() && spared.empty() ? localized("No dev server is idle.")
                   : gone.size() == 1 ? localized("1 server stopped. {size} freed.", {{"size", size}})
                                      : localized("{n} servers stopped. {size} freed.",
                                                  {{"n", std::to_string(gone.size())}, {"size", size}});
  answer.json.set("stopped", std::move(results)).set("spared", toValue(spared));
  return answer;
}

// Startup items

ActionDescription describeRemoval(const StartupItem& item) {
  return {.title = localized("Remove {label}?", {{"label", item.label}}),
          .message = StartupScanner::confirmation(item),
          .details = {item.plistPath},
          .button = localized("Move to Trash"),
          .about = Value::object({{"item", toValue(item)}})};
}

ActionAnswer answerOf(const StartupItem& item, const Outcome& removed) {
  ActionAnswer answer{.worked = bool(removed), .json = Value::object({{"item", toValue(item)}})};
  answer.message =
      removed ? localized("Moved {path} to the Trash.", {{"path", item.plistPath}}) : removed.reason();
  answer.json.set("outcome", removed ? "trashed" : "failed");
  if (!removed) answer.json.set("error", removed.reason());
  return answer;
}

// Storage

ActionDescription describeCleanup(const PendingCleanup& pending, std::vector<std::string> steps) {
  std::int64_t bytes = 0;
  for (const auto& item : pending.items) bytes = checkedSum(bytes, item.bytes);
  return {.title = pending.title(),
          .message = pending.message(),
          .details = std::move(steps),
          .button = pending.button(),
          .isPermanent = pending.isPermanent(),
          .bytes = std::uint64_t(std::max<std::int64_t>(0, bytes)),
          .about = Value::object({{"items", toValue(pending.items)}})};
}

Value cleanupValue(const ActionDescription& asked) {
  const auto* items = asked.about.find("items");
  return Value::object({{"title", asked.title},
                        {"message", asked.message},
                        {"items", items ? *items : Value::array()},
                        {"steps", toValue(asked.details)}});
}

} // namespace korvell
