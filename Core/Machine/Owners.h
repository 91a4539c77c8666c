#pragma once
// To which application a process belongs. The rules differ per system (MacOwners, LinuxOwners) and are all
// compiled and tested everywhere; main picks one. On the sampler's queue.

#include "Platform/ProcessTable.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvell {

struct Owner {
  std::string key;                       ///< grouping key, stable between samples
  std::string name;                      ///< display name
  std::optional<std::string> bundlePath; ///< the bundle, or the desktop entry on Linux
  bool operator==(const Owner&) const = default;
};

/// The group of everything that belongs to the system itself.
struct SystemGroup {
  std::string_view key;
  std::string_view name;
};
inline constexpr SystemGroup macOSSystemGroup{"macOS", "macOS"};
inline constexpr SystemGroup linuxSystemGroup{"system", "Linux"};

struct OwnerDecision {
  std::shared_ptr<const Owner> owner; ///< never null
  std::string_view rule;              ///< name of the rule that decided; a literal
};

/// What the rules may ask about other processes of the same cycle.
class ProcessLookup {
public:
  virtual ~ProcessLookup() = default;
  /// Parent process id; 0 when unknown.
  virtual ProcessID parent(ProcessID pid) const = 0;
  /// Facts of a process of this cycle; nothing when there is no such process. Valid until the next call.
  virtual const ProcessFacts* facts(ProcessID pid) = 0;
};

/// One process of a group, as far as it matters for choosing the main one.
struct GroupMember {
  ProcessID pid = 0;
  ProcessID parent = 0;
  std::uint64_t start = 0;
};

class OwnerRules {
public:
  virtual ~OwnerRules() = default;
  virtual OwnerDecision owner(ProcessID pid, const ProcessFacts& facts, ProcessLookup& lookup) = 0;
  virtual SystemGroup systemGroup() const = 0;
  /// Called once before each cycle's questions: whatever was read from disk may be looked at again.
  virtual void beginCycle() {}
  /// True for the program of a desktop application, by where it lies: whoever runs it uses that application.
  virtual bool isDesktopProgram(const std::string&) const { return false; }
  /// The installed application that has this identifier or, failing that, is called so; nothing when there is
  /// none. What a program says of itself proves nothing: for what nobody knows better.
  virtual std::optional<Owner> claimed(std::string_view /*id*/, std::string_view /*name*/) { return {}; }
  /// The process that stands for a group where the system keeps no list of running applications.
  virtual std::optional<ProcessID> mainProcess(const Owner&, std::span<const GroupMember>) { return {}; }
};

} // namespace korvell
