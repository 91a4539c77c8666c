#pragma once
// To which application a process belongs on Linux. The rules are tried in order; the first that answers
// decides. docs/applications.md explains them with examples.
//
//   kernel thread                              the system group
//   control group of a container               the container
//   control group of a snap                    the snap
//   control group of an application            its desktop entry
//   control group of a system unit             the system group
//   control group of another unit of the user  the unit
//   another system user                        the system group
//   launched from a desktop entry              that entry (told by the launcher in the environment)
//   inside an AppImage                         that file
//   an ancestor's or its own program           the desktop entry that starts it or owns its folder
//   in one of the system's folders             the system group
//   anything else                              the process itself, "proc:" and its name

#include "Core/Machine/DesktopEntries.h"
#include "Core/Machine/Owners.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvell {

/// What a control group's path says about whose it is.
struct ControlGroupOwner {
  enum class Kind { snap, application, container, system, unit };
  Kind kind;
  std::string name; ///< snap, desktop id, container's id or name, or unit; empty for the system
  bool operator==(const ControlGroupOwner&) const = default;
};
/// Nothing when the path does not tell (a login session, the root group).
std::optional<ControlGroupOwner> controlGroupOwner(std::string_view path);

/// "visual\x2dstudio" as "visual-studio"; a malformed escape stays as it is.
std::string unitNameUnescaped(std::string_view text);

class LinuxOwners final : public OwnerRules {
public:
  /// `user`: the effective user id that Korvell runs as.
  LinuxOwners(DesktopFiles& files, std::string locale, std::uint32_t user)
      : entries_(files, std::move(locale)), user_(user) {}

  OwnerDecision owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) override;
  SystemGroup systemGroup() const override { return linuxSystemGroup; }
  void beginCycle() override;
  bool isDesktopProgram(const std::string& executable) const override {
    return entries_.byProgram(executable) != nullptr;
  }
  std::optional<Owner> claimed(std::string_view id, std::string_view name) override;
  std::optional<ProcessID> mainProcess(const Owner& owner, std::span<const GroupMember> members) override;

private:
  std::optional<OwnerDecision> byControlGroup(const ProcessFacts& facts);
  std::optional<OwnerDecision> byLauncher(const ProcessFacts& facts);
  std::optional<OwnerDecision> byAncestors(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup);
  OwnerDecision system(std::string_view rule);
  OwnerDecision entry(const DesktopEntry& entry, std::string_view rule);
  OwnerDecision owner(std::string key, std::string name, std::string_view rule);
  std::shared_ptr<const Owner> shared(Owner owner);

  DesktopEntries entries_;
  std::uint32_t user_;
  std::unordered_map<std::string, std::weak_ptr<const Owner>> byKey_; ///< one object an owner
  std::unordered_map<std::string, ProcessID> launched_;               ///< by desktop entry
};

} // namespace korvell
