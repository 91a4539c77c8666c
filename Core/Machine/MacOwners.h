#pragma once
// To which application a process belongs on macOS: decided by the path of the responsible process, the one
// that the system holds to account (an application for its helpers), or by the process's own path.
//
//   path                                          owner
//   inside an application bundle                  that application
//   inside a bundle below /System/Library/        the system group, except the Finder
//   empty, or in one of the system's folders      the system group
//   anything else                                 the process itself, "proc:" and its name

#include "Core/Machine/Owners.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvell {

/// The outermost application bundle around a path: "/Applications/A.app" for anything inside it.
std::optional<std::string> bundlePathAround(std::string_view path);

/// True in the folders that hold nothing but the system.
bool isSystemPath(std::string_view path);

/// `fallbackName` names a process that belongs to no application.
OwnerDecision makeOwner(const std::string& path, const std::string& fallbackName, const BundleInfo& bundles);

/// Remembers what it worked out for each path.
class MacOwners final : public OwnerRules {
public:
  explicit MacOwners(BundleInfo bundles) : bundles_(std::move(bundles)) {}

  OwnerDecision owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) override;
  SystemGroup systemGroup() const override { return macOSSystemGroup; }
  void beginCycle() override;

private:
  BundleInfo bundles_;
  std::unordered_map<std::string, OwnerDecision> byPath_;
};

} // namespace korvell
