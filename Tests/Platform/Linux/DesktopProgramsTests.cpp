#include "Platform/Linux/DesktopPrograms.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(DesktopProgramsTests, aTerminalThatIsInstalledOnADesktop) {
  TemporaryFolder folder;
  const auto window = [&](std::map<std::string, std::string, std::less<>> variables) {
    return terminalWindow({"/opt/tool", "watch"}, fakeEnvironment(std::move(variables)),
                          {(folder.path() / "local").string(), folder.path().string()});
  };
  EXPECT_FALSE(window({{"DISPLAY", ":0"}})) << "no terminal";
  folder.write("xterm", "");
  EXPECT_FALSE(window({{"DISPLAY", ":0"}})) << "one that can't be executed";
  std::filesystem::permissions(folder.path() / "xterm", std::filesystem::perms::owner_all);
  EXPECT_FALSE(window({{"DISPLAY", ""}})) << "no desktop";
  const auto found = window({{"WAYLAND_DISPLAY", "wayland-0"}});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->program, (folder.path() / "xterm").string());
  EXPECT_THAT(found->arguments, ElementsAre("-e", "/opt/tool", "watch"));
}

TEST(DesktopProgramsTests, thePowerPageIsTheOneOfTheDesktopThatRuns) {
  TemporaryFolder folder;
  for (const auto* name : {"gnome-control-center", "xfce4-power-manager-settings"}) {
    folder.write(name, "");
    std::filesystem::permissions(folder.path() / name, std::filesystem::perms::owner_all);
  }
  const auto page = [&](const char* desktop) {
    return powerSettings(fakeEnvironment({{"XDG_CURRENT_DESKTOP", desktop}}), {folder.path().string()});
  };
  ASSERT_TRUE(page("ubuntu:GNOME"));
  EXPECT_THAT(page("ubuntu:GNOME")->arguments, ElementsAre("power"));
  EXPECT_EQ(page("XFCE")->program, (folder.path() / "xfce4-power-manager-settings").string());
  for (const auto* without : {"", "KDE", "sway", "GNOMEX"}) EXPECT_FALSE(page(without)) << without;
}

} // namespace
} // namespace korvell
