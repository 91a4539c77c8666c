#include "App/ModelActions.h"

#include "App/ActionTexts.h"
#include "App/JSONDocuments.h"
#include "App/SettingsCheck.h"
#include "Base/LaterSpeech.h"

#include <algorithm>
#include <unistd.h>

namespace korvell {

ModelActions::ModelActions(Queue& main, Parts parts)
    : main_(main), parts_(std::move(parts)), storage_(main, parts_.storage, parts_.makeQueue),
      settings_(parts_.defaults, main, parts_.makeQueue) {}

ModelActions::~ModelActions() { life_.cut(); }

void ModelActions::describe(const ActionRequest& request, Described done) {
  std::visit([&](const auto& asked) { tell(asked, done); }, request);
}

void ModelActions::perform(const ActionRequest& request, Performed done) {
  std::visit([&](const auto& asked) { act(asked, done); }, request);
}

void ModelActions::whenMeasured(std::function<void(AppModel&)> then) {
  auto& model = parts_.model();
  if (*model.cycle > 0) return then(model);
  model.refresh(inThisLanguage([&model, watch = life_.watch(), then = std::move(then)] {
    if (watch.get()) then(model);
  }));
}

// Applications and processes

namespace {

/// What the processes are called together: the application that all of them belong to. One process among
/// others of an application has no such name.
std::optional<std::string> sharedName(const QuitRequest& request, const std::vector<AppUsage>& apps) {
  const auto& targets = request.processes;
  const auto owns = [&](const AppUsage& app) {
    return std::ranges::all_of(targets, [&](const QuitTarget& target) {
      return std::ranges::find(app.processes, target.pid, &ProcessUsage::pid) != app.processes.end();
    });
  };
  const auto owner = std::ranges::find_if(apps, owns);
  if (targets.empty() || owner == apps.end() || isSystemGroup(*owner)) return std::nullopt;
  const bool standsForAll = targets.size() > 1 || owner->processes.size() == 1 ||
                            (!request.force && targets.front().pid == owner->mainPID);
  return standsForAll ? std::optional(owner->name) : std::nullopt;
}

} // namespace

void ModelActions::tell(const QuitRequest& request, const Described& done) {
  auto& model = parts_.model();
  // What was started or has ended since the last cycle counts too.
  model.refresh(inThisLanguage([&model, watch = life_.watch(), request, done] {
    if (!watch.get()) return;
    const auto& apps = model.snapshot->apps;
    const auto describe = [done](const QuitRequest& exact, const std::vector<AppUsage>& seen) {
      done(DescribedAction{exact, describeQuit(exact, seen)});
    };
    if (!request.app && !request.bundlePath) {
      auto exact = request;
      if (exact.name) exact.name = sharedName(exact, apps); // whoever asks does not choose the words
      return describe(exact, apps);
    }
    const auto named = std::ranges::find(apps, request.bundlePath, &AppUsage::bundlePath);
    const auto chosen = request.app           ? chooseToQuit(apps, *request.app)
                        : named != apps.end() ? chooseToQuit(apps, named->id)
                                              : chooseToQuit({}, *request.bundlePath);
    if (!chosen) return done(Failure{chosen.reason()});
    auto found = [request, chosen = *chosen, describe, done](std::vector<QuitTarget> targets) {
      if (targets.empty())
        return done(Failure{localized("{name} is Korvell itself.", {{"name", chosen.name}})});
      describe({.processes = std::move(targets), .force = request.force, .name = chosen.name}, {chosen.app});
    };
    model.targets(chosen->app, request.force, inThisLanguage(std::move(found)));
  }));
}

void ModelActions::act(const QuitRequest& request, const Performed& done) {
  auto targets = request.processes;
  std::erase_if(targets, [](const QuitTarget& target) { return target.pid == getpid(); });
  if (request.processes.empty())
    return done(ActionAnswer::refused("processes are needed, each with its pid and start"));
  auto& model = parts_.model();
  auto told = inThisLanguage([&model, request, done](const QuitResult& result) {
    done(answerOf(request, result, model.snapshot->apps));
  });
  const InLanguage own(ownLanguage());
  model.quit(std::move(targets), request.force, std::move(told));
}

// Development servers

namespace {

const DevServer* listed(const AppModel& model, const StopServerRequest& request) {
  for (const DevProject& project : *model.projects)
    for (const DevServer& server : project.servers) {
      if (server.pid != request.pid) continue;
      // Compared as it was told: a text has no more than milliseconds.
      if (!request.startedAt || rfc3339(*request.startedAt) == rfc3339(server.startedAt)) return &server;
    }
  return nullptr;
}

std::string noSuchServer() { return localized("There is no such server any more."); }

} // namespace

void ModelActions::tell(const StopServerRequest& request, const Described& done) {
  whenMeasured([request, done](AppModel& model) {
    const auto* server = listed(model, request);
    if (!server)
      return done(Failure{request.startedAt
                              ? noSuchServer()
                              : localized("{pid} is none of the servers in \"korvell servers\".",
                                          {{"pid", std::to_string(request.pid)}})});
    done(DescribedAction{StopServerRequest{server->pid, server->startedAt}, describeStop(*server)});
  });
}

void ModelActions::act(const StopServerRequest& request, const Performed& done) {
  const auto* server = request.startedAt ? listed(parts_.model(), request) : nullptr;
  if (!server) return done(ActionAnswer::refused(noSuchServer()));
  auto told =
      inThisLanguage([server = *server, done](StopOutcome outcome) { done(answerOf(server, outcome)); });
  const InLanguage own(ownLanguage());
  parts_.model().stop(*server, std::move(told));
}

void ModelActions::tell(const StopIdleServersRequest& request, const Described& done) {
  whenMeasured([&main = main_, request, done](AppModel& model) {
    const auto now = main.clock().now();
    const auto idle = request.servers ? stillIdle(*request.servers, *model.projects, now)
                                      : idleServers(*model.projects, now);
    done(DescribedAction{StopIdleServersRequest{idle}, describeStopIdle(idle)});
  });
}

namespace {

/// The stops that are under way for one request.
struct Stops {
  std::vector<DevServer> servers, spared;
  std::vector<StopOutcome> outcomes; ///< in the servers' order
  std::size_t left = 0;
  Actions::Performed done;

  void end(std::size_t place, StopOutcome outcome) {
    outcomes[place] = outcome;
    if (--left == 0) done(answerOf(servers, outcomes, spared));
  }
};

} // namespace

void ModelActions::act(const StopIdleServersRequest& request, const Performed& done) {
  if (!request.servers) return done(ActionAnswer::refused("servers are needed, as the list tells them"));
  auto& model = parts_.model();
  // The answer to a question may take hours: what was put to work or has ended meanwhile is left alone.
  const auto stops = std::make_shared<Stops>();
  stops->servers = stillIdle(*request.servers, *model.projects, main_.clock().now());
  stops->spared = *request.servers;
  std::erase_if(stops->spared, [&](const DevServer& server) {
    return std::ranges::any_of(stops->servers,
                               [&](const DevServer& idle) { return isSameServer(idle, server); });
  });
  stops->left = stops->servers.size();
  stops->outcomes.resize(stops->servers.size());
  stops->done = done;
  if (stops->servers.empty()) return done(answerOf({}, {}, stops->spared));
  const auto told =
      inThisLanguage([stops](std::size_t place, StopOutcome outcome) { stops->end(place, outcome); });
  const InLanguage own(ownLanguage());
  for (std::size_t i = 0; i < stops->servers.size(); ++i)
    model.stop(stops->servers[i], [told, i](StopOutcome outcome) { told(i, outcome); });
}

// Startup items

void ModelActions::tell(const RescanStartupItemsRequest& request, const Described& done) {
  done(DescribedAction{request,
                       {.title = localized("Look at the startup items again?"),
                        .message = localized("Nothing is changed."),
                        .button = localized("Look Again"),
                        .isHarmless = true}});
}

void ModelActions::act(const RescanStartupItemsRequest&, const Performed& done) {
  auto& model = parts_.model();
  const InLanguage own(ownLanguage());
  model.rescanStartupItems([&model, done] {
    done({.worked = true, .json = Value::object({{"startupItems", toValue(*model.startupItems)}})});
  });
}

namespace {

const StartupItem* listed(const AppModel& model, const RemoveStartupItemRequest& request) {
  const auto& items = *model.startupItems;
  const auto item = std::ranges::find_if(items, [&](const StartupItem& known) {
    return known.plistPath == request.plistPath && known.label == request.label &&
           known.program == request.program;
  });
  return item == items.end() ? nullptr : &*item;
}

std::string noSuchItem() { return localized("There is no such startup item any more."); }

} // namespace

void ModelActions::tell(const RemoveStartupItemRequest& request, const Described& done) {
  whenMeasured([request, done](AppModel& model) {
    const auto* item = listed(model, request);
    if (!item) return done(Failure{noSuchItem()});
    if (!item->isLeftover)
      return done(
          Failure{localized("{label} is no leftover: only items whose program no longer exists are removed.",
                            {{"label", item->label}})});
    done(DescribedAction{request, describeRemoval(*item)});
  });
}

void ModelActions::act(const RemoveStartupItemRequest& request, const Performed& done) {
  const auto* item = listed(parts_.model(), request);
  if (!item) return done(ActionAnswer::refused(noSuchItem()));
  auto told = inThisLanguage([item = *item, done](const Outcome& removed) { done(answerOf(item, removed)); });
  const InLanguage own(ownLanguage());
  parts_.model().remove(*item, std::move(told));
}

// Storage

void ModelActions::tell(const ScanStorageRequest& request, const Described& done) {
  storage_.describe(request, done);
}
void ModelActions::act(const ScanStorageRequest& request, const Performed& done) {
  storage_.perform(request, done);
}
void ModelActions::tell(const CleanStorageRequest& request, const Described& done) {
  storage_.describe(request, done);
}
void ModelActions::act(const CleanStorageRequest& request, const Performed& done) {
  storage_.perform(request, done);
}

// Settings

void ModelActions::store(std::string key, Value value, std::function<Value()> json, const Performed& done) {
  auto told = inThisLanguage([&defaults = parts_.defaults, json = std::move(json), done](bool stored) {
    if (!stored) return done(ActionAnswer::refused(storingTrouble(defaults)));
    done({.worked = true, .message = localized("The setting was stored."), .json = json()});
  });
  const InLanguage own(ownLanguage());
  settings_.set(std::move(key), std::move(value), std::move(told));
}

void ModelActions::tell(const SwitchAlertsRequest& request, const Described& done) {
  done(DescribedAction{request,
                       {.title = localized("Change what Korvell alerts about?"),
                        .message = localized(request.enabled ? "Korvell will alert when: {kind}."
                                                             : "Korvell will not alert when: {kind}.",
                                             {{"kind", title(request.kind)}}),
                        .button = localized("Change"),
                        .isHarmless = true}});
}

void ModelActions::act(const SwitchAlertsRequest& request, const Performed& done) {
  store(
      defaultsKey(request.kind), request.enabled,
      [&defaults = parts_.defaults] { return alertKindsValue(defaults); }, done);
}

void ModelActions::tell(const ChangeSettingRequest& request, const Described& done) {
  if (auto why = settingRefusal(request.key, request.value); !why.empty())
    return done(Failure{std::move(why)});
  const auto value = request.value.isNull() ? localized("its default") : dumpJSON(request.value);
  done(DescribedAction{
      request,
      {.title = localized("Change the setting {key}?", {{"key", request.key}}),
       .message = localized("{key} becomes {value}.", {{"key", request.key}, {"value", value}}),
       .button = localized("Change"),
       .isHarmless = true}});
}

void ModelActions::act(const ChangeSettingRequest& request, const Performed& done) {
  if (auto why = settingRefusal(request.key, request.value); !why.empty())
    return done(ActionAnswer::refused(std::move(why)));
  const auto json = [request] { return Value::object({{"key", request.key}, {"value", request.value}}); };
  store(request.key, request.value, json, done);
}

} // namespace korvell
