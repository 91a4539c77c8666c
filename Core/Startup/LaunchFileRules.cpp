#include "Core/Startup/LaunchFileRules.h"

#include "Base/PropertyList.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>

namespace korvell {

namespace {

std::string fileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// Where the folders of programs have one of this name; nothing when none of them has.
std::optional<std::string> foundProgram(const std::string& name, LaunchItems& launchItems) {
  for (const auto& folder : launchItems.places().folders) {
    auto path = folder + "/" + name;
    if (!launchItems.isMissing(path)) return path;
  }
  return std::nullopt;
}

bool isBareName(const std::string& program) { return program.find('/') == std::string::npos; }

/// A path where one is known.
std::string resolved(const std::string& program, LaunchItems& launchItems) {
  return isBareName(program) ? foundProgram(program, launchItems).value_or(program) : program;
}

std::optional<std::string> nonEmptyText(const Value* value) {
  const auto* text = value ? value->asString() : nullptr;
  return text && !text->empty() ? std::optional(*text) : std::nullopt;
}

std::optional<std::string> programOf(const Value& job) {
  if (auto program = nonEmptyText(job.find("Program"))) return program;
  const auto* arguments = job.find("ProgramArguments");
  const auto* list = arguments ? arguments->asArray() : nullptr;
  return list && !list->empty() ? nonEmptyText(&list->front()) : std::nullopt;
}

/// A condition under which a job is kept alive counts as keeping it alive.
bool isKeptAlive(const Value* keepAlive) {
  if (!keepAlive) return false;
  if (const auto* conditions = keepAlive->asObject()) return !conditions->empty();
  return keepAlive->asBool().value_or(false);
}

std::optional<StartupItem> readPropertyList(const LaunchFile& file, LaunchItems&) {
  const auto job = parsePropertyList(file.bytes);
  if (!job || !job->asObject()) return std::nullopt;
  auto label = nonEmptyText(job->find("Label"));
  if (!label) {
    label = fileName(file.path);
    label->resize(std::min(label->size(), label->rfind('.')));
  }
  const auto* atLoad = job->find("RunAtLoad");
  return StartupItem{.label = std::move(*label),
                     .plistPath = file.path,
                     .program = programOf(*job),
                     .scope = file.scope,
                     .runsAtLoad = atLoad && atLoad->asBool().value_or(false),
                     .keepAlive = isKeptAlive(job->find("KeepAlive"))};
}

constexpr std::string_view desktopEntry = "Desktop Entry";

/// A flatpak's command is flatpak itself; what may be missing is the application's folder.
std::optional<std::string> missingFlatpak(const KeyFile& entry, LaunchItems& launchItems) {
  const auto id = entry.last(desktopEntry, "X-Flatpak");
  const auto& roots = launchItems.places().flatpakRoots;
  if (!id || id->empty() || id->find('/') != std::string_view::npos || roots.empty()) return std::nullopt;
  const auto folder = [&](const std::string& root) { return root + "/app/" + std::string(*id); };
  if (!std::ranges::all_of(roots, [&](const auto& root) { return launchItems.isMissing(folder(root)); }))
    return std::nullopt;
  return folder(roots.front());
}

/// The program of a line. The escape of a blank ends an argument for some desktops and is part of it for
/// others; what is there decides.
std::optional<std::string> entryProgram(std::string_view line, LaunchItems& launchItems) {
  auto program = desktopEntryProgram(line);
  if (!program) return std::nullopt;
  program = resolved(*program, launchItems);
  if (!isProgramMissing(program, launchItems)) return program;
  std::string withBlanks(line);
  for (std::size_t at = 0; (at = withBlanks.find(R"(\s)", at)) != std::string::npos; at += 3)
    withBlanks.replace(at, 2, R"(\\ )");
  const auto joined = desktopEntryProgram(withBlanks);
  return joined && !isProgramMissing(joined, launchItems) ? resolved(*joined, launchItems) : program;
}

std::optional<std::string> programOf(const KeyFile& entry, LaunchItems& launchItems) {
  if (auto flatpak = missingFlatpak(entry, launchItems)) return flatpak;
  for (const auto* key : {"TryExec", "Exec"}) {
    const auto line = entry.last(desktopEntry, key);
    auto program = line ? entryProgram(*line, launchItems) : std::nullopt;
    if (!program || program->find('%') != std::string::npos) continue; // a field code is no path
    if (key == std::string_view("Exec") || isProgramMissing(program, launchItems)) return program;
  }
  return std::nullopt;
}

std::optional<StartupItem> readDesktopEntry(const LaunchFile& file, LaunchItems& launchItems) {
  const auto entry = KeyFile::parseDesktopEntry(file.bytes);
  const auto is = [&](std::string_view key, std::string_view value) {
    return entry.last(desktopEntry, key) == value;
  };
  constexpr std::string_view telling[] = {"Type", "Exec", "Hidden"};
  if (std::ranges::none_of(telling, [&](auto key) { return entry.last(desktopEntry, key).has_value(); }))
    return std::nullopt;
  return StartupItem{.label = fileName(file.path),
                     .plistPath = file.path,
                     .program = programOf(entry, launchItems),
                     .scope = file.scope,
                     .runsAtLoad = !is("Hidden", "true") && !is("X-GNOME-Autostart-enabled", "false")};
}

/// Absent when it depends on something that is only known when the unit starts.
std::optional<std::string> withoutSpecifiers(std::string_view written) {
  std::string program;
  for (size_t i = 0; i < written.size(); ++i) {
    const char c = written[i];
    if (c == '$' || (c == '%' && written.substr(i, 2) != "%%")) return std::nullopt;
    program += c;
    if (c == '%') ++i;
  }
  return program;
}

/// Settings that give a service a file system of its own, where a program may be that is not seen from here.
constexpr const char* ownFileSystem[] = {"RootDirectory",       "RootImage",   "BindPaths",
                                         "BindReadOnlyPaths",   "MountImages", "ExtensionImages",
                                         "ExtensionDirectories"};

/// The first program that it starts and that isn't missing; the first one when all are. None where the unit
/// has it looked for in places of its own: in another file system, or, by its name, in other folders.
std::optional<std::string> serviceProgram(const KeyFile& unit, LaunchItems& launchItems) {
  const auto isSet = [&](std::string_view key) { return !unit.all("Service", key).empty(); };
  if (std::ranges::any_of(ownFileSystem, isSet)) return std::nullopt;
  std::optional<std::string> missing;
  for (const auto start : unit.all("Service", "ExecStart")) {
    const auto written = unitProgram(start);
    if (!written || (isBareName(*written) && isSet("ExecSearchPath"))) return std::nullopt;
    auto program = withoutSpecifiers(*written);
    if (!program) return std::nullopt;
    program = resolved(*program, launchItems);
    if (!isProgramMissing(program, launchItems)) return program;
    if (!missing) missing = std::move(program);
  }
  return missing;
}

std::optional<StartupItem> readService(const LaunchFile& file, LaunchItems& launchItems) {
  const auto unit = KeyFile::parseUnit(file.bytes);
  const auto restart = unit.last("Service", "Restart").value_or("");
  return StartupItem{.label = fileName(file.path),
                     .plistPath = file.path,
                     .program = serviceProgram(unit, launchItems),
                     .scope = file.scope,
                     .runsAtLoad = !unit.all("Install", "WantedBy").empty(),
                     .keepAlive = !restart.empty() && restart != "no"};
}

} // namespace

std::optional<StartupItem> readLaunchFile(const LaunchFile& file, LaunchItems& launchItems) {
  switch (file.format) {
  case LaunchFormat::propertyList:
    return readPropertyList(file, launchItems);
  case LaunchFormat::desktopEntry:
    return readDesktopEntry(file, launchItems);
  case LaunchFormat::systemdService:
    return readService(file, launchItems);
  }
  return std::nullopt;
}

bool isProgramMissing(const std::optional<std::string>& program, LaunchItems& launchItems) {
  if (!program || program->empty()) return false;
  if (program->front() == '/') return launchItems.isMissing(*program);
  return isBareName(*program) && !foundProgram(*program, launchItems);
}

} // namespace korvell
