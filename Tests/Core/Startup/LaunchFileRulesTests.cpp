#include "Core/Startup/LaunchFileRules.h"
#include "Tests/Fakes/FakeLaunchItems.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

FakeLaunchItems world() {
  FakeLaunchItems items;
  items.existing = {"/usr/bin/sync", "/opt/My Notes/run", "/usr/bin/flatpak",
                    "/home/me/.local/share/flatpak/app/org.example.Here"};
  return items;
}

std::optional<StartupItem> read(LaunchFormat format, const std::string& path, const std::string& bytes) {
  auto items = world();
  return readLaunchFile({LaunchScope::allUsers, format, path, bytes, "", {}}, items);
}

std::optional<StartupItem> readJob(const std::string& members) {
  return read(LaunchFormat::propertyList, "/Library/LaunchAgents/com.example.v1.plist",
              "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + members + "</dict></plist>");
}

TEST(LaunchFileRulesTests, aJobOfEveryMember) {
  EXPECT_EQ(readJob("<key>Label</key><string>com.example.agent</string>"
                    "<key>Program</key><string>/opt/agent</string>"
                    "<key>ProgramArguments</key><array><string>agent</string></array>"
                    "<key>RunAtLoad</key><true/><key>KeepAlive</key><true/>"),
            (StartupItem{.label = "com.example.agent",
                         .plistPath = "/Library/LaunchAgents/com.example.v1.plist",
                         .program = "/opt/agent",
                         .scope = LaunchScope::allUsers,
                         .runsAtLoad = true,
                         .keepAlive = true}));
}

TEST(LaunchFileRulesTests, membersThatAreMissingOrOfAnotherType) {
  const auto empty = readJob("<key>Label</key><integer>5</integer><key>KeepAlive</key><string>yes</string>");
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->label, "com.example.v1") << "the file's name without its extension";
  EXPECT_FALSE(empty->runsAtLoad || empty->keepAlive || empty->program);

  const std::string arguments = "<key>ProgramArguments</key>";
  const std::pair<std::string, std::optional<std::string>> programs[] = {
      {arguments + "<array><string>/opt/a</string><string>-x</string></array>", "/opt/a"},
      {"<key>Program</key><string></string>" + arguments + "<array><string>/opt/b</string></array>",
       "/opt/b"},
      {"<key>Program</key><integer>1</integer>", std::nullopt},
      {arguments + "<array/>", std::nullopt},
      {arguments + "<array><integer>1</integer></array>", std::nullopt},
      {arguments + "<string>/opt/a</string>", std::nullopt}};
  for (const auto& [members, program] : programs) EXPECT_EQ(readJob(members)->program, program) << members;
  for (const auto& [value, keepsAlive] : {std::pair{"<false/>", false},
                                          {"<dict><key>SuccessfulExit</key><false/></dict>", true},
                                          {"<dict/>", false}})
    EXPECT_EQ(readJob(std::string("<key>KeepAlive</key>") + value)->keepAlive, keepsAlive) << value;
}

TEST(LaunchFileRulesTests, filesThatAreNoneAreSkipped) {
  EXPECT_EQ(read(LaunchFormat::propertyList, "/a.plist", ""), std::nullopt);
  EXPECT_EQ(read(LaunchFormat::propertyList, "/a.plist", "<plist version=\"1.0\"><array/></plist>"),
            std::nullopt);
  EXPECT_EQ(read(LaunchFormat::desktopEntry, "/a.desktop", "[Other Group]\nExec=x\n"), std::nullopt);
}

TEST(LaunchFileRulesTests, programsOfAutostartEntries) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"Exec=sync --quiet", "/usr/bin/sync"},
      {"Exec=gone --quiet", "gone"},
      {"Exec=\"/opt/My Notes/run\" %U", "/opt/My Notes/run"},
      {"Exec=env LANG=C A=b sync", "/usr/bin/sync"},
      {"Exec=/usr/bin/env A=b /opt/x", "/opt/x"},
      {"Exec=env -u A sync", std::nullopt},
      {"Exec=%k/run", std::nullopt},
      {"Exec=bin/run", "bin/run"},
      {"Exec=\"unclosed", std::nullopt},
      {"Hidden=true", std::nullopt},
      {"Exec=sync\nTryExec=/opt/gone", "/opt/gone"},
      {"Exec=sync\nTryExec=gone", "gone"},
      {"Exec=/opt/x\nTryExec=sync", "/opt/x"},
      {"Exec=/usr/bin/flatpak run org.example.Here\nX-Flatpak=org.example.Here", "/usr/bin/flatpak"},
      {"Exec=/usr/bin/flatpak run org.example.Gone\nX-Flatpak=org.example.Gone",
       "/var/lib/flatpak/app/org.example.Gone"},
      {"Exec=/usr/bin/flatpak\nX-Flatpak=../../etc", "/usr/bin/flatpak"},
  };
  for (const auto& [lines, program] : rows) {
    const auto item = read(LaunchFormat::desktopEntry, "/etc/xdg/autostart/x.desktop",
                           std::string("[Desktop Entry]\nType=Application\n") + lines + "\n");
    ASSERT_TRUE(item) << lines;
    EXPECT_EQ(item->program, program) << lines;
    EXPECT_EQ(item->label, "x.desktop");
  }
}

TEST(LaunchFileRulesTests, whenAutostartEntriesRun) {
  for (const auto& [line, runs] : {std::pair{"", true},
                                   {"Hidden=false", true},
                                   {"X-GNOME-Autostart-enabled=true", true},
                                   {"Hidden=true", false},
                                   {"X-GNOME-Autostart-enabled=false", false}})
    EXPECT_EQ(
        read(LaunchFormat::desktopEntry, "/x.desktop", std::string("[Desktop Entry]\nExec=sync\n") + line)
            ->runsAtLoad,
        runs)
        << line;
}

TEST(LaunchFileRulesTests, services) {
  const auto service = [](const std::string& bytes) {
    return *read(LaunchFormat::systemdService, "/etc/systemd/system/a@.service", bytes);
  };
  EXPECT_EQ(service("[Service]\nExecStart=-/opt/one --x\nExecStart=/opt/two\nRestart=always\n"
                    "[Install]\nWantedBy=multi-user.target\n"),
            (StartupItem{.label = "a@.service",
                         .plistPath = "/etc/systemd/system/a@.service",
                         .program = "/opt/one",
                         .scope = LaunchScope::allUsers,
                         .runsAtLoad = true,
                         .keepAlive = true}));
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"ExecStart=sync", "/usr/bin/sync"},
      {"ExecStart=gone", "gone"},
      {"ExecStart=%h/bin/x", std::nullopt},
      {"ExecStart=/opt/100%%/x", "/opt/100%/x"},
      {"ExecStart=/opt/%", std::nullopt},
      {"ExecStart=${TOOL} x", std::nullopt},
      {"ExecStartPre=/opt/x", std::nullopt},
      {"ExecStart=/opt/x\nRootDirectory=/srv/box", std::nullopt},
      {"ExecStart=sync\nRootImage=/srv/box.raw", std::nullopt},
      {"ExecStart=/opt/x\nRootDirectory=/srv/box\nRootDirectory=", "/opt/x"},
      {"ExecStart=-gone\nExecSearchPath=/opt/own/bin", std::nullopt},
      {"ExecStart=/opt/x\nExecSearchPath=/opt/own/bin", "/opt/x"},
      {"ExecStart=/opt/a\n[Service]\nExecStart=\nExecStart=/opt/b", "/opt/b"},
  };
  for (const auto& [lines, program] : rows) {
    const auto item = service(std::string("[Service]\nRestart=no\n") + lines + "\n");
    EXPECT_EQ(item.program, program) << lines;
    EXPECT_FALSE(item.keepAlive || item.runsAtLoad);
  }
}

TEST(LaunchFileRulesTests, onlyWhatIsCertainlyGoneIsMissing) {
  auto items = world();
  const std::pair<std::optional<std::string>, bool> rows[] = {
      {"/usr/bin/sync", false}, {"/opt/gone", true},   {"sync", false}, {"gone", true},
      {"bin/gone", false},      {std::nullopt, false}, {"", false},
  };
  for (const auto& [program, missing] : rows)
    EXPECT_EQ(isProgramMissing(program, items), missing) << program.value_or("none");
}

} // namespace
} // namespace korvell
