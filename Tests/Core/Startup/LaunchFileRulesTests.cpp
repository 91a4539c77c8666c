#include "Core/Startup/LaunchFileRules.h"
#include "Tests/Fakes/FakeLaunchItems.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum LaunchFormat;

struct LaunchFileRulesTests : testing::Test {
  FakeLaunchItems world;

  LaunchFileRulesTests() {
    world.existing = {"/usr/bin/sync", "/usr/bin/flatpak", "/opt/My App/run",
                      "/home/me/.local/share/flatpak/app/org.example.Here"};
  }
  /// Of a file "/files/a.b.c" with these members or lines.
  StartupItem read(LaunchFormat format, const std::string& lines) {
    auto bytes = "[Service]\n" + lines;
    if (format == desktopEntry) bytes = "[Desktop Entry]\nType=Application\n" + lines;
    if (format == propertyList) bytes = "<plist version=\"1.0\"><dict>" + lines + "</dict></plist>";
    return readLaunchFile(fileOf(format, bytes), world).value();
  }
  static LaunchFile fileOf(LaunchFormat format, const std::string& bytes) {
    return {LaunchScope::allUsers, format, "/files/a.b.c", bytes, "", {}};
  }
};

TEST_F(LaunchFileRulesTests, theProgram) {
  const std::string arguments = "<key>ProgramArguments</key>";
  const std::tuple<LaunchFormat, std::string, std::optional<std::string>> rows[] = {
      {propertyList,
       "<key>Program</key><string>/a</string>" + arguments + "<array><string>/b</string></array>", "/a"},
      {propertyList, "<key>Program</key><string/>" + arguments + "<array><string>/b</string></array>", "/b"},
      {propertyList, arguments + "<array/>", std::nullopt},
      {propertyList, arguments + "<string>/opt/a</string>", std::nullopt},

      {desktopEntry, "Exec=sync --quiet", "/usr/bin/sync"},
      {desktopEntry, "Exec=env LANG=C A=b sync", "/usr/bin/sync"},
      {desktopEntry, "Exec=env -u A sync", std::nullopt},
      {desktopEntry, "Exec=%k/run", std::nullopt},
      {desktopEntry, "Exec=sync\nTryExec=gone", "gone"},
      {desktopEntry, "Exec=/opt/x\nTryExec=sync", "/opt/x"},
      {desktopEntry, "Exec=/usr/bin/flatpak run x\nX-Flatpak=org.example.Here", "/usr/bin/flatpak"},
      {desktopEntry, "Exec=/usr/bin/flatpak run x\nX-Flatpak=gone", "/var/lib/flatpak/app/gone"},
      {desktopEntry, "Exec=/usr/bin/flatpak\nX-Flatpak=../../etc", "/usr/bin/flatpak"},

      {desktopEntry, R"(Exec=/opt/My\\ App/run --x)", "/opt/My App/run"},
      {desktopEntry, R"(Exec=/opt/My\sApp/run --x)", "/opt/My App/run"},
      {desktopEntry, R"(Exec=sync\s--quiet)", "/usr/bin/sync"},
      {desktopEntry, R"(Exec=/opt/Your\sApp/run)", "/opt/Your"},

      {systemdService, "ExecStart=-/opt/one --x\nExecStart=/opt/two", "/opt/one"},
      {systemdService, "ExecStart=-/opt/one --x\nExecStart=sync", "/usr/bin/sync"},
      {systemdService, "ExecStart=/opt/one\nExecStart=%h/two", std::nullopt},
      {systemdService, "ExecStart=sync", "/usr/bin/sync"},
      {systemdService, "ExecStart=%h/bin/x", std::nullopt},
      {systemdService, "ExecStart=/opt/100%%/x", "/opt/100%/x"},
      {systemdService, "ExecStart=${TOOL} x", std::nullopt},
      {systemdService, "ExecStart=/opt/x\nRootDirectory=/srv/box", std::nullopt},
      {systemdService, "ExecStart=sync\nRootImage=/srv/box.raw", std::nullopt},
      {systemdService, "ExecStart=/opt/x\nRootDirectory=/srv/box\nRootDirectory=", "/opt/x"},
      {systemdService, "ExecStart=/opt/x\nBindPaths=/srv:/opt", std::nullopt},
      {systemdService, "ExecStart=/opt/x\nBindReadOnlyPaths=/srv:/opt\nBindReadOnlyPaths=", "/opt/x"},
      {systemdService, "ExecStart=/opt/x\nExtensionImages=/srv/x.raw\nExtensionImages=/srv/y.raw",
       std::nullopt},
      {systemdService, "ExecStart=/opt/x\nExtensionDirectories=/srv/x", std::nullopt},
      {systemdService, "ExecStart=/opt/x\nMountImages=/srv/x.raw:/opt", std::nullopt},
      {systemdService, "ExecStart=-gone\nExecSearchPath=/opt/own/bin", std::nullopt},
      {systemdService, "ExecStart=/opt/x\nExecSearchPath=/opt/own/bin", "/opt/x"},
  };
  for (const auto& [format, lines, program] : rows) EXPECT_EQ(read(format, lines).program, program) << lines;
}

TEST_F(LaunchFileRulesTests, whenItRuns) {
  struct Row {
    LaunchFormat format;
    std::string lines;
    bool runsAtLoad, keepAlive;
  };
  const std::string keepAlive = "<key>KeepAlive</key>";
  const Row rows[] = {
      {propertyList, keepAlive + "<string>yes</string>", false, false},
      {propertyList, keepAlive + "<true/><key>RunAtLoad</key><true/>", true, true},
      {propertyList, keepAlive + "<dict><key>SuccessfulExit</key><false/></dict>", false, true},
      {propertyList, keepAlive + "<dict/>", false, false},
      {desktopEntry, "Hidden=false\nX-GNOME-Autostart-enabled=true", true, false},
      {desktopEntry, "Hidden=true", false, false},
      {desktopEntry, "X-GNOME-Autostart-enabled=false", false, false},
      {systemdService, "Restart=no", false, false},
      {systemdService, "Restart=always\n[Install]\nWantedBy=multi-user.target", true, true},
  };
  for (const auto& row : rows) {
    const auto item = read(row.format, row.lines);
    EXPECT_EQ(item.runsAtLoad, row.runsAtLoad) << row.lines;
    EXPECT_EQ(item.keepAlive, row.keepAlive) << row.lines;
  }
}

TEST_F(LaunchFileRulesTests, labelsAndFilesThatAreNone) {
  EXPECT_EQ(read(propertyList, "<key>Label</key><string>com.example</string>").label, "com.example");
  EXPECT_EQ(read(propertyList, "<key>Label</key><integer>5</integer>").label, "a.b");
  EXPECT_EQ(read(desktopEntry, ""), (StartupItem{.label = "a.b.c",
                                                 .plistPath = "/files/a.b.c",
                                                 .scope = LaunchScope::allUsers,
                                                 .runsAtLoad = true}));
  EXPECT_FALSE(readLaunchFile(fileOf(propertyList, "<plist version=\"1.0\"><array/></plist>"), world));
  EXPECT_FALSE(readLaunchFile(fileOf(desktopEntry, "[Other Group]\nExec=x\n"), world));
}

TEST_F(LaunchFileRulesTests, onlyWhatIsCertainlyGoneIsMissing) {
  EXPECT_FALSE(isProgramMissing(std::nullopt, world));
  for (const auto& [program, missing] : {std::pair{"/usr/bin/sync", false},
                                         {"/opt/gone", true},
                                         {"sync", false},
                                         {"gone", true},
                                         {"bin/gone", false}})
    EXPECT_EQ(isProgramMissing(program, world), missing) << program;
}

} // namespace
} // namespace korvell
