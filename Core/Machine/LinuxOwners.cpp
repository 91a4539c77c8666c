#include "Core/Machine/LinuxOwners.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

using Kind = ControlGroupOwner::Kind;

constexpr std::uint32_t firstOrdinaryUser = 1000;
constexpr std::string_view systemFolders[] = {"/usr/lib/systemd/", "/lib/systemd/", "/usr/libexec/",
                                              "/usr/sbin/", "/sbin/"};
constexpr std::string_view appImageMount = "/tmp/.mount_";
constexpr std::string_view containerPrefixes[] = {"docker-", "libpod-", "cri-containerd-", "crio-"};
/// Groups below which an engine without systemd keeps one for each container, by its bare number.
constexpr std::string_view containerFolders[] = {"docker", "libpod_parent", "kubepods", "kubepods.slice"};
constexpr size_t shownContainerDigits = 12;
constexpr size_t rememberedOwners = 4096;

// Where a walk through the ancestors ends: these start everybody's programs.
constexpr std::string_view sessionStarters[] = {"systemd",
                                                "init",
                                                "lightdm",
                                                "sddm",
                                                "gdm",
                                                "gdm3",
                                                "login",
                                                "sshd",
                                                "agetty",
                                                "xfce4-session",
                                                "gnome-session-binary",
                                                "plasmashell",
                                                "startplasma-x11"};

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::optional<std::string_view> between(std::string_view text, std::string_view prefix,
                                        std::string_view suffix) {
  if (text.size() < prefix.size() + suffix.size() || !text.starts_with(prefix) || !text.ends_with(suffix))
    return std::nullopt;
  return text.substr(prefix.size(), text.size() - prefix.size() - suffix.size());
}

bool isContainerID(std::string_view text) {
  return text.size() >= shownContainerDigits &&
         std::ranges::all_of(text, [](char c) { return hexDigit(c) >= 0; });
}

/// "org.gimp.GIMP" of "flatpak-org.gimp.GIMP-5151": a "-" inside an id is always escaped, so pieces can be
/// counted from the end.
std::optional<std::string> pieceFromEnd(std::string_view text, size_t fromEnd) {
  const auto pieces = split(text, '-');
  if (pieces.size() <= fromEnd) return std::nullopt;
  auto id = unitNameUnescaped(pieces[pieces.size() - 1 - fromEnd]);
  return id.empty() ? std::nullopt : std::optional(std::move(id));
}

std::optional<std::string> applicationID(std::string_view unit) {
  for (const std::string_view prefix : {"app-", "flatpak-"})
    if (const auto scope = between(unit, prefix, ".scope")) return pieceFromEnd(*scope, 1);
  if (const auto slice = between(unit, "app-", ".slice")) return pieceFromEnd(*slice, 0);
  if (const auto service = between(unit, "app-", ".service"))
    return pieceFromEnd(service->substr(0, service->find('@')), 0);
  return std::nullopt;
}

/// Of "docker-HEX.scope", of "crio-HEX" or "HEX" below an engine's folder, and of
/// "POD.slice:cri-containerd:HEX".
std::optional<std::string_view> containerNumber(std::string_view unit, bool inFolder) {
  for (const auto prefix : containerPrefixes)
    for (const std::string_view suffix : {".scope", ""})
      if (const auto id = between(unit, prefix, suffix); id && isContainerID(*id)) return id;
  const auto number = unit.substr(unit.rfind(':') + 1);
  if ((inFolder || number != unit) && isContainerID(number)) return number;
  return std::nullopt;
}

/// Machines that run a system of their own: "systemd-nspawn@NAME.service", "lxc.payload.NAME", "lxc/NAME".
std::optional<std::string> machineName(std::string_view unit, std::string_view parent) {
  if (const auto name = between(unit, "systemd-nspawn@", ".service")) return unitNameUnescaped(*name);
  if (const auto name = between(unit, "lxc.payload.", "")) return std::string(*name);
  if (parent == "lxc" || parent == "lxc.payload") return std::string(unit);
  return std::nullopt;
}

/// The outermost one: what runs inside has units like any system.
std::optional<std::string> containerOf(const std::vector<std::string_view>& components) {
  bool inFolder = false;
  for (size_t i = 1; i < components.size(); ++i) {
    if (const auto number = containerNumber(components[i], inFolder)) return std::string(*number);
    if (auto name = machineName(components[i], components[i - 1]); name && !name->empty()) return name;
    inFolder |= std::ranges::find(containerFolders, components[i]) != std::end(containerFolders);
  }
  return std::nullopt;
}

std::optional<std::string> snapName(std::string_view unit) {
  if (!unit.starts_with("snap.")) return std::nullopt;
  const auto rest = unit.substr(5);
  return unitNameUnescaped(rest.substr(0, rest.find('.')));
}

bool isUnit(std::string_view component) {
  return component.ends_with(".service") || component.ends_with(".scope");
}

} // namespace

std::string unitNameUnescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const bool escape =
        text.size() >= 4 && text.starts_with("\\x") && hexDigit(text[2]) >= 0 && hexDigit(text[3]) >= 0;
    result += escape ? char(hexDigit(text[2]) * 16 + hexDigit(text[3])) : text.front();
    text.remove_prefix(escape ? 4 : 1);
  }
  return result;
}

std::optional<ControlGroupOwner> controlGroupOwner(std::string_view path) {
  const auto components = split(path, '/');
  if (auto id = containerOf(components)) return ControlGroupOwner{Kind::container, std::move(*id)};
  for (size_t i = components.size(); i-- > 1;) {
    const auto unit = components[i];
    if (auto name = snapName(unit)) return ControlGroupOwner{Kind::snap, std::move(*name)};
    if (auto id = applicationID(unit)) return ControlGroupOwner{Kind::application, std::move(*id)};
  }
  // What is no application's is told by the slice and the unit below it.
  for (size_t i = 1; i < components.size(); ++i) {
    const auto component = components[i];
    const auto next = i + 1 < components.size() ? components[i + 1] : std::string_view();
    const bool systemSlice =
        component == "system.slice" || component == "session.slice" || component == "background.slice";
    if (component == "init.scope" || (systemSlice && isUnit(next)))
      return ControlGroupOwner{Kind::system, ""};
    if (component == "app.slice" && isUnit(next))
      return ControlGroupOwner{Kind::unit, unitNameUnescaped(next)};
  }
  return std::nullopt;
}

void LinuxOwners::beginCycle() {
  entries_.refresh();
  if (byKey_.size() > rememberedOwners)
    std::erase_if(byKey_, [](const auto& known) { return known.second.expired(); });
  if (launched_.size() > rememberedOwners) launched_.clear();
}

OwnerDecision LinuxOwners::owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) {
  if (facts.kernelThread) return system("kernel thread");
  // Before the user: a container's processes may be anybody's here.
  if (auto decision = byControlGroup(facts)) return *decision;
  if (facts.user != user_ && facts.user < firstOrdinaryUser) return system("system user");
  if (auto decision = byLauncher(facts)) return *decision;
  if (!facts.appImage.empty() && facts.path.starts_with(appImageMount)) {
    const auto name = facts.appImage.substr(facts.appImage.rfind('/') + 1);
    return {shared({facts.appImage, name, facts.appImage}), "AppImage"};
  }
  if (auto decision = byAncestors(pid, facts, lookup)) return *decision;
  for (const auto folder : systemFolders)
    if (facts.path.starts_with(folder)) return system("system path");
  return owner("proc:" + facts.name, facts.name, "process");
}

std::optional<OwnerDecision> LinuxOwners::byControlGroup(const ProcessFacts& facts) {
  const auto group = controlGroupOwner(facts.controlGroup);
  if (!group) return std::nullopt;
  switch (group->kind) {
  case Kind::snap:
    if (const auto* found = entries_.bySnap(group->name)) return entry(*found, "snap");
    return owner("proc:" + group->name, group->name, "snap");
  case Kind::application:
    if (const auto* found = entries_.byID(group->name))
      return entry(*found, "control group of an application");
    return owner("proc:" + group->name, group->name, "control group of an application");
  case Kind::container: {
    const auto id = isContainerID(group->name) ? group->name.substr(0, shownContainerDigits) : group->name;
    return owner("container:" + id, localized("Container {id}", {{"id", id}}), "container");
  }
  case Kind::system:
    return system("control group of a system unit");
  case Kind::unit:
    return owner("proc:" + group->name, group->name.substr(0, group->name.rfind('.')),
                 "control group of a unit");
  }
  return std::nullopt;
}

std::optional<OwnerDecision> LinuxOwners::byLauncher(const ProcessFacts& facts) {
  if (facts.desktopFile.empty()) return std::nullopt;
  const auto* found = entries_.byPath(facts.desktopFile);
  if (!found) return std::nullopt;
  if (facts.launchedPID > 0) launched_[found->path] = facts.launchedPID;
  return entry(*found, "launched from a desktop entry");
}

std::optional<OwnerDecision> LinuxOwners::byAncestors(ProcessID pid, const ProcessFacts& facts,
                                                      ProcessLookup& lookup) {
  const ProcessFacts* candidate = &facts;
  // Ids can form a circle for a moment while they are reused: the walk is bounded.
  for (int steps = 0; candidate && pid > 1 && steps < 64; ++steps) {
    if (const auto* found = entries_.byProgram(candidate->path))
      return entry(*found, steps == 0 ? "program" : "ancestor's program");
    const auto name = std::string_view(candidate->path).substr(candidate->path.rfind('/') + 1);
    if (candidate->kernelThread || std::ranges::find(sessionStarters, name) != std::end(sessionStarters))
      break;
    pid = lookup.parent(pid);
    candidate = pid > 1 ? lookup.facts(pid) : nullptr;
  }
  return std::nullopt;
}

std::optional<Owner> LinuxOwners::claimed(std::string_view id, std::string_view name) {
  const auto* found = id.empty() ? nullptr : entries_.byID(id);
  if (!found && !name.empty()) found = entries_.byName(name);
  return found ? std::optional(Owner{found->path, found->name, found->path}) : std::nullopt;
}

std::optional<ProcessID> LinuxOwners::mainProcess(const Owner& owner, std::span<const GroupMember> members) {
  const auto isMember = [members](ProcessID pid) {
    return std::ranges::find(members, pid, &GroupMember::pid) != members.end();
  };
  if (owner.bundlePath)
    if (const auto launched = launched_.find(*owner.bundlePath);
        launched != launched_.end() && isMember(launched->second))
      return launched->second;
  const GroupMember* oldest = nullptr;
  for (const auto& member : members)
    if (!isMember(member.parent) && (!oldest || member.start < oldest->start)) oldest = &member;
  return oldest ? std::optional(oldest->pid) : std::nullopt;
}

OwnerDecision LinuxOwners::system(std::string_view rule) {
  return owner(std::string(linuxSystemGroup.key), std::string(linuxSystemGroup.name), rule);
}

OwnerDecision LinuxOwners::entry(const DesktopEntry& entry, std::string_view rule) {
  return {shared({entry.path, entry.name, entry.path}), rule};
}

OwnerDecision LinuxOwners::owner(std::string key, std::string name, std::string_view rule) {
  return {shared({std::move(key), std::move(name), std::nullopt}), rule};
}

std::shared_ptr<const Owner> LinuxOwners::shared(Owner owner) {
  auto& known = byKey_[owner.key];
  if (auto existing = known.lock(); existing && *existing == owner) return existing;
  auto made = std::make_shared<const Owner>(std::move(owner));
  known = made;
  return made;
}

} // namespace korvell
