#include "Audio/StreamOwners.h"
#include "Core/Machine/LinuxOwners.h"
#include "Tests/Fakes/FakeDesktopFiles.h"
#include "Tests/Fakes/FakeStreamProcesses.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

constexpr std::uint32_t user = 1000;

TEST(StreamOwnersTests, theFirstRuleThatAnswersDecides) {
  FakeDesktopFiles files;
  files.programs = {{"firefox", "/usr/lib/firefox/firefox"}, {"vlc", "/usr/bin/vlc"}};
  files.add("firefox", "Name=Firefox\nExec=firefox\n");
  files.add("org.videolan.VLC", "Name=VLC\nExec=vlc\n");
  auto world = std::make_unique<FakeStreamProcesses>();
  world->add(10, 1, {.path = "/usr/lib/firefox/firefox", .name = "firefox", .user = user});
  world->add(11, 10, {.path = "/usr/lib/firefox/audio", .name = "audio", .user = user});
  world->add(20, 1, {.path = "/usr/bin/mpv", .name = "mpv", .user = user});
  world->add(30, 1, {.path = "/newroot/bin/game", .name = "game", .user = user});
  world->add(31, 1, {.path = "/usr/bin/mpv", .name = "mpv", .user = user});
  world->add(32, 1, {.path = "/usr/bin/twin", .name = "twin", .user = user});
  world->add(33, 1, {.path = "/usr/bin/twin", .name = "twin", .user = user});
  world->add(40, 1,
             {.path = "/app/bin/player",
              .name = "player",
              .user = user,
              .controlGroup = "/user.slice/user-1000.slice/user@1000.service/app.slice/"
                              "app-flatpak-org.videolan.VLC-77.scope"});
  world->inside = {{30, 2}, {31, 2}, {32, 5}, {33, 5}, {40, 3}};
  StreamOwners owners(std::make_unique<LinuxOwners>(files, "en_GB.UTF-8", user), std::move(world));

  const struct {
    const char* what;
    SoundStream stream;
    std::string name;
    ProcessID pid;
  } rows[] = {
      {"a child counts to its application", {.pid = 11, .program = "audio"}, "Firefox", 11},
      {"the program's whole path", {.pid = 20, .program = "/opt/mpv"}, "mpv", 20},
      {"a lie about the process", {.pid = 10, .program = "mpv"}, "mpv", 0},
      {"a lie with an installed name", {.pid = 20, .program = "x", .applicationName = "vlc"}, "VLC", 0},
      {"a process without a program", {.pid = 20, .applicationName = "VLC"}, "VLC", 0},
      {"the system's word needs no program", {.pid = 20, .isPIDCertain = true}, "mpv", 20},
      {"inside a namespace", {.pid = 2, .program = "game"}, "game", 30},
      {"two inside that fit", {.pid = 5, .program = "twin", .applicationID = "firefox"}, "Firefox", 0},
      {"a process goes before a sandbox's word, which anybody can say",
       {.sandboxID = "org.videolan.VLC", .pid = 20, .program = "mpv"},
       "mpv",
       20},
      {"a sandbox's word, and nobody there", {.sandboxID = "org.videolan.VLC", .pid = 99}, "VLC", 0},
      {"a sandbox, by its control group", {.sandboxID = "firefox", .pid = 3, .program = "player"}, "VLC", 40},
      {"a sandboxed application that is not installed",
       {.sandboxID = "org.x.Y", .applicationName = "VLC"},
       "org.x.Y",
       0},
      {"another machine's process",
       {.pid = 20, .program = "mpv", .applicationName = "Tune", .isLocal = false},
       "mpv",
       0},
      {"a name only", {.applicationName = "Tune"}, "Tune", 0},
      {"nothing at all", {}, "Unknown program", 0}};
  for (const auto& row : rows) {
    const auto found = owners.owner(row.stream);
    EXPECT_EQ(found.owner.name, row.name) << row.what;
    EXPECT_EQ(found.pid, row.pid) << row.what;
  }
  EXPECT_EQ(owners.owner({.pid = 11, .program = "audio"}).owner.key,
            owners.owner({.applicationID = "firefox"}).owner.key);
}

} // namespace
} // namespace korvell
