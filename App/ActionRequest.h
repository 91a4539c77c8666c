#pragma once
// What a person, an agent or a command may ask Korvell to do, as records. They travel as JSON under the names
// below: {"do":"quit", …} does it, {"describe":"quit", …} tells what would be done.
//
// A request may be vague ("whatever is idle", "the application called Editor"). Describing it hands back an
// exact one, which names processes with their start times, servers, files and items: performing that one
// touches nothing that came later. The fields that only a description fills in say so.

#include "Base/Record.h"
#include "Base/Result.h"
#include "Core/DevServers/DevServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Machine/Quit.h"
#include "Core/Storage/StorageKind.h"

#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace korvell {

/// Ends an application, politely or at once, or single processes. One of `app`, `bundlePath` and `processes`.
struct QuitRequest {
  static constexpr std::string_view action = "quit";
  std::optional<std::string> app;        ///< its key, its name in any case, or a process id
  std::optional<std::string> bundlePath; ///< as the snapshot has it
  std::vector<QuitTarget> processes;     ///< exact; described: of the two above
  bool force = false;
  std::optional<std::string> name; ///< described: what the answer calls it, never as it was given

  bool operator==(const QuitRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"app", &QuitRequest::app}, Field{"bundlePath", &QuitRequest::bundlePath},
                      Field{"processes", &QuitRequest::processes}, Field{"force", &QuitRequest::force},
                      Field{"name", &QuitRequest::name}};
  }
};

/// Stops a listed development server: politely, and after three seconds for good.
struct StopServerRequest {
  static constexpr std::string_view action = "stopServer";
  ProcessID pid = 0;
  std::optional<Date> startedAt; ///< as the list tells it; described: of the server that has the id

  bool operator==(const StopServerRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"pid", &StopServerRequest::pid},
                      Field{"startedAt", &StopServerRequest::startedAt}};
  }
};

/// Stops the listed servers that did nothing for half an hour. One that is not idle any more by then is left
/// alone, and told.
struct StopIdleServersRequest {
  static constexpr std::string_view action = "stopIdleServers";
  std::optional<std::vector<DevServer>> servers; ///< absent: all; described: those that were idle

  bool operator==(const StopIdleServersRequest&) const = default;
  static constexpr auto fields() { return std::tuple{Field{"servers", &StopIdleServersRequest::servers}}; }
};

/// Stops a listed leftover's job and moves its file to the Trash.
struct RemoveStartupItemRequest {
  static constexpr std::string_view action = "removeStartupItem";
  std::string plistPath, label;
  std::optional<std::string> program;

  bool operator==(const RemoveStartupItemRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"plistPath", &RemoveStartupItemRequest::plistPath},
                      Field{"label", &RemoveStartupItemRequest::label},
                      Field{"program", &RemoveStartupItemRequest::program}};
  }
};

struct RescanStartupItemsRequest {
  static constexpr std::string_view action = "rescanStartupItems";
  bool operator==(const RescanStartupItemsRequest&) const = default;
  static constexpr auto fields() { return std::tuple{}; }
};

/// Measures what could be freed, in place of what was measured before; removes nothing.
struct ScanStorageRequest {
  static constexpr std::string_view action = "scanStorage";
  std::optional<std::vector<StorageKind>> kinds; ///< absent: all

  bool operator==(const ScanStorageRequest&) const = default;
  static constexpr auto fields() { return std::tuple{Field{"kinds", &ScanStorageRequest::kinds}}; }
};

/// Cleans items of the present scan, each in the way of its category.
struct CleanStorageRequest {
  static constexpr std::string_view action = "cleanStorage";
  std::vector<std::string> items; ///< their ids
  std::optional<Date> scanned;    ///< described: of which scan; a later one's items are not touched

  bool operator==(const CleanStorageRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"items", &CleanStorageRequest::items},
                      Field{"scanned", &CleanStorageRequest::scanned}};
  }
};

/// Switches the alerts of a kind on or off.
struct SwitchAlertsRequest {
  static constexpr std::string_view action = "switchAlerts";
  HealthAlert::Kind kind = HealthAlert::Kind::cpu;
  bool enabled = true;

  bool operator==(const SwitchAlertsRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"kind", &SwitchAlertsRequest::kind},
                      Field{"enabled", &SwitchAlertsRequest::enabled}};
  }
};

/// Stores one of the settings that are the user's to choose.
struct ChangeSettingRequest {
  static constexpr std::string_view action = "changeSetting";
  std::string key;
  Value value; ///< null: its default

  bool operator==(const ChangeSettingRequest&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"key", &ChangeSettingRequest::key}, Field{"value", &ChangeSettingRequest::value}};
  }
};

using ActionRequest = std::variant<QuitRequest, StopServerRequest, StopIdleServersRequest,
                                   RemoveStartupItemRequest, RescanStartupItemsRequest, ScanStorageRequest,
                                   CleanStorageRequest, SwitchAlertsRequest, ChangeSettingRequest>;

/// The name under which it travels.
std::string_view actionName(const ActionRequest& request);
/// {verb: NAME, …}; the verbs are "do" and "describe".
Value toValue(const ActionRequest& request, std::string_view verb = "do");
/// Why it is none, in words for whoever wrote it.
Result<ActionRequest> readActionRequest(const Value& value, std::string_view verb = "do");
/// Why not, of a name that nobody knows: a keeper of another version answers that too.
inline constexpr const char* unknownRequest = "unknown request";
/// Every name, in the order of the variant.
std::vector<std::string_view> actionNames();

} // namespace korvell
