#include "Core/Storage/StorageKind.h"

#include <algorithm>
#include <iterator>

namespace korvell {
namespace {

struct Facts {
  StorageKind kind;
  StorageGroup group;
  StorageColor color;
  StorageSafety safety;
  std::string_view symbol;
  std::string_view explanation;
};

constexpr std::string_view packageText =
    "Downloaded packages kept to make installs faster. They are downloaded again when needed.";

using enum StorageKind;
using Group = StorageGroup;
using Color = StorageColor;
using Safety = StorageSafety;

constexpr Facts table[] = {
    {derivedData, Group::xcode, Color::blue, Safety::safe, "applications-development",
     "Build products and indexes. Xcode rebuilds them the next time you build a project."},
    {deviceSupport, Group::xcode, Color::blue, Safety::safe, "phone",
     "Debug symbols copied from each iPhone, iPad or Mac OS version you connected. Xcode copies them again "
     "when "
     "that device connects."},
    {archives, Group::xcode, Color::blue, Safety::keep, "package-x-generic",
     "Builds you archived for distribution. You need them to read crash reports from those versions."},
    {simulatorDevices, Group::xcode, Color::blue, Safety::safe, "computer",
     "Simulators for OS versions that are no longer installed. They can never boot again."},
    {simulatorCaches, Group::xcode, Color::blue, Safety::safe, "folder",
     "Shared caches the Simulator rebuilds when it starts."},
    {nodeModules, Group::projects, Color::green, Safety::safe, "folder-documents",
     "Dependencies of projects you have not touched for 30 days. Run npm, pnpm or yarn install to get them "
     "back."},
    {homebrew, Group::packages, Color::orange, Safety::safe, "package-x-generic",
     "Installers Homebrew already used, plus old versions of what you installed."},
    {npm, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {pnpm, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {yarn, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {pip, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {uv, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {cargo, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {go, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {cocoapods, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {gradle, Group::packages, Color::orange, Safety::safe, "package-x-generic", packageText},
    {docker, Group::docker, Color::cyan, Safety::check, "network-server",
     "Stopped containers, unused networks, dangling images and build cache."},
    {appCaches, Group::mac, Color::purple, Safety::check, "applications-other",
     "Files apps keep in ~/Library/Caches. Apps rebuild them, but some may sign you out or download content "
     "again."},
    {trash, Group::mac, Color::gray, Safety::check, "user-trash",
     "Files you already deleted. Emptying the Trash is permanent."},
    {downloads, Group::mac, Color::indigo, Safety::check, "folder-download",
     "Files over 500 MB in Downloads that you added more than 30 days ago."},
};

const Facts& facts(StorageKind kind) {
  return *std::find_if(std::begin(table), std::end(table),
                       [=](const Facts& row) { return row.kind == kind; });
}

} // namespace

StorageGroup group(StorageKind kind) { return facts(kind).group; }
StorageSafety safety(StorageKind kind) { return facts(kind).safety; }
StorageColor color(StorageKind kind) { return facts(kind).color; }
std::string_view symbol(StorageKind kind) { return facts(kind).symbol; }
std::string explanation(StorageKind kind) { return localized(facts(kind).explanation); }

bool isPrivacyProtected(StorageKind kind) {
  return std::ranges::find(privacyProtected, kind) != std::end(privacyProtected);
}

std::span<const StorageKind> packageCacheKinds() {
  static constexpr StorageKind kinds[] = {npm, pnpm, yarn, pip, uv, cargo, go, cocoapods, gradle};
  return kinds;
}

} // namespace korvell
