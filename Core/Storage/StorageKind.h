#pragma once
// The kinds of storage that can be given back, as tables. The order of the kinds is the order in which they
// are measured and shown.

#include "Base/Enum.h"

#include <span>
#include <string>
#include <string_view>

namespace korvell {

enum class StorageKind {
  derivedData,
  deviceSupport,
  archives,
  simulatorDevices,
  simulatorCaches,
  nodeModules,
  homebrew,
  npm,
  pnpm,
  yarn,
  pip,
  uv,
  cargo,
  go,
  cocoapods,
  gradle,
  docker,
  appCaches,
  trash,
  downloads,
};

template <>
struct EnumTable<StorageKind> {
  using enum StorageKind;
  static constexpr EnumCase<StorageKind> cases[] = {
      {derivedData, "derivedData", "Xcode DerivedData"},
      {deviceSupport, "deviceSupport", "Device support files"},
      {archives, "archives", "Xcode Archives"},
      {simulatorDevices, "simulatorDevices", "Unavailable simulators"},
      {simulatorCaches, "simulatorCaches", "Simulator caches"},
      {nodeModules, "nodeModules", "node_modules in old projects"},
      {homebrew, "homebrew", "Homebrew downloads"},
      {npm, "npm", "npm cache"},
      {pnpm, "pnpm", "pnpm store"},
      {yarn, "yarn", "Yarn cache"},
      {pip, "pip", "pip cache"},
      {uv, "uv", "uv cache"},
      {cargo, "cargo", "Cargo registry"},
      {go, "go", "Go build cache"},
      {cocoapods, "cocoapods", "CocoaPods cache"},
      {gradle, "gradle", "Gradle caches"},
      {docker, "docker", "Docker"},
      {appCaches, "appCaches", "App caches"},
      {trash, "trash", "Trash"},
      {downloads, "downloads", "Large old downloads"},
  };
};

enum class StorageGroup { xcode, projects, packages, docker, mac };

template <>
struct EnumTable<StorageGroup> {
  using enum StorageGroup;
  static constexpr EnumCase<StorageGroup> cases[] = {
      {xcode, "xcode", "Xcode"},
      {projects, "projects", "Projects"},
      {packages, "packages", "Package managers"},
      {docker, "docker", "Docker"},
      {mac, "mac", "Your Mac"},
  };
};

/// How much thought removing something deserves. A label: it changes nothing about the clean-up.
enum class StorageSafety { safe, check, keep };

template <>
struct EnumTable<StorageSafety> {
  using enum StorageSafety;
  static constexpr EnumCase<StorageSafety> cases[] = {
      {safe, "safe", "Safe to remove"},
      {check, "check", "Check first"},
      {keep, "keep", "Keep unless you are sure"},
  };
};

enum class StorageColor { blue, green, orange, cyan, purple, gray, indigo };

template <>
struct EnumTable<StorageColor> {
  using enum StorageColor;
  static constexpr EnumCase<StorageColor> cases[] = {
      {blue, "blue", "Blue"},       {green, "green", "Green"},    {orange, "orange", "Orange"},
      {cyan, "cyan", "Cyan"},       {purple, "purple", "Purple"}, {gray, "gray", "Gray"},
      {indigo, "indigo", "Indigo"},
  };
};

StorageGroup group(StorageKind kind);
StorageSafety safety(StorageKind kind);
StorageColor color(StorageKind kind);
/// A name from the freedesktop icon naming convention.
std::string_view symbol(StorageKind kind);
/// What the kind is and what removing it costs, localised.
std::string explanation(StorageKind kind);

inline std::string label(StorageSafety safety) { return title(safety); }

/// Kinds whose folders macOS guards with a question to the user.
inline constexpr StorageKind privacyProtected[] = {StorageKind::trash, StorageKind::downloads};
bool isPrivacyProtected(StorageKind kind);

/// The package managers whose caches lie at fixed places, in order.
std::span<const StorageKind> packageCacheKinds();

} // namespace korvell
