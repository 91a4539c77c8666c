#pragma once
// A home folder on the real disk, a Trash beside it and programs that print what the test says.

#include "Core/Storage/StorageCleanup.h"
#include "Core/Storage/StorageScan.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/FolderTrash.h"
#include "Tests/Fakes/GeneratedTree.h"
#include "Tests/Fakes/PortableFileTree.h"

namespace korvell {

struct StorageWorld {
  GeneratedTree disk;
  PortableFileTree files{2};
  FolderTrash trash{disk / "home/trash"};
  FakeClock clock;
  std::map<std::string, ShellResult> printed; ///< by command line; programs without an entry can't be started
  std::vector<std::string> ran;
  bool onMac = false;

  StorageWorld() {
    disk.folder("home");
    // Whatever the test makes was made two months ago.
    clock.wall = files.info(disk / "home")->added + Seconds{60 * 86400.0};
  }

  UserFolders folders() const {
    const auto environment = fakeEnvironment({{"HOME", disk / "home"}});
    return onMac ? macOSUserFolders(environment) : linuxUserFolders(environment);
  }
  StorageLocations locations() const {
    auto places = onMac ? macOSStorageLocations(folders()) : linuxStorageLocations(folders(), "");
    places.brewPrograms = {disk / "bin/no-brew", disk / "bin/brew"};
    places.dockerPrograms = {disk / "bin/docker"};
    if (onMac) places.xcrun = disk / "bin/xcrun";
    return places;
  }
  StorageScan scan() {
    return StorageScan(
        locations(), files, trash,
        [this](const std::string& path, const std::vector<std::string>& arguments, Seconds timeout,
               const Cancellation&) -> std::optional<ShellResult> {
          const auto line = commandLine(StorageAction::command(path, arguments, timeout));
          ran.push_back(line + " (" + std::to_string(int(timeout.count())) + " s)");
          const auto found = printed.find(line);
          return found == printed.end() ? std::nullopt : std::optional(found->second);
        },
        clock);
  }
  StorageWork work() {
    return storageWork(
        [scan = std::make_shared<StorageScan>(scan())]() -> auto& { return *scan; }, onMac, folders().data);
  }
  void program(const std::string& name, const std::string& text = "") {
    disk.write("bin/" + name, text);
    disk.mode("bin/" + name, 0755);
  }
  /// The bytes of files that lie on the disk, by lstat alone.
  std::int64_t size(const std::string& name) const { return disk.independentSize("home/" + name); }
};

} // namespace korvell
