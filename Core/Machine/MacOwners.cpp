#include "Core/Machine/MacOwners.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr std::string_view systemFolders[] = {"/System/", "/usr/",           "/sbin/",
                                              "/bin/",    "/Library/Apple/", "/private/preboot/"};
constexpr std::string_view userPartOfSystemFolders = "/usr/local/";

constexpr std::string_view systemBundles = "/System/Library/";
constexpr std::string_view finder = "/System/Library/CoreServices/Finder.app"; // people know it as a program

constexpr std::string_view bundleNameKeys[] = {"CFBundleDisplayName", "CFBundleName"};

/// Programs built once and thrown away would fill the memory of paths without end.
constexpr std::size_t rememberedPaths = 4096;

OwnerDecision systemOwner(std::string_view rule) {
  static const auto owner = std::make_shared<const Owner>(
      Owner{std::string(macOSSystemGroup.key), std::string(macOSSystemGroup.name), std::nullopt});
  return {owner, rule};
}

std::string withoutExtension(std::string_view fileName) {
  const auto point = fileName.rfind('.');
  return std::string(point == 0 ? fileName : fileName.substr(0, point));
}

std::string bundleName(const std::string& bundlePath, const BundleInfo& bundles) {
  for (const auto key : bundleNameKeys)
    if (auto name = bundles(bundlePath, key); name && !name->empty()) return std::move(*name);
  return withoutExtension(std::string_view(bundlePath).substr(bundlePath.rfind('/') + 1));
}

/// The rule's name as it reads when the responsible process's path decided.
std::string_view asResponsible(std::string_view rule) {
  static constexpr std::pair<std::string_view, std::string_view> names[] = {
      {"bundle", "responsible process's bundle"},
      {"system bundle", "responsible process's system bundle"},
      {"system path", "responsible process's system path"},
      {"process", "responsible process"}};
  const auto* found = std::ranges::find(names, rule, [](const auto& name) { return name.first; });
  return found == std::end(names) ? rule : found->second;
}

} // namespace

std::optional<std::string> bundlePathAround(std::string_view path) {
  const auto end = path.find(".app/");
  if (end == std::string_view::npos) return std::nullopt;
  return std::string(path.substr(0, end + 4));
}

bool isSystemPath(std::string_view path) {
  if (path.starts_with(userPartOfSystemFolders)) return false;
  return std::ranges::any_of(systemFolders,
                             [&](std::string_view folder) { return path.starts_with(folder); });
}

OwnerDecision makeOwner(const std::string& path, const std::string& fallbackName, const BundleInfo& bundles) {
  if (const auto bundle = bundlePathAround(path)) {
    if (bundle->starts_with(systemBundles) && *bundle != finder) return systemOwner("system bundle");
    return {std::make_shared<const Owner>(Owner{*bundle, bundleName(*bundle, bundles), *bundle}), "bundle"};
  }
  if (path.empty()) return systemOwner("no path");
  if (isSystemPath(path)) return systemOwner("system path");
  return {std::make_shared<const Owner>(Owner{"proc:" + fallbackName, fallbackName, std::nullopt}),
          "process"};
}

OwnerDecision MacOwners::owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) {
  const ProcessFacts* deciding = &facts;
  if (facts.responsible > 0 && facts.responsible != pid)
    if (const auto* responsible = lookup.facts(facts.responsible); responsible && !responsible->path.empty())
      deciding = responsible;
  const auto [entry, isNew] = byPath_.try_emplace(deciding->path);
  if (isNew) entry->second = makeOwner(deciding->path, deciding->name, bundles_);
  auto decision = entry->second;
  if (deciding != &facts) decision.rule = asResponsible(decision.rule);
  return decision;
}

void MacOwners::beginCycle() {
  if (byPath_.size() > rememberedPaths) byPath_.clear();
}

} // namespace korvell
