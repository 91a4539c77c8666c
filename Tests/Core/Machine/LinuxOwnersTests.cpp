#include "Core/Machine/LinuxOwners.h"
#include "FakeProcessLookup.h"
#include "Tests/Fakes/FakeDesktopFiles.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(LinuxOwnersTests, controlGroupsTellWhoseTheyAre) {
  using Kind = ControlGroupOwner::Kind;
  const std::string user = "/user.slice/user-1000.slice/user@1000.service/";
  const std::string hex(64, 'a');
  const ControlGroupOwner system{Kind::system, ""};
  const std::pair<std::string, std::optional<ControlGroupOwner>> rows[] = {
      {user + "app.slice/app-gnome-visual\\x2dstudio\\x2dcode-31337.scope",
       {{Kind::application, "visual-studio-code"}}},
      {user + "app.slice/app-org.gnome.Terminal.slice/vte-spawn-0b6a.scope",
       {{Kind::application, "org.gnome.Terminal"}}},
      {user + "app.slice/flatpak-org.gimp.GIMP-5151.scope", {{Kind::application, "org.gimp.GIMP"}}},
      {user + "app.slice/app-org.kde.kate@0a1b.service", {{Kind::application, "org.kde.kate"}}},
      {user + "app.slice/snap.spotify.spotify-6a1d.scope", {{Kind::snap, "spotify"}}},
      {"/system.slice/docker-" + hex + ".scope", {{Kind::container, hex}}},
      {"/docker/" + hex, {{Kind::container, hex}}},
      {user + "user.slice/libpod-" + hex + ".scope/container", {{Kind::container, hex}}},
      {"/machine.slice/libpod-" + hex + ".scope/container/system.slice/nginx.service",
       {{Kind::container, hex}}},
      {"/docker/" + hex + user + "app.slice/app-org.gimp.GIMP-5151.scope", {{Kind::container, hex}}},
      {"/kubepods/burstable/pod2c48913c-b29f-11e7/" + hex, {{Kind::container, hex}}},
      {"/kubepods.slice/kubepods-pod2c48.slice/crio-" + hex, {{Kind::container, hex}}},
      {"/system.slice/containerd.service/kubepods-pod2c48.slice:cri-containerd:" + hex,
       {{Kind::container, hex}}},
      {"/machine.slice/systemd-nspawn@deb\\x2d12.service/payload/system.slice/cron.service",
       {{Kind::container, "deb-12"}}},
      {"/lxc.payload.web/system.slice/cron.service", {{Kind::container, "web"}}},
      {"/lxc/web/init.scope", {{Kind::container, "web"}}},
      {"/system.slice/docker-nothex.scope", system},
      {"/system.slice/docker.service", system},
      {user + "init.scope", system},
      {user + "session.slice/org.gnome.Shell@wayland.service", system},
      {user + "background.slice/tracker-miner-fs-3.service", system},
      {user + "app.slice/syncthing.service", {{Kind::unit, "syncthing.service"}}},
      {"/user.slice/user-1000.slice/session-3.scope", std::nullopt},
      {user + "app.slice", std::nullopt},
      {"/app-.scope", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [path, owner] : rows) EXPECT_EQ(controlGroupOwner(path), owner) << path;
  EXPECT_EQ(unitNameUnescaped("a\\x2db\\x2"), "a-b\\x2");
}

TEST(LinuxOwnersTests, folderOfAnInstalledApplication) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"/usr/lib/firefox-esr/firefox-esr", "/usr/lib/firefox-esr"},
      {"/opt/app/bin/app", "/opt/app"},
      {"/home/me/apps/tool/run", "/home/me/apps/tool"},
      {"/home/me/run", std::nullopt},
      {"/usr/local/bin/tool", std::nullopt},
      {"/opt/run", std::nullopt},
      {"/usr/lib/x86_64-linux-gnu/run", std::nullopt},
      {"run", std::nullopt}};
  for (const auto& [program, folder] : rows) EXPECT_EQ(installFolder(program), folder) << program;
}

struct LinuxOwnersRules : testing::Test {
  FakeDesktopFiles files;
  FakeProcessLookup lookup;
  std::optional<LinuxOwners> owners;

  void SetUp() override {
    files.programs = {{"firefox-esr", "/usr/lib/firefox-esr/firefox-esr"},
                      {"/usr/bin/python3", "/usr/bin/python3.11"},
                      {"/usr/bin/xfce4-terminal", "/usr/bin/xfce4-terminal"},
                      {"my tool", "/opt/my tool/bin/my tool"},
                      {"htop", "/usr/bin/htop"}};
    files.add("firefox-esr", "Name=Firefox\nName[de]=Feuerfuchs\nExec=env MOZ=1 firefox-esr %u\n");
    files.add("script", "Name=Script\nExec=/usr/bin/python3 /usr/share/script.py\n");
    files.add("terminal", "Name=Terminal\nExec=/usr/bin/xfce4-terminal\n");
    files.add("quoted", "Name=My Tool\nExec=\"my tool\" --flag\n");
    files.add("htop", "Name=Htop\nExec=htop\nTerminal=true\n");
    files.add("spotify_spotify", "Name=Spotify\nExec=/snap/bin/spotify\n");
    files.files.push_back({"link", "/x/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\nExec=htop\n"});
    owners.emplace(files, "de_AT.UTF-8", 1000);
    owners->beginCycle();
  }
  OwnerDecision decide(ProcessFacts facts, ProcessID pid = 500) {
    if (facts.name.empty()) facts.name = "name";
    return owners->owner(pid, facts, lookup);
  }
};

TEST_F(LinuxOwnersRules, claimsOfInstalledApplications) {
  files.add("twin-a", "Name=Twin\nExec=htop\n");
  files.add("twin-b", "Name=Twin\nExec=htop\n");
  owners->beginCycle();
  const struct {
    std::string id, name, found;
  } rows[] = {{"terminal", "Firefox", "Terminal"},
              {"TERMINAL", "", "Terminal"},
              {"", "my tool", "My Tool"},
              {"unknown", "terminal", "Terminal"},
              {"", "Twin", ""},
              {"unknown", "unknown", ""},
              {"", "", ""}};
  for (const auto& row : rows) {
    const auto owner = owners->claimed(row.id, row.name);
    EXPECT_EQ(owner ? owner->name : "", row.found) << row.id << " " << row.name;
  }
}

TEST_F(LinuxOwnersRules, theFirstRuleThatAnswersDecides) {
  const std::string app = "/user.slice/user-1000.slice/user@1000.service/app.slice/";
  const std::string firefox = "/usr/lib/firefox-esr/", entries = "/usr/share/applications/";
  const struct {
    ProcessFacts facts;
    std::string decision; ///< key, name and rule; E: where entries stand
  } rows[] = {
      {{.path = firefox + "firefox-esr", .user = 0, .kernelThread = true}, "system|Linux|kernel thread"},
      {{.path = firefox + "firefox-esr", .user = 33}, "system|Linux|system user"},
      {{.path = "/bin/x", .user = 1000, .controlGroup = app + "app-FIREFOX\\x2desr-1.scope"},
       "E:firefox-esr.desktop|Feuerfuchs|control group of an application"},
      {{.user = 1000, .controlGroup = app + "app-unknown-1.scope"},
       "proc:unknown|unknown|control group of an application"},
      {{.user = 1000, .controlGroup = app + "snap.spotify.spotify-1.scope"},
       "E:spotify_spotify.desktop|Spotify|snap"},
      {{.user = 1000, .controlGroup = app + "snap.core.core-1.scope"}, "proc:core|core|snap"},
      {{.user = 1000, .controlGroup = "/system.slice/docker-0123456789abcdef.scope"},
       "container:0123456789ab|Container 0123456789ab|container"},
      {{.user = 999, .controlGroup = "/system.slice/docker-0123456789abcdef.scope/system.slice/x.service"},
       "container:0123456789ab|Container 0123456789ab|container"},
      {{.user = 0, .controlGroup = "/lxc/mail-server-of-all/init.scope"},
       "container:mail-server-of-all|Container mail-server-of-all|container"},
      {{.user = 33, .controlGroup = "/user.slice/user-1000.slice/session-3.scope"},
       "system|Linux|system user"},
      {{.user = 1000, .controlGroup = app + "syncthing.service"},
       "proc:syncthing.service|syncthing|control group of a unit"},
      {{.user = 1000, .desktopFile = entries + "script.desktop"},
       "E:script.desktop|Script|launched from a desktop entry"},
      {{.path = "/tmp/.mount_Tool1/usr/bin/tool", .user = 1000, .appImage = "/home/me/Tool.AppImage"},
       "/home/me/Tool.AppImage|Tool.AppImage|AppImage"},
      {{.path = "/usr/bin/ls", .name = "ls", .user = 1000, .appImage = "/home/me/Tool.AppImage"},
       "proc:ls|ls|process"},
      {{.path = firefox + "plugin-container", .user = 1000}, "E:firefox-esr.desktop|Feuerfuchs|program"},
      {{.path = "/opt/my tool/helper", .user = 1000}, "E:quoted.desktop|My Tool|program"},
      {{.path = "/usr/bin/python3.11", .name = "python", .user = 1000}, "proc:python|python|process"},
      {{.path = "/usr/bin/htop", .name = "htop", .user = 1000}, "proc:htop|htop|process"},
      {{.path = "/usr/libexec/gvfsd", .user = 1000}, "system|Linux|system path"},
      {{.path = "/usr/local/sbin/mine", .name = "mine", .user = 1000}, "proc:mine|mine|process"},
  };
  for (const auto& row : rows) {
    const auto [owner, rule] = decide(row.facts);
    const auto key = owner->key.starts_with(entries) ? "E:" + owner->key.substr(entries.size()) : owner->key;
    EXPECT_EQ(key + "|" + owner->name + "|" + std::string(rule), row.decision);
  }
  LinuxOwners ofRoot(files, "", 0);
  EXPECT_EQ(ofRoot.owner(500, {.path = "/bin/x", .name = "x"}, lookup).rule, "process") << "its own user";
}

TEST_F(LinuxOwnersRules, whatATerminalStartedBelongsToIt) {
  lookup.add(10, 1, {.path = "/usr/bin/xfce4-terminal", .user = 1000});
  lookup.add(20, 10, {.path = "/usr/bin/bash", .user = 1000});
  const ProcessFacts facts{.path = "/home/me/bin/air", .user = 1000};
  lookup.add(30, 20, facts);
  EXPECT_EQ(decide(facts, 30).owner->name, "Terminal");
  // The walk ends at what starts everybody's programs, and at a circle of reused ids.
  lookup.add(15, 10, {.path = "/usr/sbin/lightdm"});
  lookup.add(20, 15, {.path = "/usr/bin/bash", .user = 1000});
  EXPECT_EQ(decide(facts, 30).rule, "process");
  lookup.add(20, 30, {.path = "/usr/bin/bash", .user = 1000});
  EXPECT_EQ(decide(facts, 30).rule, "process");
}

TEST_F(LinuxOwnersRules, aNewEntryCountsFromTheNextCycleOn) {
  const ProcessFacts facts{.path = "/opt/new/new", .name = "new", .user = 1000};
  files.programs["new"] = "/opt/new/new";
  files.add("new", "Name=New\nExec=new\n");
  EXPECT_EQ(decide(facts).owner->key, "proc:new");
  owners->beginCycle();
  EXPECT_EQ(decide(facts).owner->name, "New");
}

TEST_F(LinuxOwnersRules, theMainProcessIsTheLaunchedOneOrTheOldestRoot) {
  const auto owner =
      decide({.user = 1000, .desktopFile = "/usr/share/applications/script.desktop", .launchedPID = 7}).owner;
  const GroupMember members[] = {{6, 1, 200}, {5, 1, 300}, {7, 6, 100}};
  EXPECT_EQ(owners->mainProcess(*owner, members), 7);
  EXPECT_EQ(owners->mainProcess(*owner, std::span(members, 2)), 6) << "the launched one is gone";
  const auto other = decide({.path = "/opt/my tool/helper", .user = 1000}).owner;
  EXPECT_EQ(owners->mainProcess(*other, members), 6) << "7 is older but a child of the group";
  EXPECT_EQ(owners->mainProcess(*other, {}), std::nullopt);
}

} // namespace
} // namespace korvell
