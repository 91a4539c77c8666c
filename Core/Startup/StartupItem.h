#pragma once
// A program that the system starts by itself: a launch agent or daemon, an autostart entry, a unit.

#include "Base/Enum.h"
#include "Base/Record.h"
#include "Platform/LaunchItems.h"

#include <optional>
#include <string>
#include <tuple>

namespace korvell {

struct StartupItem {
  using Scope = LaunchScope;

  std::string label;                  ///< the job's name
  std::string plistPath;              ///< the file that defines it
  std::optional<std::string> program; ///< as a path where one is known; absent when the file names none
  Scope scope = Scope::user;
  bool runsAtLoad = false;
  bool keepAlive = false;
  bool isLoaded = false;
  /// It names a program that no longer exists, as of the scan. Everything that asks goes by this field.
  bool isLeftover = false;
  /// Its program is missing, but whoever runs it says that it is in use. Not told to others.
  bool isVouchedFor = false;

  const std::string& id() const { return label; }

  bool operator==(const StartupItem&) const = default;
  static constexpr auto fields() {
    return std::tuple{
        Field{"label", &StartupItem::label},           Field{"plistPath", &StartupItem::plistPath},
        Field{"program", &StartupItem::program},       Field{"scope", &StartupItem::scope},
        Field{"runsAtLoad", &StartupItem::runsAtLoad}, Field{"keepAlive", &StartupItem::keepAlive},
        Field{"isLoaded", &StartupItem::isLoaded},     Field{"isLeftover", &StartupItem::isLeftover}};
  }
};

template <>
struct EnumTable<LaunchScope> {
  using enum LaunchScope;
  static constexpr EnumCase<LaunchScope> cases[] = {
      {user, "user", "You"}, {allUsers, "allUsers", "All users"}, {system, "system", "System daemon"}};
};

KORVELL_CONVERTED_ONCE(std::vector<StartupItem>);

} // namespace korvell
