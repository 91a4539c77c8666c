// korvell quit: ends an application or a process, after asking, and never another one that took over its id.

#include "App/Assembly.h"
#include "Base/Text.h"
#include "Core/Machine/Quit.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"

#include <algorithm>
#include <fmt/format.h>
#include <span>
#include <unistd.h>

namespace korvell {

namespace {

constexpr std::size_t mostListed = 20;
constexpr Seconds keeperPatience{3};

/// By process id, by key, or by name, case told apart only where that helps.
std::vector<AppUsage> matching(const std::vector<AppUsage>& apps, const std::string& what) {
  std::vector<AppUsage> exact, alike;
  if (const auto pid = parseInteger<ProcessID>(what)) {
    for (const auto& app : apps)
      for (const auto& process : app.processes)
        if (process.pid == *pid)
          exact.push_back(
              {.id = app.id, .name = process.name, .bundlePath = app.bundlePath, .processes = {process}});
    return exact;
  }
  for (const auto& app : apps) {
    if (app.id == what || app.name == what) exact.push_back(app);
    if (lowercased(app.name) == lowercased(what)) alike.push_back(app);
  }
  return exact.empty() ? alike : exact;
}

std::string nameOf(const AppUsage& app, bool asProcess) {
  if (asProcess) return fmt::format("{} (PID {})", escapedControls(app.name), app.processes.front().pid);
  return escapedControls(app.name);
}

std::string question(const std::string& name, std::size_t count, bool force) {
  if (force)
    return count == 1
               ? localized("{name} will be ended at once. Unsaved work is lost.", {{"name", name}})
               : localized("{name} and its {count} processes will be ended at once. Unsaved work is lost.",
                           {{"name", name}, {"count", std::to_string(count)}});
  return count == 1 ? localized("{name} will be asked to quit.", {{"name", name}})
                    : localized("The {count} processes of {name} will be asked to quit.",
                                {{"name", name}, {"count", std::to_string(count)}});
}

/// Who gets the signal, so that processes which only share a name are noticed before they end.
std::string listOf(const std::vector<QuitTarget>& targets, const AppUsage& app) {
  if (targets.size() < 2) return {};
  std::string list;
  for (const auto& target : std::span(targets).first(std::min(targets.size(), mostListed))) {
    const auto process = std::ranges::find(app.processes, target.pid, &ProcessUsage::pid);
    list += fmt::format("\n  {} {}", target.pid, escapedControls(process->name));
  }
  if (targets.size() > mostListed)
    list += "\n  " + localized("and {count} more", {{"count", std::to_string(targets.size() - mostListed)}});
  return list;
}

/// So that what the keeper shows follows at once; nothing when there is none, or none that does it.
std::optional<QuitResult> quitThroughKeeper(Context& context, const std::vector<QuitTarget>& targets,
                                            bool force) {
  Value processes = Value::array();
  for (const auto& target : targets)
    processes.append(
        Value::object({{"pid", std::int64_t{target.pid}}, {"start", std::int64_t(target.start)}}));
  const auto answer = tellKeeper(
      context, Value::object({{"do", "quit"}, {"processes", std::move(processes)}, {"force", force}}),
      keeperPatience);
  const auto count = [&](const char* name) {
    const auto* value = answer ? answer->find(name) : nullptr;
    return value ? value->asInt() : std::nullopt;
  };
  const auto sent = count("sent"), gone = count("gone"), denied = count("denied");
  if (!sent || !gone || !denied) return std::nullopt;
  return QuitResult{int(*sent), int(*gone), int(*denied)};
}

int report(Context& context, bool json, const std::string& name, const QuitResult& result) {
  if (json)
    printJSON(context.out, Value::object({{"name", name},
                                          {"sent", std::int64_t{result.sent}},
                                          {"gone", std::int64_t{result.gone}},
                                          {"denied", std::int64_t{result.denied}}}));
  if (result.denied > 0) return fail(context, localized("{name} belongs to another user.", {{"name", name}}));
  if (result.sent == 0) return fail(context, localized("{name} is not running any more.", {{"name", name}}));
  if (!json) context.out.line(localized("{name} was told to end.", {{"name", name}}));
  return exitOK;
}

int runQuit(Context& context, const Arguments& arguments) {
  Assembly assembly(context.host, context.clock);
  const auto sampler = assembly.makeProcessSampler();
  const auto what = *arguments.text("APP|PID");
  const bool force = arguments.flag("--force");
  const auto apps = sampler->sample({});
  const auto found = matching(apps, what);
  if (found.empty())
    return fail(context, localized("Nothing called {name} is running", {{"name", escapedControls(what)}}));
  if (found.size() > 1) {
    std::string keys;
    for (const auto& app : found) keys += "\n  " + escapedControls(app.id);
    return fail(context, localized("There are several of that name; say which one:") + keys);
  }
  const auto& app = found.front();
  const bool asProcess = parseInteger<ProcessID>(what).has_value();
  const auto name = nameOf(app, asProcess);
  if (!asProcess && isSystemGroup(app))
    return fail(context, localized("{name} is the system itself: end its processes one by one, by their ids.",
                                   {{"name", name}}));
  const auto targets = quitTargets(app, startTimes(app, *sampler), force, getpid());
  if (targets.empty()) return fail(context, localized("{name} is Korvell itself.", {{"name", name}}));
  if (!confirmed(context, arguments, question(name, targets.size(), force) + listOf(targets, app)))
    return exitFailed;
  const auto told = quitThroughKeeper(context, targets, force);
  const auto result = told ? *told : quitProcesses(targets, force, assembly.quitServices());
  return report(context, arguments.flag("--json"), name, result);
}

} // namespace

Command quitCommand() {
  return {"quit",
          "Quit an application or end a process, after asking",
          {{"APP|PID", Option::Kind::positional, "Its name, its key, or a process id", {}, true},
           {"--force", Option::Kind::flag, "End it at once, with all its processes"},
           yesOption(),
           jsonOption()},
          runQuit};
}

} // namespace korvell
