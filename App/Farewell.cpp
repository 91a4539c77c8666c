#include "App/Farewell.h"

#include "App/CommandLineTool.h"
#include "App/KeeperLock.h"
#include "App/SettingsCheck.h"
#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/Storage/StorageModels.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <set>

namespace korvell {

namespace fs = std::filesystem;

namespace {

constexpr const char* unitName = "korvell.service";
constexpr Seconds patience{30};
constexpr std::array serviceManagers = {"/usr/bin/systemctl", "/bin/systemctl"};
constexpr std::array packageManagers = {"/usr/bin/dpkg-query"};

bool isThere(const std::string& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

Outcome removeFile(const std::string& path) {
  std::error_code error;
  fs::remove(path, error);
  if (error)
    return Failure{
        localized("{path} can't be removed: {reason}", {{"path", path}, {"reason", error.message()}})};
  return success();
}

/// Over ssh or su there may be no manager to talk to: the unit is disabled then, but not stopped.
Outcome stopUnit(const CommandRunner& run, const std::string& link) {
  for (const char* program : serviceManagers)
    if (const auto result = run(program, {"--user", "disable", "--now", unitName}, patience, {}))
      return result->succeeded() || !isThere(link)
                 ? success()
                 : Failure{localized("systemctl could not disable the unit.")};
  return Failure{localized("systemctl is missing on this system.")};
}

/// Whether the keeper is what the user's services run, and not an application beside it. A manager that does
/// not answer stops nobody.
bool isKeeperTheUnit(const CommandRunner& run, const UserFolders& folders) {
  const auto keeper = keeperAnnouncement(folders);
  for (const char* program : serviceManagers)
    if (const auto result =
            run(program, {"--user", "show", "--property=MainPID", "--value", unitName}, patience, {}))
      return keeper && result->succeeded() && trimmed(result->output) == std::to_string(keeper->pid);
  return false;
}

void addUnit(Farewell& found, const UserFolders& folders, const CommandRunner& run) {
  const auto link = folders.configHome + "/systemd/user/default.target.wants/" + unitName;
  if (!isThere(link)) return;
  found.stopsKeeper = true;
  found.steps.push_back({localized("Stop and disable the unit {unit}.", {{"unit", unitName}}),
                         [&run, link] { return stopUnit(run, link); }});
}

bool isEmptyBut(const std::string& folder, const std::set<std::string>& paths) {
  std::error_code error;
  for (fs::directory_iterator entries(folder, error), end; !error && entries != end; entries.increment(error))
    if (!paths.contains(entries->path().string())) return false;
  return !error;
}

/// Where nothing but `paths`, which steps before take away, is in it. A link to a folder stays.
void addEmptyFolder(Farewell& found, const Host& host, const std::string& folder,
                    const std::set<std::string>& paths) {
  std::error_code error;
  if (!fs::is_directory(fs::symlink_status(folder, error)) || !isEmptyBut(folder, paths)) return;
  found.steps.push_back(
      {localized("Remove the empty folder {path}.", {{"path", tildePath(folder, host.folders.home)}}),
       [folder] { return isEmptyBut(folder, {}) ? removeFile(folder) : success(); }});
}

void addAutostart(Farewell& found, Host& host) {
  const auto folder = host.folders.configHome + "/autostart";
  const auto widget = folder + "/korvell-widget.desktop";
  const auto before = found.steps.size();
  if (auto& login = *host.loginItem; login.isThere())
    found.steps.push_back(
        {localized("No longer open Korvell at login."), [&login] { return login.remove(); }});
  if (isThere(widget))
    found.steps.push_back(
        {localized("No longer show the widget at login."), [widget] { return removeFile(widget); }});
  if (found.steps.size() > before) addEmptyFolder(found, host, folder, {folder + "/korvell.desktop", widget});
}

void addLink(Farewell& found, const Host& host, const Environment& environment, const CommandRunner& run) {
  const CommandLineTool tool({host.system, host.program, host.folders.home, environment, run});
  const auto link = tool.linkPath();
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(link, error))) return;
  // One to another copy stays; one to a tool that is gone is nobody's.
  const bool isOurs = fs::read_symlink(link, error) == tool.toolPath() || !fs::exists(link, error);
  if (!isOurs) return;
  found.steps.push_back({localized("Remove the link {path}.", {{"path", tildePath(link, host.folders.home)}}),
                         [link] { return removeFile(link); }});
  addEmptyFolder(found, host, fs::path(link).parent_path().string(), {link});
}

void addHelper(Farewell& found, Host& host, bool isAdministrator) {
  auto* helper = host.usageHelper.get();
  if (!helper) return;
  if (helper->isInstalled() && (isAdministrator || host.system == SystemKind::macOS))
    found.steps.push_back(
        {localized("Stop and remove the usage helper."), [helper] { return helper->disable(); }});
  else if (helper->isInstalled())
    found.remarks.push_back(localized(
        "The usage helper is installed; an administrator removes it with \"sudo korvell helper disable\"."));
  if (const auto group = helper->group(); !group.empty())
    found.remarks.push_back(
        localized("The group {group} stays, with its members; an administrator removes it with \"sudo "
                  "groupdel {group}\".",
                  {{"group", group}}));
}

Outcome moveToTrash(Trash& trash, FileTree& files, const std::string& path) {
  const auto info = files.info(path);
  const auto outcomes = trash.move({{path, info ? std::optional(info->identity) : std::nullopt}});
  return outcomes.empty() ? success() : outcomes.front();
}

void addData(Farewell& found, Host& host, bool withData) {
  for (const auto& folder : {host.folders.data, host.folders.config}) {
    if (!isThere(folder)) continue;
    const auto shown = tildePath(folder, host.folders.home);
    if (withData)
      found.steps.push_back({localized("Move {path} to the Trash.", {{"path", shown}}),
                             [&host, folder] { return moveToTrash(*host.trash, *host.fileTree, folder); }});
    else
      found.remarks.push_back(localized("{path} stays; --data moves it to the Trash.", {{"path", shown}}));
  }
}

/// Whether a file begins as the metrics do.
bool holdsMetrics(const std::string& path) {
  constexpr std::size_t most = std::size_t(64) << 20;
  const auto text = readFile(path, most);
  return text && text->starts_with("# HELP korvell_");
}

/// What the keeper wrote for a collector. Nobody but the user knows whose another file in its place is.
void addMetricsFile(Farewell& found, const Host& host) {
  const auto path = host.defaults ? host.defaults->string(metricsFileKey) : std::nullopt;
  if (!path || !settingRefusal(metricsFileKey, Value(*path)).empty() || !isThere(*path)) return;
  const auto file = followedLinks(*path), shown = tildePath(file, host.folders.home);
  const auto theirs =
      localized("{path}, the file for metrics, holds something else and stays.", {{"path", shown}});
  if (holdsMetrics(file))
    found.steps.push_back(
        {localized("Remove the file with metrics, {path}.", {{"path", shown}}),
         [file, theirs] { return holdsMetrics(file) ? removeFile(file) : Failure{theirs}; }});
  else
    found.remarks.push_back(theirs);
}

/// The sockets, and the runtime folder where they alone are in it.
void addSockets(Farewell& found, const Host& host) {
  const auto& folders = host.folders;
  const std::set sockets{keeperSocketPath(folders), spareSocketPath(folders)};
  for (const auto& socket : sockets)
    if (isThere(socket))
      found.steps.push_back({localized("Remove the socket {path}.", {{"path", socket}}),
                             [socket] { return removeFile(socket); }});
  if (!folders.runtime.empty()) addEmptyFolder(found, host, folders.runtime, sockets);
}

/// A widget writes where it lies whenever it is moved. One that is shown by the system itself does not.
bool isWidgetRunning(const Host& host) {
  if (host.system == SystemKind::macOS) return false;
  const auto placed = std::make_shared<std::atomic<std::size_t>>(0);
  host.widgetCenter->currentConfigurations([placed](auto count) { *placed = count.value_or(0); });
  return *placed > 0;
}

/// "korvell: /usr/bin/korvell" of the package manager; empty where it knows nothing of the program.
std::string packageOf(const std::string& program, const CommandRunner& run) {
  for (const char* manager : packageManagers)
    if (const auto result = run(manager, {"--search", program}, patience, {}); result && result->succeeded())
      return result->output.substr(0, result->output.find(':'));
  return {};
}

/// Homebrew keeps what it installs in its Cellar, on both systems.
bool isHomebrews(const std::string& program) {
  std::error_code error;
  const auto file = fs::weakly_canonical(program, error).string();
  return file.find("/Cellar/") != std::string::npos || file.find("/homebrew/") != std::string::npos;
}

std::string ownerOfProgram(const Host& host, const CommandRunner& run) {
  if (isHomebrews(host.program))
    return localized("The program belongs to Homebrew: \"{command}\" removes it.",
                     {{"command", "brew uninstall korvell"}});
  if (const auto package = packageOf(host.program, run); !package.empty())
    return localized("The program belongs to the package {package}: \"sudo apt purge {package}\" removes it.",
                     {{"package", package}});
  return localized("The program itself stays at {path}.",
                   {{"path", tildePath(host.program, host.folders.home)}});
}

} // namespace

Farewell farewell(Host& host, const Environment& environment, const CommandRunner& run, bool isAdministrator,
                  bool withData) {
  Farewell found;
  addUnit(found, host.folders, run);
  addAutostart(found, host);
  addLink(found, host, environment, run);
  addHelper(found, host, isAdministrator);
  addMetricsFile(found, host);
  addSockets(found, host);
  addData(found, host, withData);
  if (isKeeperRunning(host.folders) && !(found.stopsKeeper && isKeeperTheUnit(run, host.folders)))
    found.running = stillRunning(host.folders);
  else if (withData && isWidgetRunning(host))
    found.running =
        localized("The widget is shown on the desktop and would write its data anew. Close it first.");
  if (!host.program.empty()) found.remarks.push_back(ownerOfProgram(host, run));
  return found;
}

std::string stillRunning(const UserFolders& folders) {
  if (!isKeeperRunning(folders)) return {};
  const auto keeper = keeperAnnouncement(folders);
  if (!keeper) return localized("Korvell is running. Quit it first.");
  return localized("Korvell is running as process {pid}. Quit it first.",
                   {{"pid", std::to_string(keeper->pid)}});
}

} // namespace korvell
