#pragma once
// Something that stayed bad long enough to tell the user.

#include "Base/Date.h"
#include "Base/Enum.h"
#include "Base/Record.h"
#include "Core/Health/Wordings.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct HealthAlert {
  enum class Kind { cpu, memoryGrowth, disk, network, diskSpace, memoryPressure, aiPlanLimit };

  std::string id; ///< a UUID, new for every alert
  Kind kind = Kind::cpu;
  std::optional<std::string> appName; ///< absent for the machine as a whole
  std::optional<std::string> bundlePath;
  std::string title;  ///< localised
  std::string detail; ///< localised
  Date date;
  Wordings wordings{}; ///< title and detail in all languages

  bool operator==(const HealthAlert&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"id", &HealthAlert::id},           Field{"kind", &HealthAlert::kind},
                      Field{"appName", &HealthAlert::appName}, Field{"bundlePath", &HealthAlert::bundlePath},
                      Field{"title", &HealthAlert::title},     Field{"detail", &HealthAlert::detail},
                      Field{"date", &HealthAlert::date}};
  }
};

template <>
struct EnumTable<HealthAlert::Kind> {
  using enum HealthAlert::Kind;
  /// The titles are the settings' labels.
  static constexpr EnumCase<HealthAlert::Kind> cases[] = {
      {cpu, "cpu", "An app keeps the CPU busy"},
      {memoryGrowth, "memoryGrowth", "An app keeps using more memory"},
      {disk, "disk", "An app hammers the disk"},
      {network, "network", "An app uses a lot of network"},
      {diskSpace, "diskSpace", "The disk is almost full"},
      {memoryPressure, "memoryPressure", "Memory is running out"},
      {aiPlanLimit, "aiPlanLimit", "A Codex plan limit passes 80%"}};
};

/// The user-defaults key of a kind's switch: "alert.cpu".
inline std::string defaultsKey(HealthAlert::Kind kind) { return "alert." + std::string(rawValue(kind)); }

/// In the language in effect, as far as it is told in it.
[[nodiscard]] bool fromValue(const Value& value, HealthAlert& alert);
/// For readers of any language; toValue() is for those of the one in effect.
Value toldValue(const HealthAlert& alert);
Value toldValue(const std::vector<HealthAlert>& alerts);

KORVELL_CONVERTED_ONCE(std::vector<HealthAlert>);

} // namespace korvell
